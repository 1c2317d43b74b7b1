# Completion of tarn for bash.

_tarn() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local commands="check print list get set unset apply add remove merge stats tree report help"
  local general="--help --log-level --color"
  local selection="--class --dn --dns-from --under --dn-has --match --p --version --operation --mask --invert"
  local target="-o --output --in-place"
  local dry="--dry-run --json"
  local edit="$selection $target $dry --everything --yes --keep-layout"
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
    --format) COMPREPLY=($(compgen -W "table tsv csv json jsonl dn dn0" -- "$word")) && return ;;
    --operation) COMPREPLY=($(compgen -W "create delete update auto none" -- "$word")) && return ;;
  esac
  local options=""
  case $command in
    "") options="$commands --version" ;;
    check) options="--all --limit --strict --format --json --jobs" ;;
    print) options="-o --output --sort" ;;
    list) options="$selection --format --columns --values --sort --limit --count --count-by --byte-order" ;;
    get) ;;
    set) options="$edit --set --set-class --set-version --values --create --only-existing" ;;
    unset) options=$edit ;;
    apply) options="$target $dry --create --yes --keep-layout" ;;
    add) options="$target $dry" ;;
    remove) options="$edit --recursive" ;;
    merge) options="$target $dry --check-only --validate" ;;
    stats) options="$selection --json" ;;
    tree) options="$selection --depth --byte-order" ;;
    report) options="$selection --byte-order -o --output" ;;
    help) options=$commands ;;
  esac
  COMPREPLY=()
  case $command:$word in
    :* | help:* | *:-*) COMPREPLY=($(compgen -W "$options $general" -- "$word")) ;;
    *) compopt -o filenames && COMPREPLY=($(compgen -f -- "$word")) ;;
  esac
}

complete -F _tarn tarn
