#pragma once

#include <string>
#include <string_view>

#include "spreadsheet/format_code.h"

namespace rastrel::spreadsheet {

/// The text of a cell whose value is a date of ISO 8601 ("2021-03-01", "2021-03-01T12:30:00Z"): by
/// its format if that is one of dates. Otherwise, or if it is no such date, the value unchanged.
[[nodiscard]] std::string ShowIsoDate(std::string_view text, const FormatCode& code,
                                      DateSystem dates);

}  // namespace rastrel::spreadsheet
