#include "interpreter/page_plan.h"

#include <algorithm>
#include <cmath>

namespace rastrel::interpreter {

std::vector<PageRange> PlanRanges(const JobWork& work, const Settings& settings) {
  if (work.pages < 2) return {};
  const double pages = work.pages;
  const double pageWork =
      work.pagePixels + PageWork + ByteWork * static_cast<double>(work.bytes) / pages;
  const double paying = std::floor(pages * pageWork / (StartsOfWork * StartWork));
  const double count = std::min({static_cast<double>(settings.processes), pages, paying,
                                 static_cast<double>(settings.memoryMebibytes / ShareMebibytes)});
  if (count < 2) return {};
  const auto others = static_cast<unsigned>(count) - 1;
  const double lead = (pages + others * StartWork / pageWork) / (others + 1);
  unsigned made = std::min(static_cast<unsigned>(std::lround(lead)), work.pages - others);
  std::vector<PageRange> ranges;
  for (unsigned left = others; left > 0; --left) {
    const unsigned share = (work.pages - made + left - 1) / left;
    ranges.push_back({made + 1, made + share});
    made += share;
  }
  return ranges;
}

std::vector<PageRange> EqualRanges(unsigned pages, const Settings& settings) {
  const std::uint64_t count = std::min(
      {std::uint64_t{pages}, settings.processes, settings.memoryMebibytes / ShareMebibytes});
  if (count < 2) return {};
  std::vector<PageRange> ranges;
  unsigned made = 0;
  for (auto left = static_cast<unsigned>(count); left > 0; --left) {
    const unsigned share = (pages - made + left - 1) / left;
    ranges.push_back({made + 1, made + share});
    made += share;
  }
  return ranges;
}

}  // namespace rastrel::interpreter
