#include "cli/cutting/rules_stage.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "cli/cutting/rule_place.h"
#include "cutting/capture/cut_paths_file.h"
#include "cutting/rules/rule_report.h"
#include "cutting/rules/rules.h"

namespace rastrel::cli {
namespace {

bool LooksAtWidth(const cutting::Rule& rule) {
  return rule.minimumWidth > 0 || std::isfinite(rule.maximumWidth);
}

// Whether a rule gives the paint a tool.
bool IsCut(const cutting::RuleSet& rules, const interpreter::AskedPaint& asked) {
  auto paint = cutting::PaintFrom(asked.kind, asked.color, asked.lineWidth);
  if (!paint) return false;
  paint->layer = asked.layer;
  const cutting::Rule* const rule = rules.RuleFor(*paint);
  return rule != nullptr && cutting::HasTool(rule->operation);
}

}  // namespace

Expected<void> ReadRuleFile(CutRun& run) {
  if (!run.invocation.Has(OptionId::CutRules)) return {};
  auto read = RulesNamed(run.invocation.ValueOr(OptionId::CutRules, ""));
  if (!read) return read.Error();
  const auto rules = std::make_shared<const cutting::RuleSet>(*std::move(read));
  run.rules = rules;
  run.wish = {[rules](const interpreter::AskedPaint& paint) { return IsCut(*rules, paint); },
              std::ranges::any_of(rules->Rules(), LooksAtWidth)};
  return {};
}

Expected<void> ApplyRules(CutRun& run) {
  if (!run.rules) return {};
  cutting::RuleReport report;
  run.job = cutting::Applied(*run.rules, std::move(run.job), report);
  // Paths that are printed or ignored stay in the picture, and never come here from there.
  for (const cutting::RuleSum& rule : report.rules)
    if (rule.sum.paths == 0 && cutting::HasTool(rule.operation))
      run.Warn("the rule '" + rule.name + "' took nothing");
  return {};
}

}  // namespace rastrel::cli
