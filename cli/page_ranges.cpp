#include "cli/page_ranges.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include "cli/exit_status.h"

namespace rastrel::cli {
namespace {

constexpr std::int32_t MaximumCopies = 100'000;

std::optional<std::int32_t> NumberOf(std::string_view text, std::int32_t highest) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < 1 || number > highest) return std::nullopt;
  return number;
}

[[noreturn]] void Refuse(std::string_view list, const std::string& why) {
  throw CommandError(ExitStatus::WrongUse,
                     "--pages " + std::string(list) + ": " + why + "; pages are given like 1,3-5");
}

std::int32_t PageIn(std::string_view text, std::string_view list) {
  const auto page = NumberOf(text, HighestPage);
  if (!page)
    Refuse(list, "'" + std::string(text) + "' is no page from 1 to " + std::to_string(HighestPage));
  return *page;
}

}  // namespace

std::deque<std::int32_t> ParsePages(std::string_view list) {
  std::vector<bool> wanted;
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    const std::string_view range = list.substr(begin, end - begin);
    const std::size_t dash = range.find('-');
    const std::int32_t first = PageIn(range.substr(0, dash), list);
    const std::int32_t last = dash == range.npos ? first : PageIn(range.substr(dash + 1), list);
    if (last < first) Refuse(list, "'" + std::string(range) + "' runs backwards");
    if (wanted.size() < static_cast<std::size_t>(last))
      wanted.resize(static_cast<std::size_t>(last));
    std::fill(wanted.begin() + (first - 1), wanted.begin() + last, true);
    begin = end + 1;
  }
  std::deque<std::int32_t> pages;
  for (std::size_t position = 0; position < wanted.size(); ++position)
    if (wanted[position]) pages.push_back(static_cast<std::int32_t>(position));
  return pages;
}

std::int32_t ParseCopies(std::string_view text) {
  if (const auto copies = NumberOf(text, MaximumCopies)) return *copies;
  throw CommandError(ExitStatus::WrongUse, "--copies " + std::string(text) +
                                               ": not a number from 1 to " +
                                               std::to_string(MaximumCopies));
}

}  // namespace rastrel::cli
