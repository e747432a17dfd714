#include "cli/console/help.h"

#include <algorithm>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t LeftColumn = 26;

std::string Row(std::string left, std::string_view right) {
  left = "  " + left;
  if (left.size() + 2 > LeftColumn)
    return left + "\n" + std::string(LeftColumn, ' ') + std::string(right) + "\n";
  left.resize(LeftColumn, ' ');
  return left + std::string(right) + "\n";
}

std::string OptionRowText(OptionId id) {
  const OptionRow& row = OptionOf(id);
  std::string left = row.name;
  if (*row.value != '\0') left += std::string(" ") + row.value;
  return Row(left, row.description);
}

std::string UsageOf(const CommandRow& row) {
  std::string usage = row.name;
  if (*row.operand == '\0') return usage;
  return usage + (row.operandOptional ? std::string(" [") + row.operand + "]"
                                      : std::string(" ") + row.operand);
}

// The kinds of command in a help, since some statuses belong to one kind alone.
struct Kinds {
  bool charts = false;       // ask a chart
  bool conversions = false;  // convert a file in a document
};

bool HasStatus(const Kinds& kinds, ExitStatus status) {
  if (status == ExitStatus::NoMatch) return kinds.charts;
  return status < ExitStatus::NotPrepared || kinds.conversions;
}

std::string ExitStatusText(const Kinds& kinds) {
  std::string text = "\nexit status:\n";
  for (const ExitStatusRow& row : ExitStatuses) {
    if (!HasStatus(kinds, row.status)) continue;
    text += Row(std::to_string(static_cast<int>(row.status)), row.meaning);
  }
  return text;
}

bool IsConversion(CommandId id) { return id == CommandId::Convert || id == CommandId::Cut; }

bool IsNamed(const CommandRow& row, std::string_view name) {
  const std::string_view own = row.name;
  return own == name || (own.starts_with(name) && own.substr(name.size()).starts_with(' '));
}

}  // namespace

std::string SummaryText() {
  std::string text = "usage: rastrel COMMAND [OPTION...]\n\ncommands:\n";
  for (const CommandRow& row : Commands()) text += Row(UsageOf(row), row.description);
  text += "\noptions:\n" + OptionRowText(OptionId::Help) + OptionRowText(OptionId::Version);
  return text + ExitStatusText({.charts = true, .conversions = true}) +
         "\n`rastrel help COMMAND` tells of a command's options.\n";
}

std::string HelpText(std::string_view name) {
  std::string text;
  Kinds kinds;
  if (name.empty()) return text;
  for (const CommandRow& row : Commands()) {
    if (!IsNamed(row, name)) continue;
    kinds.charts = kinds.charts || IsNamed(row, "chart");
    kinds.conversions = kinds.conversions || IsConversion(row.id);
    if (!text.empty()) text += "\n";
    text += "usage: rastrel " + UsageOf(row) + (row.options.size() > 1 ? " [OPTION...]" : "") +
            "\n\n" + row.description + "\n\noptions:\n";
    for (const OptionId id : row.options) text += OptionRowText(id);
  }
  return text.empty() ? text : text + ExitStatusText(kinds);
}

}  // namespace rastrel::cli
