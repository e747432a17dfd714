#include "cli/console/completion.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "cli/console/options.h"

namespace rastrel::cli {
namespace {

// The part that knows no command. The kind of a value or an operand is "files", "directories",
// a list of alternatives, or the listing that has the names in its first column.
constexpr std::string_view BashFunctions = R"bash(
# Offers what begins with the word at the cursor: of the words or lines that are given.
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

_rastrel_offer_kind() {
  local names
  case $1 in
  files) compopt -o default ;;
  directories) compopt -o dirnames ;;
  printers | modes | 'spool list')
    # The first column of the listing.
    mapfile -t names < <(command rastrel $1 2>/dev/null | cut -f 1 | grep -v '^\*$')
    _rastrel_offer "${names[@]}"
    ;;
  one\ of\ *) _rastrel_offer ${1#one of } ;;
  esac
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
    _rastrel_offer_kind "$kind"
  elif [[ $options && $cur == -* ]]; then
    _rastrel_offer $options
  else
    IFS='|' read -ra words <<<"$operand"
    for kind in "${words[@]}"; do _rastrel_offer_kind "$kind"; done
  fi
}

complete -F _rastrel rastrel
)bash";

bool Contains(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

std::string FirstWord(std::string_view name) { return std::string(name.substr(0, name.find(' '))); }

// The alternatives of a placeholder that are literal: "none" of "none|NAME|WxH".
std::string LiteralsOf(std::string_view placeholder) {
  std::string words;
  while (!placeholder.empty()) {
    const std::string_view one = placeholder.substr(0, placeholder.find('|'));
    placeholder.remove_prefix(std::min(one.size() + 1, placeholder.size()));
    const bool isLiteral =
        std::ranges::all_of(one, [](char letter) { return letter >= 'a' && letter <= 'z'; });
    if (isLiteral) words += " " + std::string(one);
  }
  return words.empty() ? words : "one of" + words;
}

std::string KindOfValue(const OptionRow& row) {
  if (*row.choices != '\0') return std::string("one of ") + row.choices;
  if (row.id == OptionId::Printer) return "printers";
  if (row.id == OptionId::Mode) return "modes";
  const std::string_view value = row.value;
  if (value == "DIR") return "directories";
  for (const std::string_view file : {"FILE", "DIR", "TABLE", "TICKET", "REPORT"})
    if (Contains(value, file)) return "files";
  return LiteralsOf(value);
}

std::string CommandNames() {
  std::set<std::string> names;
  for (const CommandRow& row : Commands()) names.insert(FirstWord(row.name));
  std::string words;
  for (const std::string& name : names) words += (words.empty() ? "" : " ") + name;
  return words;
}

// One or several kinds, with bars between.
std::string KindOfOperand(const CommandRow& row) {
  const std::string_view operand = row.operand;
  if (row.id == CommandId::Help) return "one of " + CommandNames();
  if (row.id == CommandId::Completion) return "one of " + std::string(CompletedShells);
  if (operand == "NAME") return "spool list";
  if (operand == "TICKET|NAME") return "spool list|files";
  return operand.empty() ? "" : "files";
}

bool HasShortOutput(OptionId id) {
  constexpr std::array outputs{OptionId::BatchOutput, OptionId::OutputFile, OptionId::PreviewOutput,
                               OptionId::PlanesOutput};
  return std::ranges::find(outputs, id) != outputs.end();
}

// The commands, and of a group of commands their second names.
std::string WordTable() {
  std::string table = "_rastrel_words() {\n  words=\n  case $1 in\n  '') words='" + CommandNames() +
                      " --help --version' ;;\n";
  std::set<std::string> groups;
  for (const CommandRow& row : Commands())
    if (Contains(row.name, " ")) groups.insert(FirstWord(row.name));
  for (const std::string& group : groups) {
    table += "  " + group + ") words='";
    for (const CommandRow& row : Commands())
      if (std::string_view(row.name).starts_with(group + " "))
        table += std::string(row.name).substr(group.size() + 1) + " ";
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

// Fails for an option without a value.
std::string ValueTable() {
  std::string table = "_rastrel_value() {\n  case $1 in\n";
  for (const CommandRow& row : Commands()) {
    for (const OptionId id : row.options) {
      const OptionRow& option = OptionOf(id);
      if (*option.value == '\0') continue;
      const std::string begin = std::string("'") + row.name + " ";
      table += "  " + begin + option.name + "'";
      if (HasShortOutput(id)) table += " | " + begin + "-o'";
      table += ") kind='" + KindOfValue(option) + "' ;;\n";
    }
  }
  return table + "  *) return 1 ;;\n  esac\n}\n";
}

}  // namespace

Expected<std::string> CompletionScript(std::string_view shell) {
  if (shell != CompletedShells)
    return FailureOf("there are no completions for '" + std::string(shell) +
                     "'; there are some for " + std::string(CompletedShells));
  return "# Completions of rastrel for bash, from `rastrel completion bash`.\n\n" + WordTable() +
         "\n" + CommandTable() + "\n" + ValueTable() + std::string(BashFunctions);
}

}  // namespace rastrel::cli
