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

/// How a page is written.
struct RenderOrder {
  devices::FileFormat format = devices::FileFormat::Tiff;
  devices::Compression compression = devices::Compression::Lzw;
  bool planar = false;                   ///< each plane as a file of its own
  unsigned threads = 0;                  ///< that encode; 0: as many as there are processors
  std::function<void(double)> progress;  ///< called with the share that is done
};

/// Writes all rows of a page: into one target with all planes, or, `planar`, into a gray picture
/// for each plane in order (in ink planes white is no ink). The page's files are checked beside
/// that: one that is not as described is the failure, whatever else fails. No thread is left at the
/// end. REQUIRES: one target, or as many as there are planes.
[[nodiscard]] Expected<void> Render(PageSource& source, const RenderOrder& order,
                                    std::span<const RenderTarget> targets);

}  // namespace rastrel::odalis
