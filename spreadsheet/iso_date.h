#pragma once

#include <string>
#include <string_view>

#include "spreadsheet/format_code.h"

namespace rastrel::spreadsheet {

/// What a cell shows whose value is a date of ISO 8601 ("2021-03-01", "2021-03-01T12:30:00Z"): by
/// its format if that is one of dates, else, and if it is no such date, as it stands.
[[nodiscard]] std::string ShowIsoDate(std::string_view text, const FormatCode& code,
                                      DateSystem dates);

}  // namespace rastrel::spreadsheet
