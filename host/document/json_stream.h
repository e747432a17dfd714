#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "host/document/json_reader.h"

/// Reading a long JSON text without holding all its values in memory at once.
namespace rastrel::document {

/// Levels of arrays and objects that a text may have: more than any document's, and few enough that
/// no text takes memory by its depth.
inline constexpr std::size_t DeepestJson = 1000;

/// Takes the elements of the arrays that make up most of a text: one member of the outermost
/// object, and the members of another name of its elements, of their elements, and so on.
///
///     {"format": ..., "objects": [ {..., "members": [ {...}, ... ]}, ... ], ...}
///                     outer       element  nested     element at depth 1
struct ElementTaker {
  std::string_view outer;   ///< name of the outermost object's member
  std::string_view nested;  ///< name of the elements' member
  /// The outer array begins; `before` holds the members ahead of it. False to keep the array, and
  /// all that is in it, as ordinary values.
  std::function<bool(const JsonValue& before)> begins;
  /// An element, after the elements within it; their array is empty here. The element ends with the
  /// call. `depth` is 0 for the outer array's own elements.
  std::function<void(const JsonValue& element, std::size_t depth)> take;
};

/// Parses a whole text (RFC 8259). The result holds the values that were not taken; a taken array
/// is empty there. Of members of one name the last one counts, but a taken one is refused if it
/// comes twice. Ends the reading (ReadJson) for a text that is not JSON or is too deep, and lets
/// the taker's exceptions pass.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text, const ElementTaker& taker);

}  // namespace rastrel::document
