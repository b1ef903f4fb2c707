# Completion for corvane in bash: subcommands, their options (as their own help names them), folders.
# shellcheck shell=bash

_corvane() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words
  COMPREPLY=()
  case $before in
    -o | --output)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    --only | --without | --every)
      words="cpu gpu adsp cdsp ddr mem proc io procmem net thermal freq power pressure"
      # Of a list, the last word is completed.
      local list=${word%"${word##*,}"}
      mapfile -t COMPREPLY < <(compgen -P "$list" -W "$words" -- "${word##*,}")
      return
      ;;
    --profiler)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    --from | --to | --max-mb | --process | --for | --name | --label | --mark | --at-least | --more-is-better | --fail-if) return ;;
  esac
  # What stands after -- is a command of its own.
  if [[ ${COMP_WORDS[1]} == record && " ${COMP_WORDS[*]:2:COMP_CWORD-2} " == *" -- "* ]]; then
    mapfile -t COMPREPLY < <(compgen -cf -- "$word")
    return
  fi
  if ((COMP_CWORD == 1)); then
    words=$("${COMP_WORDS[0]}" --help 2>/dev/null | awk '/^Subcommands:/ { on = 1; next } on { print $1 }')
    mapfile -t COMPREPLY < <(compgen -W "$words --help --version" -- "$word")
  elif [[ $word == -* ]]; then
    words=$("${COMP_WORDS[0]}" "${COMP_WORDS[1]}" --help 2>/dev/null | grep -oE -- '(^|[ ,])--?[a-z][a-z-]*' | tr -d ' ,')
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}
complete -o filenames -F _corvane corvane
