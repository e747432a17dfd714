#include "cli/cutting/rules_command.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/rule_place.h"
#include "cutting/rules/rule_report.h"
#include "cutting/rules/rules.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cli {
namespace {

// Of a row for people; programs get more.
constexpr std::size_t ShownColors = 4;
constexpr std::size_t JsonColors = 100;

std::string CountAndLength(const cutting::PathSum& sum) {
  return std::to_string(sum.paths) + (sum.paths == 1 ? " path, " : " paths, ") +
         os::ShortDecimal(sum.length, 1) + " mm";
}

std::vector<std::string> ColorTexts(const cutting::RuleSum& rule, std::size_t maximum) {
  std::vector<std::string> texts;
  for (const cutting::ColorSum& color : rule.colors) {
    if (texts.size() == maximum) {
      texts.push_back("and " + std::to_string(rule.colors.size() - maximum) + " more");
      break;
    }
    texts.push_back(cutting::TextOf(color.color) + " (" + CountAndLength(color.sum) + ")");
  }
  return texts;
}

void WriteRow(const cutting::RuleSum& rule, const std::string& name, std::string_view operation) {
  std::string colors;
  for (const std::string& text : ColorTexts(rule, ShownColors))
    colors += (colors.empty() ? "" : ", ") + text;
  WriteOutRow({name, std::string(operation), std::to_string(rule.sum.paths),
               std::to_string(rule.sum.contours), os::ShortDecimal(rule.sum.length, 1), colors});
}

void WriteObject(const cutting::RuleSum& rule, const char* event) {
  JsonLine line(event);
  line.AddIfAny("name", rule.name)
      .Add("operation", cutting::NameOf(rule.operation))
      .Add("paths", static_cast<std::int64_t>(rule.sum.paths))
      .Add("contours", static_cast<std::int64_t>(rule.sum.contours))
      .AddNumber("length_mm", rule.sum.length)
      .Add("colours", ColorTexts(rule, JsonColors))
      .Write();
}

void WriteTable(const cutting::RuleReport& report) {
  WriteOutRow({"rule", "operation", "paths", "contours", "mm", "colours"});
  for (const cutting::RuleSum& rule : report.rules)
    WriteRow(rule, rule.name, cutting::NameOf(rule.operation));
  WriteRow(report.untaken, "(no rule)", "");
}

void WriteObjects(const cutting::RuleReport& report) {
  for (const cutting::RuleSum& rule : report.rules) WriteObject(rule, "rule");
  WriteObject(report.untaken, "no_rule");
  JsonLine("done").Add("exit", 0).Write();
}

void WriteFound(const FoundRules& found, bool json) {
  const auto rules = RulesNamed(found.path);
  const std::string text = rules ? rules->Description() : Describe(rules.Error());
  if (!json) return WriteOutRow({found.name, text});
  JsonLine("rules")
      .Add("name", found.name)
      .Add("path", found.path)
      .Add(rules ? "description" : "fault", text)
      .Write();
}

}  // namespace

ExitStatus ListRulesCommand(const Invocation& invocation) {
  for (const FoundRules& found : AllFoundRules()) WriteFound(found, invocation.Has(OptionId::Json));
  return ExitStatus::Done;
}

ExitStatus ShowRulesCommand(const Invocation& invocation) {
  const std::string text = OrEndByCode(ExitStatus::JobFailed, RuleText(invocation.operand));
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    WriteOutLine(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
  }
  return ExitStatus::Done;
}

ExitStatus CheckRulesCommand(const Invocation& invocation) {
  if (invocation.operands.size() != 2)
    throw CommandError(ExitStatus::WrongUse, "give a rule file and one job: RULES JOB");
  const auto rules = RulesNamed(invocation.operands.front());
  if (!rules) OrEndByCode(ExitStatus::JobFailed, Expected<void>(rules.Error()));
  Invocation ofJob = invocation;
  ofJob.operand = invocation.operands.back();
  ofJob.operands = {ofJob.operand};
  CutRun run(ofJob);
  OrEndByCode(ExitStatus::JobFailed, ReadCutJob(run));
  cutting::RuleReport report;
  run.job = cutting::Applied(*rules, std::move(run.job), report);
  for (const cutting::RuleSum& rule : report.rules)
    if (rule.sum.paths == 0) run.Warn("the rule '" + rule.name + "' took nothing");
  if (invocation.Has(OptionId::Json)) {
    WriteObjects(report);
  } else {
    WriteTable(report);
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
