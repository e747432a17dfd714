#pragma once

#include <span>
#include <string>
#include <string_view>

/// The page list that the RIP hands to the library (docs/formats/rip.md).
namespace rastrel::interpreter {

/// One page of the list. All are UTF-8 and hold neither line ends nor what IsPlainValue refuses.
struct ListedPage {
  std::string id;
  std::string directory;
  std::string title;
};

/// Whether a reader that looks for "begin" and "end" anywhere in the text, takes '>' for the start
/// of a comment and trims values gets this value back: none of these in it, no control character,
/// no blank at either end, well-formed UTF-8, and not empty.
[[nodiscard]] bool IsPlainValue(std::string_view value);

/// The whole text. REQUIRES: every value is plain.
[[nodiscard]] std::string FormatPageList(std::span<const ListedPage> pages);

}  // namespace rastrel::interpreter
