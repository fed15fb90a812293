#!/bin/sh
# Compares what a shared library exports with its stored list, or writes the list:
#   check_symbols.sh [--update] LIBRARY LIST
# Each line of a list is a linker name, and what it stands for. NM names another nm than the host's.
# Names of other libraries (FFmpeg's, the C++ library's, those of code that is built in) are refused in any
# case, also when writing a list.
set -eu

update=no
if [ "${1:-}" = --update ]; then
  update=yes
  shift
fi
library=${1:?usage: check_symbols.sh [--update] LIBRARY LIST}
list=${2:?usage: check_symbols.sh [--update] LIBRARY LIST}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"${NM:-nm}" --dynamic --defined-only "$library" | awk '{ sub(/@.*/, "", $NF); print $NF }' |
  LC_ALL=C sort -u > "$work/names"
c++filt < "$work/names" > "$work/meanings"
paste -d ' ' "$work/names" "$work/meanings" | sed 's/^\([^ ]*\) \1$/\1/' > "$work/now"
if ! [ -s "$work/now" ]; then
  echo "$library exports nothing" >&2
  exit 1
fi

ours='^(zo(Frame|Video)[A-Za-z]*_[a-zA-Z]+|_Z(T[ISV])?NK?2zo[^ ]+ .*)$'
# A private part (Impl) of an exported class is not for callers either.
{
  grep -Ev "$ours" "$work/now" || true
  grep 'zo::[A-Za-z]*::Impl\b' "$work/now" || true
} > "$work/foreign"
if [ -s "$work/foreign" ]; then
  echo "$library exports names that are not for its callers:" >&2
  cat "$work/foreign" >&2
  exit 1
fi

if [ "$update" = yes ]; then
  cp "$work/now" "$list"
  echo "$list: $(wc -l < "$list") names"
  exit 0
fi
if ! diff -u "$list" "$work/now" > "$work/difference"; then
  echo "$library exports (+) and should export (-):" >&2
  tail -n +3 "$work/difference" >&2
  echo "If that is meant, build the target update_symbols for each architecture." >&2
  exit 1
fi
echo "$(wc -l < "$list") names, as listed"
