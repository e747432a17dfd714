#pragma once

#include <span>
#include <string>
#include <string_view>

#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

/// The page list that the RIP hands to the library (docs/formats/rip.md).
namespace rastrel::corerast {

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

/// The library path of a run's directory, with its closing separator, as the page list can hold it;
/// a page's own directory is the one of its title below it. That is the native path; where a reader
/// of the list would stumble over it, a path on a drive letter from r to z, whose folder in the
/// data root is made a link to the directory's parent. Fails if no such letter is free.
[[nodiscard]] Expected<std::string> ListedPath(const interpreter::RunDirectory& directory);

}  // namespace rastrel::corerast
