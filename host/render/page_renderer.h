#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/render/canvas.h"
#include "host/render/picture_cache.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::render {

/// Pages and objects that can be drawn at once; an object counts on each page that it is on.
inline constexpr int MaximumPages = 10'000;
inline constexpr std::size_t MaximumObjects = 5'000'000;
/// Points that a page may be wide and high: 352 m.
inline constexpr double LargestPage = 1'000'000;

/// Draws pages of a document.
///
/// Objects are drawn in the document's order. Pages and sheet layer of a group count for all its
/// members; an object that is not visible is not drawn, nor are its members. Parts in the invisible
/// color are left out.
///
/// - The blank is white with a thin gray edge, where it is wanted.
/// - Panes of a plate are filled with the plate's color and have an edge: as their line style
///   says, or else a thin gray one. On a sheet layer without material they have the edge alone.
/// - Letters have the color of their run, or that of the text.
/// - Paths are filled by their rule, where they are closed or say that they fill open runs too, and
///   outlined as their line style says.
/// - Cut lines are thin, in their line color, whatever their style: dashed, and with a dot between
///   dashes where they go through the material.
/// - Drill points are a circle in true size with a cross, thin, in their line color.
/// - Placed files fill their box; one that can't be drawn is a crossed box, with a notice.
class PageRenderer {
 public:
  /// All must outlive the renderer, and the document must stay as it is.
  PageRenderer(const document::Document& document, const text::FontCatalog& fonts,
               document::Notices& notices, PictureOpener opener);
  ~PageRenderer();
  PageRenderer(const PageRenderer&) = delete;
  PageRenderer& operator=(const PageRenderer&) = delete;

  /// Success if the document can be drawn; else a sentence for the user, and Draw must not be
  /// called.
  [[nodiscard]] const Expected<void>& Drawable() const { return m_Drawable; }
  /// At least 1.
  [[nodiscard]] int PageCount() const { return m_PageCount; }
  /// Size of a page in points.
  [[nodiscard]] double Width() const { return m_Width; }
  [[nodiscard]] double Height() const { return m_Height; }

  /// Draws a page, counted from 1. A page without objects is the blank alone. Fails, with a
  /// sentence for the user, where letters would be missing because a font can't be opened; the
  /// canvas is then not to be used.
  [[nodiscard]] Expected<void> Draw(int page, Canvas& canvas, bool blank);

 private:
  using Handles = std::vector<document::ObjectHandle>;

  void DrawBlank(Canvas& canvas) const;
  // Puts the document's members on their pages; fails beyond the limits.
  [[nodiscard]] Expected<void> Sort();

  const document::Document& m_Document;
  const text::FontCatalog& m_Fonts;
  document::Notices& m_Notices;
  std::unique_ptr<PictureCache> m_Pictures;
  double m_Width;
  double m_Height;
  int m_PageCount = 1;
  std::unordered_map<int, Handles> m_Pages;  // the document's members on a page
  Expected<void> m_Drawable;
};

}  // namespace rastrel::render
