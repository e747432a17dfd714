#include "host/render/page_renderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/measure_text.h"
#include "host/render/object_painter.h"

namespace rastrel::render {

using document::Document;
using document::Object;
using document::ObjectHandle;

namespace {

constexpr double PointsPerCentimetre = 72 / 2.54;
constexpr double Thinnest = 0;
constexpr Color White{1, 1, 1};
constexpr Color EdgeGray{0.6, 0.6, 0.6};

bool IsVisible(const Object& object) { return (object.attributes.traits & DBTRAIT_VISIBLE) != 0; }

}  // namespace

PageRenderer::PageRenderer(const Document& document, const text::FontCatalog& fonts,
                           document::Notices& notices, PictureOpener opener)
    : m_Document(document),
      m_Fonts(fonts),
      m_Notices(notices),
      m_Pictures(std::make_unique<PictureCache>(notices, std::move(opener))),
      m_Width(document.Blank().width * PointsPerCentimetre),
      m_Height(document.Blank().height * PointsPerCentimetre),
      m_Drawable(Sort()) {}

PageRenderer::~PageRenderer() = default;

Expected<void> PageRenderer::Sort() {
  const document::SignBlank& blank = m_Document.Blank();
  for (const double side : {m_Width, m_Height}) {
    if (!(side > 0) || side > LargestPage) {
      return FailureOf("a blank of " + document::SizeText(blank.width, blank.height) +
                       " can't be drawn: its sides must be above 0 and at most " +
                       document::MeasureText(LargestPage / PointsPerCentimetre) + " cm");
    }
  }
  std::size_t count = 0;
  for (const ObjectHandle handle : m_Document.Members(host::DocumentRoot)) {
    const VK_PAGE_RANGE pages = m_Document.Find(handle)->attributes.pages;
    if (pages.last > MaximumPages) {
      return FailureOf("the document has " + std::to_string(pages.last) + " pages; at most " +
                       std::to_string(MaximumPages) + " can be drawn");
    }
    for (int page = std::max(pages.first, 1); page <= pages.last; ++page) {
      if (++count > MaximumObjects) {
        return FailureOf("the document has more than " + std::to_string(MaximumObjects) +
                         " objects on its pages, which are the most that can be drawn");
      }
      m_Pages[page].push_back(handle);
    }
    m_PageCount = std::max(m_PageCount, pages.last);
  }
  return {};
}

void PageRenderer::DrawBlank(Canvas& canvas) const {
  Outline edge;
  edge.MoveTo({0, 0});
  edge.LineTo({m_Width, 0});
  edge.LineTo({m_Width, m_Height});
  edge.LineTo({0, m_Height});
  edge.Close();
  canvas.Begin(Role::Blank);
  canvas.DrawOutline(edge, White, Pen{EdgeGray, Thinnest});
  canvas.End();
}

Expected<void> PageRenderer::Draw(int page, Canvas& canvas, bool blank) {
  if (blank) DrawBlank(canvas);
  const auto found = m_Pages.find(page);
  if (found == m_Pages.end()) return {};
  ObjectPainter painter(m_Document, m_Fonts, m_Notices, *m_Pictures, {m_Width, m_Height}, canvas);
  // The open groups and the next member of each, the outermost first.
  struct Level {
    const Handles* members;
    std::size_t next;
  };
  std::vector<Level> levels{{&found->second, 0}};
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.members->size()) {
      levels.pop_back();
      if (!levels.empty()) canvas.EndGroup();
      continue;
    }
    const ObjectHandle handle = (*level.members)[level.next++];
    const Object& object = *m_Document.Find(handle);
    if (!IsVisible(object)) continue;
    if (std::holds_alternative<document::GroupShape>(object.shape)) {
      canvas.BeginGroup();
      levels.push_back({&m_Document.Members(handle), 0});
    } else {
      painter.Paint(object);
    }
  }
  return painter.Painted();
}

}  // namespace rastrel::render
