# bash completion for zo-video

_zo_video_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_zo_video_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_zo_video() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} options
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    _zo_video_words "info frames frame sheet index verify convert bench help --help --version" "$word"
    return
  fi

  case $before in
    --out)
      if [[ $command == frames ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
      else
        _zo_video_files "$word"
      fi
      return
      ;;
    --ext) _zo_video_words "jpg png ppm" "$word"; return ;;
    --algorithm) _zo_video_words "default nearest bilinear bicubic area lanczos" "$word"; return ;;
    --size) _zo_video_words "320x240 640x360 1280x720 1920x1080" "$word"; return ;;
    --quality) _zo_video_words "75 85 90 95 100" "$word"; return ;;
    --max-fps | --from | --count | --index | --columns | --rows | --width | --samples | --seed | --seconds | --timeout)
      return
      ;;
  esac

  case $command in
    info) options="--json --timeout --skip-errors --help" ;;
    frames) options="--out --max-fps --size --ext --quality --from --count --stamp --upright --timeout --skip-errors --help" ;;
    frame) options="--index --out --size --quality --upright --timeout --skip-errors --help" ;;
    sheet) options="--out --columns --rows --width --quality --timeout --skip-errors --help" ;;
    index) options="--json --timeout --skip-errors --help" ;;
    verify) options="--samples --seed --timeout --skip-errors --help" ;;
    convert) options="--size --algorithm --quality --help" ;;
    bench) options="--seconds --timeout --skip-errors --help" ;;
    help) _zo_video_words "info frames frame sheet index verify convert bench" "$word"; return ;;
    *) return ;;
  esac
  if [[ $word == -* ]]; then
    _zo_video_words "$options" "$word"
  else
    _zo_video_files "$word"
  fi
}

complete -F _zo_video zo-video
