#include <string>
#include <string_view>

#include "cli/console/completion_tables.h"

namespace rastrel::cli {
namespace {

// The part that knows no command.
constexpr std::string_view Functions = R"zsh(
_rastrel_offer_kind() {
  local -a names
  case $1 in
  files) _files ;;
  files\ *) _files -g "*.(#i)(${(j:|:)${=1#files }})" ;;
  directories) _files -/ ;;
  one\ of\ *)
    names=(${=1#one of })
    compadd -a names
    ;;
  ?*)
    # The first column of the listing, without its title.
    names=(${(f)"$(command rastrel ${=1} 2>/dev/null | cut -f 1 | grep -vxE '\*|job|user|folder')"})
    compadd -a names
    ;;
  esac
}

_rastrel_offer_kinds() {
  local one
  for one in "${(@s:|:)1}"; do _rastrel_offer_kind $one; done
}

_rastrel() {
  local command=${words[2]} previous=${words[CURRENT-1]} first=3 index kind operand
  local -a names options
  if ((CURRENT == 2)); then
    _rastrel_words ''
    _describe -t commands command names
    return
  fi
  _rastrel_words "$command"
  if ((${#names})); then
    if ((CURRENT == 3)); then
      _describe -t commands command names
      return
    fi
    command+=" ${words[3]}"
    first=4
  fi
  _rastrel_command "$command"
  for ((index = first; index < CURRENT; ++index)); do
    [[ ${words[index]} == -- ]] && options=()
  done
  if ((${#options})) && [[ $PREFIX == --*=* ]] && _rastrel_value "$command ${PREFIX%%=*}"; then
    compset -P 1 '*='
    _rastrel_offer_kinds "$kind"
  elif ((${#options})) && [[ $previous == -* ]] && _rastrel_value "$command $previous"; then
    _rastrel_offer_kinds "$kind"
  elif ((${#options})) && [[ $PREFIX == -* ]]; then
    _describe -o option options
  else
    _rastrel_offer_kinds "$operand"
  fi
}

# The file of a directory in fpath is the function's body at its first call; a script that is
# sourced announces it.
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
  _rastrel "$@"
else
  compdef _rastrel rastrel
fi
)zsh";

// "name:description" in quotes; a colon in a name would begin its description.
std::string Described(std::string_view name, std::string_view description) {
  return InQuotes(std::string(name) + ":" + std::string(description));
}

// The commands, and of a group of commands their second names.
std::string WordTable() {
  std::string table = "_rastrel_words() {\n  names=()\n  case $1 in\n  '') names=(\n";
  for (const std::string& name : FirstWords())
    table += "    " + Described(name, DescriptionOf(name)) + "\n";
  table += "    '--help:Print this help.' '--version:Print the version.') ;;\n";
  for (const std::string& group : CommandGroups()) {
    table += "  " + group + ") names=(\n";
    for (const CommandRow* row : CommandsOf(group))
      table += "    " +
               Described(std::string(row->name).substr(group.size() + 1), row->description) + "\n";
    table += "    '--help:Print this help.') ;;\n";
  }
  return table + "  esac\n}\n";
}

std::string CommandTable() {
  std::string table = "_rastrel_command() {\n  options=() operand=\n  case $1 in\n";
  for (const CommandRow& row : Commands()) {
    table += std::string("  '") + row.name + "')\n    operand='" + KindOfOperand(row) +
             "'\n    options=(\n";
    for (const OptionId id : row.options)
      table += "      " + Described(OptionOf(id).name, OptionOf(id).description) + "\n";
    table += "    ) ;;\n";
  }
  return table + "  esac\n}\n";
}

}  // namespace

std::string ZshCompletions() {
  return "#compdef rastrel\n# Completions of rastrel for zsh, from `rastrel completion zsh`.\n\n" +
         WordTable() + "\n" + CommandTable() + "\n" + ValueTable() + std::string(Functions);
}

}  // namespace rastrel::cli
