#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/server/ink_coverage.h"

namespace rastrel::cli {

/// The inks of a job's pages as the queue keeps them: a JSON array with an object a page, ink name
/// to share, in at most four decimals. Empty without a page.
[[nodiscard]] std::string TextOfInk(const std::vector<PageInk>& pages);
/// Reads it; no page from an empty text, and nothing from one that is not of that form.
[[nodiscard]] std::optional<std::vector<PageInk>> InksOfText(std::string_view text);

/// A page's inks for a person: "Cyan 25.0 %, Black 3.1 %". Names are not cleaned.
[[nodiscard]] std::string ShownInk(const PageInk& ink);
/// The sum of a job's pages for a table: "Cyan 1.2500; Black 0.0310", where 1 is a whole page at
/// full strength. Empty if the text is of another form.
[[nodiscard]] std::string SummedInk(std::string_view text);

}  // namespace rastrel::cli
