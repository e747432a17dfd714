#include "cli/printing/page_ranges.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace rastrel::cli {
namespace {

Failure Refused(std::string_view list, const std::string& why) {
  return FailureOf("--pages " + std::string(list) + ": " + why + "; pages are given like 1,3-5");
}

Expected<std::int32_t> PageIn(std::string_view text, std::string_view list) {
  std::int32_t page = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, page);
  if (error != std::errc() || stop != end || page < 1 || page > HighestPage)
    return Refused(
        list, "'" + std::string(text) + "' is no page from 1 to " + std::to_string(HighestPage));
  return page;
}

}  // namespace

Expected<std::deque<std::int32_t>> ParsePages(std::string_view list) {
  std::vector<bool> wanted;
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    const std::string_view range = list.substr(begin, end - begin);
    const std::size_t dash = range.find('-');
    const auto first = PageIn(range.substr(0, dash), list);
    if (!first) return first.Error();
    const auto last = dash == range.npos ? first : PageIn(range.substr(dash + 1), list);
    if (!last) return last.Error();
    if (*last < *first) return Refused(list, "'" + std::string(range) + "' runs backwards");
    if (wanted.size() < static_cast<std::size_t>(*last))
      wanted.resize(static_cast<std::size_t>(*last));
    std::fill(wanted.begin() + (*first - 1), wanted.begin() + *last, true);
    begin = end + 1;
  }
  std::deque<std::int32_t> pages;
  for (std::size_t position = 0; position < wanted.size(); ++position)
    if (wanted[position]) pages.push_back(static_cast<std::int32_t>(position));
  return pages;
}

}  // namespace rastrel::cli
