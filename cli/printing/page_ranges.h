#pragma once

#include <cstdint>
#include <deque>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Highest page number that can be asked for.
inline constexpr std::int32_t HighestPage = 1'000'000;

/// The pages that a list such as "1,3-5" names, as positions from 0, each once and in order: the
/// output engine gets pages in the job's order, whatever order was asked for. Anything
/// else, page 0 and a range that runs backwards fail with a message for the user.
[[nodiscard]] Expected<std::deque<std::int32_t>> ParsePages(std::string_view list);

}  // namespace rastrel::cli
