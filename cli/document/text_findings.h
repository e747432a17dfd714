#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::cli {

/// Whether an object is a text, in lines or on a circle.
[[nodiscard]] bool IsText(const document::Object& object);

/// The faults of a text as it was laid out: it can't be seen, is squeezed, or has letters that no
/// font has. Sentences in UTF-8. REQUIRES: IsText(object).
[[nodiscard]] std::vector<std::string> TextFindings(const document::Object& object,
                                                    const text::FontCatalog& fonts);

/// A pane of a document's plates, with its page.
struct PlacedPane {
  CWorldRect edges;
  int page = 0;
};

/// All panes of a document, in the order in which they were laid out.
[[nodiscard]] std::vector<PlacedPane> PanesOf(const document::Document& document);

/// Finds the panes that texts are on. Texts come in the order of the panes, nearly always, so that
/// the search begins at the pane found last.
class PaneFinder {
 public:
  /// The panes must outlive this.
  explicit PaneFinder(const std::vector<PlacedPane>& panes) : m_Panes(panes) {}

  /// The place in the list of the pane that an object's middle is in, or that is nearest to it on
  /// its page; the list's size if its page has none.
  [[nodiscard]] std::size_t Find(const document::Document& document, host::ObjectHandle object);

 private:
  [[nodiscard]] std::size_t Find(int page, double x, double y);

  const std::vector<PlacedPane>& m_Panes;
  std::size_t m_Last = 0;
};

}  // namespace rastrel::cli
