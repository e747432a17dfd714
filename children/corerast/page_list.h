#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// The page list that the RIP hands to the library (docs/formats/rip.md).
namespace rastrel::corerast {

/// One page of the list. Each value is plain (IsPlainValue).
struct ListedPage {
  std::string id;
  std::string directory;
  std::string title;
};

/// Whether a reader that looks for "begin" and "end" anywhere in the text, takes '>' for the start
/// of a comment, trims values and decodes the text in pieces of any length gets this value back:
/// none of these in it, printable ASCII alone, no blank at either end, and not empty. A letter of
/// several bytes could be cut between two pieces, and would be lost.
[[nodiscard]] bool IsPlainValue(std::string_view value);

/// The whole text. REQUIRES: every value is plain.
[[nodiscard]] std::string FormatPageList(std::span<const ListedPage> pages);

/// The library path of a run's directory, with its closing separator, as the page list can hold it;
/// a page's own directory is the one of its title below it. `parent` is the native path of the
/// directory that it lies in, without a closing slash, and `name` its plain name there.
///
/// The result is the native path if that is plain and has no backslash. Otherwise it is a path on a
/// drive letter from r to z, whose folder in the data root is made a link to `parent`. Fails if no
/// such letter is free.
[[nodiscard]] Expected<std::string> ListedPath(const std::string& parent, const std::string& name);

}  // namespace rastrel::corerast
