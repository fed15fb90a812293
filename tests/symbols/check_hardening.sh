#!/bin/sh
# Fails unless a library or program was linked with a stack that cannot be executed and with tables that are
# filled in and made read-only before it starts, and was compiled with checked stack frames:
#   check_hardening.sh FILE        (READELF names another readelf than the host's)
set -eu
file=${1:?usage: check_hardening.sh FILE}
readelf=${READELF:-readelf}

# has WHAT PATTERN TEXT
has() {
  if ! printf '%s\n' "$3" | grep -Eq "$2"; then
    echo "$file: $1 is missing" >&2
    exit 1
  fi
}
segments=$("$readelf" --wide --segments "$file")
has "a stack that cannot be executed" 'GNU_STACK .* RW +0x' "$segments"
has "the read-only segment for tables" 'GNU_RELRO' "$segments"
has "binding at start" '\(FLAGS(_1)?\).*NOW|BIND_NOW' "$("$readelf" --wide --dynamic "$file")"
has "the check of stack frames" '__stack_chk_fail' "$("$readelf" --wide --dyn-syms "$file")"
