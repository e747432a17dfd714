#include <glib.h>
#include <poppler.h>

#include <memory>
#include <utility>

#include "host/graphics/picture_kinds.h"

/// PDF files as pictures.
namespace rastrel::graphics {

namespace {

struct GObjectEnd {
  void operator()(void* object) const { g_object_unref(object); }
};
struct BytesEnd {
  void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};
struct ErrorEnd {
  void operator()(GError* error) const { g_error_free(error); }
};

class PdfPicture : public Picture {
 public:
  PdfPicture(std::shared_ptr<const std::string> bytes,
             std::unique_ptr<PopplerDocument, GObjectEnd> document,
             std::unique_ptr<PopplerPage, GObjectEnd> page)
      : m_File(std::move(bytes)), m_Document(std::move(document)), m_Page(std::move(page)) {
    double width = 0;
    double height = 0;
    poppler_page_get_size(m_Page.get(), &width, &height);
    SetSize(width, height);
  }

  void Draw(cairo_t* context) const override {
    cairo_save(context);
    poppler_page_render(m_Page.get(), context);
    cairo_restore(context);
  }

 private:
  std::shared_ptr<const std::string> m_File;  // which the document reads from
  std::unique_ptr<PopplerDocument, GObjectEnd> m_Document;
  std::unique_ptr<PopplerPage, GObjectEnd> m_Page;
};

}  // namespace

OpenedPicture OpenPdf(std::shared_ptr<const std::string> bytes) {
  const std::unique_ptr<GBytes, BytesEnd> data(g_bytes_new_static(bytes->data(), bytes->size()));
  GError* raised = nullptr;
  std::unique_ptr<PopplerDocument, GObjectEnd> document(
      poppler_document_new_from_bytes(data.get(), nullptr, &raised));
  const std::unique_ptr<GError, ErrorEnd> error(raised);
  if (!document) {
    return FailureOf(std::string("it is no PDF that can be drawn") +
                     (error ? std::string(": ") + error->message : ""));
  }
  std::unique_ptr<PopplerPage, GObjectEnd> page(poppler_document_get_n_pages(document.get()) > 0
                                                    ? poppler_document_get_page(document.get(), 0)
                                                    : nullptr);
  if (!page) return FailureOf("the PDF has no page");
  return std::unique_ptr<Picture>(
      std::make_unique<PdfPicture>(std::move(bytes), std::move(document), std::move(page)));
}

}  // namespace rastrel::graphics
