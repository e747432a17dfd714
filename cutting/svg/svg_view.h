#pragma once

#include "cutting/job/contour.h"
#include "cutting/svg/svg_shapes.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

namespace rastrel::cutting {

/// The frame that an element opens for its children.
struct SvgView {
  Transform map;         ///< from its children's frame to its own parent's
  SvgViewport viewport;  ///< of its children
};

/// The view of an "svg" or "symbol" element with that size in px: its viewBox, by its
/// preserveAspectRatio. Fails with the reason alone.
[[nodiscard]] Expected<SvgView> SvgViewOf(const XmlNode& element, const SvgViewport& size);

/// The size of the whole drawing in px. Without a width or a height of its own it is that of the
/// viewBox, and `isGuess` is set; without that as well it is 0. Fails with the reason alone.
[[nodiscard]] Expected<SvgViewport> SvgPageSize(const XmlNode& root, bool& isGuess);

}  // namespace rastrel::cutting
