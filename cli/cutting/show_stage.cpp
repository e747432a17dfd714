#include "cli/cutting/show_stage.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "cli/cutting/shown_print.h"
#include "cutting/view/cut_window.h"
#include "rastrel/platform/standalone/window_component.h"

namespace rastrel::cli {
namespace {

using cutting::ShownSheet;

void Show(const std::vector<ShownSheet>& sheets) {
  const auto show =
      standalone::FindInWindowComponent<cutting::ShowCutWindow>(cutting::ShowCutWindowName);
  const char* reason = nullptr;
  if (show && (*show)(cutting::CutWindowVersion, sheets, &reason)) return;
  const std::string why = !show               ? Describe(show.Error())
                          : reason != nullptr ? reason
                                              : "rastrel-window.so gives no reason";
  throw CommandError(ExitStatus::NotInstalled, "--show: no window can be shown: " + why);
}

}  // namespace

Expected<void> CheckWindow(CutRun& run) {
  if (run.invocation.Has(OptionId::CutShow)) Show({});
  return {};
}

Expected<void> ShowCut(CutRun& run) {
  if (!run.invocation.Has(OptionId::CutShow)) return {};
  const bool isMeasured =
      run.invocation.Has(OptionId::Measured) || run.invocation.Has(OptionId::Measurements);
  std::vector<ShownSheet> sheets(1);
  ShownSheet& sheet = sheets.front();
  sheet.name = std::filesystem::path(run.invocation.operand).filename().string();
  sheet.job = run.job;
  if (run.picture && !isMeasured) {
    auto print = PrintOnScreen(*run.picture, run.margins);
    if (!print) return print.Error();
    sheet.print = *std::move(print);
  }
  Show(sheets);
  return {};
}

}  // namespace rastrel::cli
