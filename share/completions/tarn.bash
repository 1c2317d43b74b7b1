# Completion of tarn for bash.

_tarn() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local commands="check print list get set add remove merge stats tree report help"
  local general="--help --log-level --color"
  local mask="--class --dn --operation --version --p --mask"
  local target="-o --output --in-place"
  local command="" i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case " $commands " in *" ${COMP_WORDS[i]} "*) command=${COMP_WORDS[i]} && break ;; esac
  done
  case $command:$previous in
    check:--format) COMPREPLY=($(compgen -W "text json sarif junit" -- "$word")) && return ;;
  esac
  case $previous in
    --log-level) COMPREPLY=($(compgen -W "debug info error none" -- "$word")) && return ;;
    --color) COMPREPLY=($(compgen -W "auto always never" -- "$word")) && return ;;
    --format) COMPREPLY=($(compgen -W "table tsv json dn" -- "$word")) && return ;;
    --operation) COMPREPLY=($(compgen -W "create delete update auto" -- "$word")) && return ;;
  esac
  local options=""
  case $command in
    "") options="$commands --version" ;;
    check) options="--all --limit --strict --format --json --jobs" ;;
    print) options="-o --output" ;;
    list) options="$mask --format" ;;
    get) ;;
    set) options="--mask-class --dn --operation --mask-version --mask-p --mask --class --version --p --values $target" ;;
    add | remove) options=$target ;;
    merge) options="$target --check-only --validate" ;;
    stats) options="--json" ;;
    tree) options="--depth --dn" ;;
    report) options="-o --output" ;;
    help) options=$commands ;;
  esac
  COMPREPLY=()
  case $command:$word in
    :* | help:* | *:-*) COMPREPLY=($(compgen -W "$options $general" -- "$word")) ;;
    *) compopt -o filenames && COMPREPLY=($(compgen -f -- "$word")) ;;
  esac
}

complete -F _tarn tarn
