# Completion of cfc for bash.
#
# Verbs, options and types are the program's. Sections and keys are those that the program knows by
# itself and those of the factory file: what an application registered later cannot be known without
# asking the service, and a key press must not wait for the device's lock. CFC_FACTORY_FILE names
# another factory file.

# Adds what begins with $1 of the lines on standard input, written so that it is one word.
_cfc_offer() {
  local line
  while IFS= read -r line; do
    if [[ -n $line && $line == "$1"* ]]; then
      COMPREPLY+=("$(printf '%q' "$line")")
    fi
  done
}

# The lines of the factory file.
_cfc_factory() {
  cat -- "${CFC_FACTORY_FILE:-/etc/config-file.ini}" 2>/dev/null
}

# The lines of `cfc sections`: a section, and indented its fields, an array with its last index.
_cfc_known() {
  "${COMP_WORDS[0]}" sections 2>/dev/null
}

_cfc_known_sections() {
  _cfc_known | sed -n '/^[^ ]/p'
}

# The keys of the known section $1.
_cfc_known_keys() {
  local line section= name last i
  _cfc_known | while IFS= read -r line; do
    if [[ $line != ' '* ]]; then
      section=$line
    elif [[ $section == "$1" ]]; then
      read -r name _ <<<"$line"
      if [[ $name == *\[0..*\] ]]; then
        last=${name##*..}
        for ((i = 0; i <= ${last%]}; i++)); do
          printf '%s[%d]\n' "${name%%\[*}" "$i"
        done
      else
        printf '%s\n' "$name"
      fi
    fi
  done
}

_cfc_sections() {
  {
    _cfc_known_sections
    _cfc_factory | sed -n 's/^\[\(.*\)]$/\1/p'
  } | sort -u
}

# The keys of section $1.
_cfc_keys() {
  local line section=
  _cfc_factory | while IFS= read -r line; do
    if [[ $line == \[*\] ]]; then
      section=${line:1:-1}
    elif [[ $section == "$1" && $line == ?*=* ]]; then
      printf '%s\n' "${line%%=*}"
    fi
  done
}

_cfc_options() {
  case $1 in
    get) printf '%s\n' --help --type --json ;;
    set) printf '%s\n' --help --type --force ;;
    batch) printf '%s\n' --help --all-or-nothing --json ;;
    wireless)
      printf '%s\n' --help
      ((${#arguments[@]} < 2)) || printf '%s\n' --json
      ;;
    firmware)
      printf '%s\n' --help
      case ${arguments[1]} in
        info) printf '%s\n' --json ;;
        pack) printf '%s\n' --type --output --name --load --entry --time ;;
        write) printf '%s\n' --yes ;;
      esac
      ;;
    show) printf '%s\n' --help --secrets --json ;;
    diff) printf '%s\n' --help --secrets ;;
    check | status | sections | export | time) printf '%s\n' --help --json ;;
    register | flush | defaults | import | edit | acl | help) printf '%s\n' --help ;;
    *) printf '%s\n' --help --version ;;
  esac
}

_cfc_verbs() {
  printf '%s\n' get set register flush defaults batch check status \
    show sections export import diff edit acl time wireless firmware help
}

# The words in front of the current one that are neither options nor their types, the verb first.
_cfc_arguments() {
  local i
  arguments=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      --type)
        [[ ${COMP_WORDS[i + 1]} == = ]] && i=$((i + 1))
        i=$((i + 1))
        ;;
      --*) ;;
      *) arguments+=("${COMP_WORDS[i]}") ;;
    esac
  done
}

_cfc_types() {
  case ${arguments[0]} in
    firmware) printf '%s\n' kernel ramdisk multi ;;
    *) printf '%s\n' string u8 u16 u32 ip binary ;;
  esac
}

_cfc_arguments_of() {
  case $1:${#arguments[@]} in
    get:1 | set:1) _cfc_offer "$2" < <(_cfc_sections) ;;
    get:2 | set:2)
      # Typed as a shell word, it may hold escapes.
      _cfc_offer "$2" < <({
        _cfc_known_keys "${arguments[1]//\\/}"
        _cfc_keys "${arguments[1]//\\/}"
      } | sort -u)
      ;;
    firmware:1) _cfc_offer "$2" < <(printf '%s\n' info pack write) ;;
    firmware:*) _cfc_offer "$2" < <(compgen -f -- "$2") ;;
    wireless:1) _cfc_offer "$2" < <(printf '%s\n' status events stations channels) ;;
    wireless:2) [[ ${arguments[1]} != channels ]] || _cfc_offer "$2" < <(printf '%s\n' 1 2 3 4 5) ;;
    show:1 | sections:1 | edit:1) _cfc_offer "$2" < <(_cfc_known_sections) ;;
    help:1) _cfc_offer "$2" < <(_cfc_verbs) ;;
    acl:1) _cfc_offer "$2" < <(printf '%s\n' list add delete) ;;
    batch:1 | check:1 | import:1) _cfc_offer "$2" < <(compgen -f -- "$2") ;;
  esac
}

_cfc() {
  local current=$2 previous=${COMP_WORDS[COMP_CWORD - 1]} arguments
  COMPREPLY=()
  [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}
  _cfc_arguments
  if [[ $previous == --type ]]; then
    _cfc_offer "$current" < <(_cfc_types)
  elif [[ $current == -* ]]; then
    _cfc_offer "$current" < <(_cfc_options "${arguments[0]}")
  elif ((${#arguments[@]} == 0)); then
    _cfc_offer "$current" < <(_cfc_verbs)
  else
    _cfc_arguments_of "${arguments[0]}" "$current"
  fi
}

complete -F _cfc cfc
