# Completion of vxtile for bash.

_vxtile() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]-}
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    mapfile -t COMPREPLY < <(compgen -W "types describe run graph why --help --version" -- "$current")
    return
  fi
  case $previous in
    -t | --type)
      mapfile -t COMPREPLY < <(compgen -W "int8 uint8 int16 uint16 int32 uint32 int64 float double" -- "$current")
      return
      ;;
    --flip)
      mapfile -t COMPREPLY < <(compgen -W "horizontal vertical both" -- "$current")
      return
      ;;
    -l | --library)
      mapfile -t COMPREPLY < <(compgen -W "VXStandardModules" -- "$current")
      return
      ;;
    -d | --directory)
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    -s | --set | -o | --output | -b | --box | -r | --range | --touch | --show | -j | --threads | --cache-kb)
      return
      ;;
  esac
  local options=--help
  case $command in
    types) options="$options --library --names" ;;
    describe) options="$options --library" ;;
    run)
      options="$options --set --output --box --type --range --flip --touch --show --directory --threads --cache-kb"
      options="$options --library --stats --quiet"
      ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi
  case $command in
    describe) mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" types --names 2>/dev/null)" -- "$current") ;;
    why) mapfile -t COMPREPLY < <(compgen -W "VXStandardModules" -- "$current") ;;
    run | graph)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      compopt -o filenames 2>/dev/null
      ;;
  esac
}

complete -F _vxtile vxtile
