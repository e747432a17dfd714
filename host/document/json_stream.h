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

/// What becomes of the array that a text mostly consists of. The values live during the call.
struct ElementTaker {
  /// The array begins, and these members of the outermost object stand before it. False to have it
  /// as a member like any other.
  std::function<bool(const JsonValue& before)> begins;
  /// An element of it, which is not kept.
  std::function<void(const JsonValue& element)> take;
};

/// Parses a whole text (RFC 8259). Elements of the array `streamed`, a member of the outermost
/// object, go to the taker as they come; everything else is the result. Of members of one name the
/// last one counts. Throws JsonFault for what is no JSON or too deep, and lets through what the
/// taker throws.
[[nodiscard]] nlohmann::json ParseJson(std::string_view text, std::string_view streamed,
                                       const ElementTaker& taker);

}  // namespace rastrel::document
