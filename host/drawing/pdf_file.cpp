#include <poppler.h>

#include <memory>
#include <utility>

#include "host/drawing/glib_objects.h"
#include "host/drawing/picture_formats.h"

/// PDF files as pictures.
namespace rastrel::drawing {

namespace {

class PdfPicture : public Picture {
 public:
  PdfPicture(std::shared_ptr<const std::string> bytes,
             std::unique_ptr<PopplerDocument, GlibEnd> document,
             std::unique_ptr<PopplerPage, GlibEnd> page, PdfLines lines)
      : m_File(std::move(bytes)),
        m_Document(std::move(document)),
        m_Page(std::move(page)),
        m_Lines(lines) {
    double width = 0;
    double height = 0;
    poppler_page_get_size(m_Page.get(), &width, &height);
    SetSize(width, height);
  }

  [[nodiscard]] Expected<void> Draw(cairo_t* context) const override {
    cairo_save(context);
    if (m_Lines == PdfLines::AsTheyAre) {
      poppler_page_render_for_printing(m_Page.get(), context);
    } else {
      poppler_page_render(m_Page.get(), context);
    }
    cairo_restore(context);
    return {};
  }

 private:
  std::shared_ptr<const std::string> m_File;  // which the document reads from
  std::unique_ptr<PopplerDocument, GlibEnd> m_Document;
  std::unique_ptr<PopplerPage, GlibEnd> m_Page;
  PdfLines m_Lines;
};

using PdfDocument = std::unique_ptr<PopplerDocument, GlibEnd>;

// The bytes must outlive the document.
PdfDocument OpenDocument(const std::string& bytes, GError** error) {
  const std::unique_ptr<GBytes, GlibEnd> data(g_bytes_new_static(bytes.data(), bytes.size()));
  return PdfDocument(poppler_document_new_from_bytes(data.get(), nullptr, error));
}

}  // namespace

OpenedPicture OpenPdf(std::shared_ptr<const std::string> bytes, PdfLines lines) {
  GError* raised = nullptr;
  auto document = OpenDocument(*bytes, &raised);
  const GlibError error(raised);
  if (!document) {
    return FailureOf("it is no PDF that can be drawn" + ReasonAfterColon(error));
  }
  std::unique_ptr<PopplerPage, GlibEnd> page(poppler_document_get_n_pages(document.get()) > 0
                                                 ? poppler_document_get_page(document.get(), 0)
                                                 : nullptr);
  if (!page) return FailureOf("the PDF has no page");
  return std::unique_ptr<Picture>(
      std::make_unique<PdfPicture>(std::move(bytes), std::move(document), std::move(page), lines));
}

bool HasDrawnLetters(const std::string& pdf) {
  GError* raised = nullptr;
  const PdfDocument document = OpenDocument(pdf, &raised);
  const GlibError error(raised);
  if (!document) return false;
  const std::unique_ptr<PopplerFontInfo, GlibEnd> info(poppler_font_info_new(document.get()));
  PopplerFontsIter* fonts = nullptr;
  bool found = false;
  // It goes on from page to page.
  if (poppler_font_info_scan(info.get(), 1, &fonts) && fonts) {
    do {
      found = poppler_fonts_iter_get_font_type(fonts) == POPPLER_FONT_TYPE_TYPE3;
    } while (!found && poppler_fonts_iter_next(fonts));
  }
  poppler_fonts_iter_free(fonts);
  return found;
}

}  // namespace rastrel::drawing
