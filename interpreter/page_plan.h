#pragma once

#include <cstdint>
#include <vector>

#include "interpreter/settings.h"

/// The division of a job's pages among interpreters that work at the same time.
namespace rastrel::interpreter {

/// Pages of a job, counted from 1, both ends included.
struct PageRange {
  unsigned first = 0;
  unsigned last = 0;

  [[nodiscard]] unsigned Count() const { return last - first + 1; }
  bool operator==(const PageRange&) const = default;
};

/// The work that a job is, as far as that is known before its first page is painted.
struct JobWork {
  unsigned pages = 0;       ///< of the job
  double pagePixels = 0;    ///< of the first page; the others count as the same
  std::uint64_t bytes = 0;  ///< of the job's file
};

/// The work is measured in pixels painted. An interpreter's start is worth as much as so many: with
/// its fonts 0.39 thousand million instructions, and 14 are run for each pixel of an RGB page.
inline constexpr double StartWork = 28e6;
/// The same of a page's beginning and end, and of a byte of the job's file.
inline constexpr double PageWork = 1.2e6;
inline constexpr double ByteWork = 32;
/// Work, in starts, that each interpreter is to have at least: less does not pay for its start.
inline constexpr double StartsOfWork = 2;
/// Memory that each interpreter is to have at least, of the job's own.
inline constexpr std::uint64_t ShareMebibytes = 256;

/// The ranges that further interpreters make, in order, without a gap up to the last page. The
/// first interpreter makes the pages before them; it has somewhat more, since it is at work while
/// the others start. Empty if it is to make all pages. There are at most `settings.processes`
/// interpreters.
[[nodiscard]] std::vector<PageRange> PlanRanges(const JobWork& work, const Settings& settings);

/// Ranges of the same size, in order, of all pages, for as many interpreters as the settings allow,
/// where a user has asked for it. Empty if that is one.
[[nodiscard]] std::vector<PageRange> EqualRanges(unsigned pages, const Settings& settings);

}  // namespace rastrel::interpreter
