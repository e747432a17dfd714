#pragma once

#include <cstddef>

#include "host/render/canvas.h"

namespace rastrel::render {

/// The outlines of a run's letters on the page; `place` maps the run's own coordinates to the
/// page's. Filled by the nonzero rule: letters may overlap.
[[nodiscard]] Outline LetterOutlines(const text::TextLayout& layout, std::size_t run,
                                     const TM& place);

/// The outlines of all letters on a circle; `place` maps the circle's coordinates to the page's.
[[nodiscard]] Outline LetterOutlines(const text::ArcLayout& layout, const TM& place);

/// The matrix that maps by `first` and then by `second`.
[[nodiscard]] TM Composed(const TM& first, const TM& second);

}  // namespace rastrel::render
