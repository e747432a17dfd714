#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Each asks one chart and prints the answer, or the object of docs/formats/charts.md. They throw
/// CommandError: WrongUse if a part of the question is missing, BadInput with the reason if the
/// chart is refused, NoMatch if it has no answer.
[[nodiscard]] ExitStatus TrademarkChartCommand(const Invocation& invocation);
[[nodiscard]] ExitStatus SymbolChartCommand(const Invocation& invocation);
[[nodiscard]] ExitStatus FontTableCommand(const Invocation& invocation);
[[nodiscard]] ExitStatus CopyrightChartCommand(const Invocation& invocation);
[[nodiscard]] ExitStatus CapRulesCommand(const Invocation& invocation);

}  // namespace rastrel::cli
