#include "cli/console/completion_tables.h"

#include <algorithm>
#include <array>
#include <set>

#include "cli/console/completion.h"

namespace rastrel::cli {
namespace {

bool Contains(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

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

}  // namespace

std::string KindOfValue(const OptionRow& row) {
  if (*row.choices != '\0') return std::string("one of ") + row.choices;
  switch (row.id) {
    case OptionId::Printer:
    case OptionId::QueueDevice: return "printers";
    case OptionId::Mode: return "modes";
    case OptionId::CutDevice: return "send --list|files toml";
    case OptionId::ShowDevice: return "send --list";
    case OptionId::CheckDevice: return "files toml";
    case OptionId::CutRules: return "rules list|files toml";
    case OptionId::Data: return "files csv xlsx ods fods";
    case OptionId::Manifest: return "files json";
    case OptionId::CutPicture: return "files svg png";
    default: break;
  }
  const std::string_view value = row.value;
  if (value == "DIR") return "directories";
  for (const std::string_view file : {"FILE", "DIR", "TICKET", "REPORT"})
    if (Contains(value, file)) return "files";
  return LiteralsOf(value);
}

std::string KindOfOperand(const CommandRow& row) {
  const std::string_view operand = row.operand;
  switch (row.id) {
    case CommandId::FolderRemove: return "folder list";
    case CommandId::Help: {
      std::string words = "one of";
      for (const std::string& name : FirstWords()) words += " " + name;
      return words;
    }
    case CommandId::Completion: return "one of " + std::string(CompletedShells);
    case CommandId::Print:
    case CommandId::Preview:
    case CommandId::Convert:
    case CommandId::PageSize:
    case CommandId::BatchConvert:
    case CommandId::BatchPreview:
    case CommandId::BatchPageSize:
    case CommandId::BatchPrint: return "files ps eps pdf";
    case CommandId::Inspect: return "files ps eps";
    case CommandId::JobsAdd: return "files ps eps pdf png jpg jpeg";
    case CommandId::Sheet: return "files xlsx ods fods";
    case CommandId::RulesShow: return "rules list|files toml";
    case CommandId::UsersAdd: return "";
    case CommandId::UsersRole:
    case CommandId::UsersRemove: return "users list";
    default: break;
  }
  if (operand == "JOB" || operand == "JOB...") return "jobs list";
  if (operand == "NAME") return "spool list";
  if (operand == "TICKET|NAME") return "spool list|files";
  if (operand == "DIR") return "directories";
  return operand.empty() ? "" : "files";
}

std::vector<std::string> AlternativesOf(std::string_view kind) {
  std::vector<std::string> alternatives;
  while (!kind.empty()) {
    alternatives.emplace_back(kind.substr(0, kind.find('|')));
    kind.remove_prefix(std::min(alternatives.back().size() + 1, kind.size()));
  }
  return alternatives;
}

std::string FirstWord(std::string_view name) { return std::string(name.substr(0, name.find(' '))); }

std::vector<std::string> FirstWords() {
  std::set<std::string> names;
  for (const CommandRow& row : Commands()) names.insert(FirstWord(row.name));
  return {names.begin(), names.end()};
}

std::vector<std::string> CommandGroups() {
  std::set<std::string> groups;
  for (const CommandRow& row : Commands())
    if (Contains(row.name, " ")) groups.insert(FirstWord(row.name));
  return {groups.begin(), groups.end()};
}

std::string DescriptionOf(std::string_view firstWord) {
  std::string words;
  for (const CommandRow& row : Commands()) {
    if (row.name == firstWord) return row.description;
    if (FirstWord(row.name) == firstWord)
      words += (words.empty() ? "" : ", ") + std::string(row.name).substr(firstWord.size() + 1);
  }
  return words;
}

std::vector<const CommandRow*> CommandsOf(std::string_view group) {
  std::vector<const CommandRow*> rows;
  for (const CommandRow& row : Commands())
    if (std::string_view(row.name).starts_with(std::string(group) + " ")) rows.push_back(&row);
  return rows;
}

bool HasShortOutput(OptionId id) {
  constexpr std::array outputs{OptionId::BatchOutput, OptionId::OutputFile, OptionId::PreviewOutput,
                               OptionId::PlanesOutput, OptionId::ResultOutput};
  return std::ranges::find(outputs, id) != outputs.end();
}

std::string InQuotes(std::string_view text) {
  std::string quoted = "'";
  for (const char letter : text) {
    if (letter == '\'')
      quoted += "'\\''";
    else
      quoted += letter;
  }
  return quoted + "'";
}

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

}  // namespace rastrel::cli
