#pragma once

/// The open document and the view that shows it.

#include "rastrel/export.h"

/// The open document as its view shows it. The host owns it; only the user interface thread uses
/// it.
class RASTREL_API CVelumark5Doc {
 public:
  CVelumark5Doc() = default;
  virtual ~CVelumark5Doc();
  CVelumark5Doc(const CVelumark5Doc&) = delete;
  CVelumark5Doc& operator=(const CVelumark5Doc&) = delete;

  /// The document's origin as a code of 1 to 9: rows from the top, each from the left, so that 7 is
  /// the bottom left corner.
  [[nodiscard]] virtual int GetOrigin() const = 0;
};

/// The view that the user works in. The host owns it; only the user interface thread uses it.
class RASTREL_API CVelumark5View {
 public:
  CVelumark5View() = default;
  virtual ~CVelumark5View();
  CVelumark5View(const CVelumark5View&) = delete;
  CVelumark5View& operator=(const CVelumark5View&) = delete;

  /// Its document, owned by the host; never null.
  [[nodiscard]] virtual CVelumark5Doc* GetDocument() = 0;
  /// Replaces the document by a new one. Handles of the old one are no longer valid.
  virtual void OnNew() = 0;
  /// Sets whether the view may draw itself; a conversion clears it while it works.
  virtual void SetUpdateAllowed(bool allowed) = 0;
};
