#pragma once

#include <functional>
#include <span>
#include <string>

#include "children/coreodalis/image.h"
#include "children/coreodalis/page_source.h"

namespace rastrel::odalis {

/// An open, empty file that a page or one of its planes is written to.
struct RenderTarget {
  int descriptor = -1;
  std::string name;  ///< for messages
};

/// Writes all rows of a page: into one target with all planes, or, `planar`, into a gray picture
/// for each plane in order (in ink planes white is no ink). `progress` gets the share that is
/// done. REQUIRES: one target, or as many as there are planes.
[[nodiscard]] Expected<void> Render(PageSource& source, devices::FileFormat format, bool planar,
                                    std::span<const RenderTarget> targets,
                                    const std::function<void(double)>& progress);

}  // namespace rastrel::odalis
