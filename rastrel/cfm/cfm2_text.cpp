#include "rastrel/cfm/cfm2_text.h"

#include <algorithm>

namespace rastrel::cfm {

namespace {
constexpr std::wstring_view TrimSet = L"\t \n\r\a\f\v";
}  // namespace

std::wstring_view Trimmed(std::wstring_view text) {
  const auto first = text.find_first_not_of(TrimSet);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(TrimSet) - first + 1);
}

// One pass is the same as a search from the beginning after each removal: no ">" is before the
// place of a removal, so nothing there can begin a comment later.
std::wstring WithoutComments(std::wstring_view text, wchar_t lineDelimiter, bool& missingEnd) {
  std::wstring result;
  result.reserve(
      text.size());  // it never grows, and growing piece by piece touches twice the memory
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t open = std::min(text.find(L'>', at), text.size());
    result.append(text.substr(at, open - at));
    if (open == text.size()) break;
    const bool block = open + 1 < text.size() && text[open + 1] == L'>';
    if (!block) {
      at = std::min(text.find(lineDelimiter, open), text.size());
      continue;
    }
    const std::size_t close = text.find(CommentEnd, open);
    if (close == std::wstring_view::npos) {
      missingEnd = true;
      break;
    }
    const std::size_t after = std::min(close + CommentEnd.size() + CommentTail, text.size());
    // However many lines the comment took, one line end comes back.
    if (text.substr(open, after - open).find(lineDelimiter) != std::wstring_view::npos)
      result += lineDelimiter;
    at = after;
  }
  return result;
}

}  // namespace rastrel::cfm
