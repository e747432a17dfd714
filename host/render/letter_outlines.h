#pragma once

#include <cstddef>

#include "host/render/canvas.h"

namespace rastrel::render {

/// The outlines of a run's letters on the page; `place` maps the run's own coordinates to the
/// page's. Filled by the nonzero rule: letters may overlap.
[[nodiscard]] Outline LetterOutlines(const text::TextLayout& layout, std::size_t run,
                                     const TM& place);

}  // namespace rastrel::render
