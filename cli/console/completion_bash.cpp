#include <string>
#include <string_view>

#include "cli/console/completion_tables.h"

namespace rastrel::cli {
namespace {

// The part that knows no command.
constexpr std::string_view Functions = R"bash(
# Offers those of its arguments that begin with the word at the cursor.
_rastrel_offer() {
  local line word=${cur#[\'\"]}
  word=${word//\\/}
  for line in "$@"; do
    [[ $line == "$word"* ]] || continue
    case $cur in
    [\'\"]*) COMPREPLY+=("$line") ;;
    *) COMPREPLY+=("$(printf %q "$line")") ;;
    esac
  done
}

# Offers files with these endings, and directories. The shell offers all files if there are none.
_rastrel_offer_files() {
  local file ending word=${cur#[\'\"]}
  compopt -o default -o filenames
  while IFS= read -r file; do
    for ending in "$@"; do
      [[ ${file,,} == *."$ending" || -d $file ]] || continue
      COMPREPLY+=("$file")
      break
    done
  done < <(compgen -f -- "${word//\\/}")
}

_rastrel_offer_kind() {
  local names
  case $1 in
  files) compopt -o default ;;
  files\ *) _rastrel_offer_files ${1#files } ;;
  directories) compopt -o dirnames ;;
  one\ of\ *) _rastrel_offer ${1#one of } ;;
  ?*)
    # The first column of the listing, without its title.
    mapfile -t names < <(command rastrel $1 2>/dev/null | cut -f 1 | grep -vxE '\*|job|user|folder')
    _rastrel_offer "${names[@]}"
    ;;
  esac
}

_rastrel_offer_kinds() {
  local kind kinds
  IFS='|' read -ra kinds <<<"$1"
  for kind in "${kinds[@]}"; do _rastrel_offer_kind "$kind"; done
}

_rastrel() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]} first=2 index kind words options operand
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _rastrel_words ''
    _rastrel_offer $words
    return
  fi
  _rastrel_words "$command"
  if [[ $words ]]; then
    if ((COMP_CWORD == 2)); then
      _rastrel_offer $words
      return
    fi
    command+=" ${COMP_WORDS[2]}"
    first=3
  fi
  _rastrel_command "$command"
  for ((index = first; index < COMP_CWORD; ++index)); do
    [[ ${COMP_WORDS[index]} == -- ]] && options=
  done
  # The shell takes "--name=value" for three words.
  if [[ $cur == = ]]; then
    cur=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  if [[ $options && $previous == -* ]] && _rastrel_value "$command $previous"; then
    _rastrel_offer_kinds "$kind"
  elif [[ $options && $cur == -* ]]; then
    _rastrel_offer $options
  else
    _rastrel_offer_kinds "$operand"
  fi
}

complete -F _rastrel rastrel
)bash";

// The commands, and of a group of commands their second names.
std::string WordTable() {
  std::string table = "_rastrel_words() {\n  words=\n  case $1 in\n  '') words='";
  for (const std::string& name : FirstWords()) table += name + " ";
  table += "--help --version' ;;\n";
  for (const std::string& group : CommandGroups()) {
    table += "  " + group + ") words='";
    for (const CommandRow* row : CommandsOf(group))
      table += std::string(row->name).substr(group.size() + 1) + " ";
    table += "--help' ;;\n";
  }
  return table + "  esac\n}\n";
}

std::string CommandTable() {
  std::string table = "_rastrel_command() {\n  options= operand=\n  case $1 in\n";
  for (const CommandRow& row : Commands()) {
    table += std::string("  '") + row.name + "') operand='" + KindOfOperand(row) + "' options='";
    for (const OptionId id : row.options)
      table += std::string(OptionOf(id).name) + (id == row.options.back() ? "" : " ");
    table += "' ;;\n";
  }
  return table + "  esac\n}\n";
}

}  // namespace

std::string BashCompletions() {
  return "# Completions of rastrel for bash, from `rastrel completion bash`.\n\n" + WordTable() +
         "\n" + CommandTable() + "\n" + ValueTable() + std::string(Functions);
}

}  // namespace rastrel::cli
