#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "host/document/json_reader.h"

/// Reading a long JSON text so that its values never stand in memory all at once.
namespace rastrel::document {

/// Levels of arrays and objects that a text may have: more than any document's, and few enough that
/// no text takes memory by its depth.
inline constexpr std::size_t DeepestJson = 1000;

/// What becomes of the arrays that a text mostly consists of: one of the outermost object, and
/// those that stand in its elements under another name, in their elements, and so on.
struct ElementTaker {
  std::string_view outer;   ///< the outermost object's member
  std::string_view nested;  ///< the elements' member
  /// The outer array begins, and these members stand before it. False to have it, and all that is
  /// in it, as values like any other.
  std::function<bool(const JsonValue& before)> begins;
  /// An element, after those that stand in it; in their place it has an empty array. It is not
  /// kept. `depth` is 0 for the outer array's own elements.
  std::function<void(const JsonValue& element, std::size_t depth)> take;
};

/// Parses a whole text (RFC 8259). What is not taken is the result; a taken array is empty there.
/// Of members of one name the last one counts, but a taken one is refused where it stands twice.
/// Throws JsonFault for what is no JSON or too deep, and lets through what the taker throws.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text, const ElementTaker& taker);

}  // namespace rastrel::document
