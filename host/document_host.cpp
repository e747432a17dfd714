#include "host/document_host.h"

#include <utility>

#include "host/document/document.h"
#include "host/document/document_application.h"
#include "host/document/document_file.h"
#include "host/document/document_store.h"
#include "host/document/notices.h"
#include "host/graphics/graphic_loader.h"
#include "host/graphics/native_graphics.h"
#include "host/text/font_catalog.h"
#include "host/text/text_engine.h"

namespace rastrel::document {

// Each uses those before it.
struct DocumentHost::Parts {
  explicit Parts(std::unique_ptr<Document> opened)
      : document(std::move(opened)),
        store(*document),
        application(*document, store, notices),
        fonts(notices),
        text(store, fonts, notices),
        graphics(*document, notices),
        loader(*document, notices) {
    store.ReportTo(&notices);
    application.SetGraphicLoader(
        [this](const std::wstring& path, bool cutLine) { return loader.Load(path, cutLine); });
  }

  Notices notices;
  std::unique_ptr<Document> document;
  DocumentStore store;
  DocumentApplication application;
  text::FontCatalog fonts;
  text::TextEngine text;
  graphics::NativeGraphics graphics;
  graphics::GraphicLoader loader;
};

DocumentHost::DocumentHost() : DocumentHost(std::make_unique<Document>()) {}

DocumentHost::DocumentHost(std::unique_ptr<Document> document)
    : m_Parts(std::make_unique<Parts>(std::move(document))) {}

DocumentHost::~DocumentHost() = default;

Expected<std::unique_ptr<DocumentHost>> DocumentHost::Open(const std::wstring& path) {
  auto document = LoadDocument(path);
  if (!document) return document.Error();
  return std::make_unique<DocumentHost>(std::move(*document));
}

Expected<void> DocumentHost::Save(const std::wstring& path) const {
  return SaveDocument(*m_Parts->document, path);
}

host::ObjectStore* DocumentHost::GetObjectStore() { return &m_Parts->store; }
host::TextCompose* DocumentHost::GetTextCompose() { return &m_Parts->text; }
host::GraphicsIO* DocumentHost::GetGraphicsIO() { return &m_Parts->graphics; }
host::Application* DocumentHost::GetApplication() { return &m_Parts->application; }

Document& DocumentHost::GetDocument() { return *m_Parts->document; }
const Document& DocumentHost::GetDocument() const { return *m_Parts->document; }
Notices& DocumentHost::GetNotices() { return m_Parts->notices; }
const text::FontCatalog& DocumentHost::GetFonts() const { return m_Parts->fonts; }

DocumentHost::OpenWork DocumentHost::StillOpen() const {
  return {m_Parts->document->OpenSteps(), m_Parts->store.OpenLists(), m_Parts->text.IsOpen()};
}

}  // namespace rastrel::document
