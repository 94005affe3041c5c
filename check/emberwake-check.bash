# Completes the arguments of emberwake-check in bash.
# shellcheck shell=bash

_emberwake_check() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $before in
    --previous | --authority)
      compopt -o filenames 2> /dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    # Whatever the operator has in mind.
    --code | --base | --timeout | --ignore) return ;;
    --fail-on)
      mapfile -t COMPREPLY < <(compgen -W 'error warning' -- "$word")
      return
      ;;
  esac
  case $word in
    -*)
      mapfile -t COMPREPLY < <(compgen -W \
        '--authority --base --code --deep --fail-on --help --ignore --json --previous --timeout --version' -- "$word")
      ;;
    *)
      compopt -o filenames 2> /dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      ;;
  esac
}
complete -F _emberwake_check emberwake-check
