#pragma once

/// Loading graphics of the host's own kind.

#include "rastrel/export.h"

class CWnd;

namespace rastrel::host {

/// Loads files of the host's own format. Only the user interface thread calls.
class RASTREL_API GraphicsIO {
 public:
  GraphicsIO() = default;
  virtual ~GraphicsIO();
  GraphicsIO(const GraphicsIO&) = delete;
  GraphicsIO& operator=(const GraphicsIO&) = delete;

  /// Loads a native graphic file into the document, at the place and the size that the file names.
  /// `path` is wide, ends with a zero, and has either separator. `window` may be null; the library
  /// passes 1. Non-zero for success: the loaded objects are then the selection. 0 leaves the
  /// document as it was.
  virtual int LoadVEFile(CWnd* window, const wchar_t* path, int reserved) = 0;
};

}  // namespace rastrel::host
