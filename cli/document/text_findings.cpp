#include "cli/document/text_findings.h"

#include <algorithm>
#include <limits>
#include <variant>

#include "host/text/arc_layout.h"
#include "host/text/text_check.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

// The square of the distance from a point to a pane; 0 inside.
double DistanceTo(const CWorldRect& pane, double x, double y) {
  const double left = std::min(pane.left, pane.right);
  const double right = std::max(pane.left, pane.right);
  const double bottom = std::min(pane.bottom, pane.top);
  const double top = std::max(pane.bottom, pane.top);
  const double across = std::max({left - x, x - right, 0.0});
  const double up = std::max({bottom - y, y - top, 0.0});
  return across * across + up * up;
}

template <typename Layout, typename Shape>
std::vector<std::string> FindingsOf(const Shape& shape, const text::FontCatalog& fonts,
                                    const char* squeezed) {
  const Layout layout(shape, fonts);
  std::vector<std::string> found;
  if (const auto unseen = text::InvisibleTextNotice(shape, layout, 1)) {
    found.push_back(os::Utf8FromWide(*unseen));
  } else if (layout.IsSqueezed()) {
    found.emplace_back(squeezed);
  }
  if (const auto missing = text::MissingLettersNotice(shape, layout))
    found.push_back(os::Utf8FromWide(*missing));
  return found;
}

}  // namespace

bool IsText(const document::Object& object) {
  return std::holds_alternative<document::TextShape>(object.shape) ||
         std::holds_alternative<document::ArcTextShape>(object.shape);
}

std::vector<std::string> TextFindings(const document::Object& object,
                                      const text::FontCatalog& fonts) {
  if (const auto* arc = std::get_if<document::ArcTextShape>(&object.shape))
    return FindingsOf<text::ArcLayout>(*arc, fonts,
                                       "the text is longer than its circle, and is squeezed");
  return FindingsOf<text::TextLayout>(
      std::get<document::TextShape>(object.shape), fonts,
      "the text does not fit between its margins as it is, and is squeezed");
}

std::vector<PlacedPane> PanesOf(const document::Document& document) {
  std::vector<PlacedPane> panes;
  for (const host::ObjectHandle member : document.Members(host::DocumentRoot)) {
    const document::Object& object = *document.Find(member);
    const auto* plate = std::get_if<document::PlateShape>(&object.shape);
    if (!plate) continue;
    for (const CWorldRect& pane : plate->panes)
      panes.push_back({pane, object.attributes.pages.first});
  }
  return panes;
}

std::size_t PaneFinder::Find(const document::Document& document, host::ObjectHandle object) {
  const BOUNDS bounds = document.Bounds(object);
  return Find(document.Find(object)->attributes.pages.first, (bounds.xmin + bounds.xmax) / 2,
              (bounds.ymin + bounds.ymax) / 2);
}

std::size_t PaneFinder::Find(int page, double x, double y) {
  double nearest = std::numeric_limits<double>::infinity();
  std::size_t found = m_Panes.size();
  for (std::size_t i = 0; i < m_Panes.size(); ++i) {
    const std::size_t at = (m_Last + i) % m_Panes.size();
    if (m_Panes[at].page != page) continue;
    const double distance = DistanceTo(m_Panes[at].edges, x, y);
    if (distance < nearest) {
      nearest = distance;
      found = at;
    }
    if (distance == 0) break;
  }
  if (found < m_Panes.size()) m_Last = found;
  return found;
}

}  // namespace rastrel::cli
