#include "host/document_host.h"

#include <utility>

#include "host/document/document.h"
#include "host/document/document_application.h"
#include "host/document/document_file.h"
#include "host/document/document_store.h"
#include "host/document/knife_lines.h"
#include "host/document/notices.h"
#include "host/graphics/graphic_loader.h"
#include "host/graphics/native_graphics.h"
#include "host/graphics/placed_file.h"
#include "host/host_files.h"
#include "host/load_settings_store.h"
#include "host/plane_library.h"
#include "host/separation_planes.h"
#include "host/text/font_catalog.h"
#include "host/text/text_engine.h"
#include "host/watched_settings.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

// Lets files in that may be loaded, and makes a notice of each other one.
class Door {
 public:
  explicit Door(Notices& notices) : m_Notices(notices) {}
  void SetPolicy(DocumentHost::ReadPolicy policy) { m_Policy = std::move(policy); }

  [[nodiscard]] bool LetsIn(const std::wstring& path) const {
    if (!m_Policy) return true;
    const auto allowed = m_Policy(path);
    if (!allowed) m_Notices.AddLoss(path + L": " + os::WideFromUtf8(Describe(allowed.Error())));
    return static_cast<bool>(allowed);
  }

 private:
  Notices& m_Notices;
  DocumentHost::ReadPolicy m_Policy;
};

class GuardedGraphics : public graphics::NativeGraphics {
 public:
  GuardedGraphics(Document& document, Notices& notices, const Door& door)
      : NativeGraphics(document, notices), m_Door(door) {}

  int LoadVEFile(CWnd* window, const wchar_t* path, int reserved) override {
    if (path && !m_Door.LetsIn(path)) return 0;
    return NativeGraphics::LoadVEFile(window, path, reserved);
  }

 private:
  const Door& m_Door;
};

}  // namespace

// Each uses those before it.
struct DocumentHost::Parts {
  Parts(std::unique_ptr<Document> opened, host::Settings& stored)
      : watched(stored),
        settings(watched),
        files(settings),
        document(std::move(opened)),
        store(*document),
        application(*document, store, notices),
        fonts(notices),
        text(store, fonts, notices),
        graphics(*document, notices, door),
        knifeLines(store, notices),
        loader(*document, notices) {
    store.ReportTo(&notices);
    application.SetGraphicLoader([this](const std::wstring& path, bool cutLine) {
      if (!door.LetsIn(path)) return 0;
      // Read anew for each file: an import sets it while it loads.
      const int letters = GetIntKorvane(L"IMPPDF", L"TextAsGraphics", 0, DS_USER, nullptr);
      return loader.Load(path, {cutLine, letters != 0});
    });
    application.SetEpsOpener([this](const std::wstring& path) {
      return door.LetsIn(path) ? graphics::OpenEps(store, notices, path) : nullptr;
    });
    store.SetItemSource(
        [this](ObjectHandle object) { return graphics::ItemOf(store, notices, object); });
    application.SetUnitsSource([this] { return static_cast<int>(units.value_or(StoredUnits())); });
    application.SetPlaneOpener(
        [this](const std::wstring& info) { return OpenPlanes(info, document->Colors()); });
    application.SetProgramFiles(&files);
    text.SetDialogViews([this] { return views; });
    application.SetNewDocumentHandler([this] { text.Clear(); });
  }

  [[nodiscard]] Units StoredUnits() {
    const auto stored = settings.Read(L"RASTREL", L"Units", DS_USER);
    if (stored == L"1") return Units::Millimetres;
    return stored == L"2" ? Units::Inches : Units::Centimetres;
  }

  WatchedSettings watched;
  LoadSettingsStore settings;
  HostFiles files;
  Notices notices;
  Door door{notices};
  std::unique_ptr<Document> document;
  DocumentStore store;
  DocumentApplication application;
  text::FontCatalog fonts;
  text::TextEngine text;
  GuardedGraphics graphics;
  KnifeLines knifeLines;
  PlaneLibrary planes{
      [this](const Failure& failure) { notices.AddLoss(os::WideFromUtf8(Describe(failure))); }};
  graphics::GraphicLoader loader;
  host::DialogViews* views = nullptr;
  std::optional<Units> units;
};

DocumentHost::DocumentHost() : DocumentHost(std::make_unique<Document>()) {}

DocumentHost::DocumentHost(std::unique_ptr<Document> document)
    : m_Parts(std::make_unique<Parts>(std::move(document), StandaloneHost::GetSettings())) {}

DocumentHost::~DocumentHost() = default;

Expected<std::unique_ptr<DocumentHost>> DocumentHost::Open(const std::wstring& path) {
  auto document = LoadDocument(path);
  if (!document) return document.Error();
  return std::make_unique<DocumentHost>(std::move(*document));
}

Expected<void> DocumentHost::Save(const std::wstring& path) const {
  return SaveDocument(*m_Parts->document, path);
}

host::Settings& DocumentHost::GetSettings() { return m_Parts->settings; }
host::ObjectStore* DocumentHost::GetObjectStore() { return &m_Parts->store; }
host::TextCompose* DocumentHost::GetTextCompose() { return &m_Parts->text; }
host::GraphicsIO* DocumentHost::GetGraphicsIO() { return &m_Parts->graphics; }
host::ContourCut* DocumentHost::GetContourCut() { return &m_Parts->knifeLines; }
host::PlaneReader* DocumentHost::GetPlaneReader() { return &m_Parts->planes; }
host::Application* DocumentHost::GetApplication() { return &m_Parts->application; }

void DocumentHost::SetReadPolicy(ReadPolicy policy) { m_Parts->door.SetPolicy(std::move(policy)); }
host::DialogViews& DocumentHost::GetDialogViews() {
  return m_Parts->views ? *m_Parts->views : StandaloneHost::GetDialogViews();
}
void DocumentHost::SetDialogViews(host::DialogViews* views) { m_Parts->views = views; }

Expected<void> DocumentHost::ReplaceFont(const std::wstring& name,
                                         const std::wstring& replacement) {
  return m_Parts->fonts.Replace(name, replacement);
}
void DocumentHost::CancelMissingFonts(bool cancel) { m_Parts->text.CancelMissingFonts(cancel); }

void DocumentHost::SetUnits(Units units) { m_Parts->units = units; }

std::optional<std::wstring> DocumentHost::GetLanguageKey() {
  auto key = m_Parts->settings.Read(L"RASTREL", L"Language", DS_USER);
  return key && !key->empty() ? std::move(key) : std::nullopt;
}

Document& DocumentHost::GetDocument() { return *m_Parts->document; }
const Document& DocumentHost::GetDocument() const { return *m_Parts->document; }
Notices& DocumentHost::GetNotices() { return m_Parts->notices; }
const text::FontCatalog& DocumentHost::GetFonts() const { return m_Parts->fonts; }

std::vector<std::pair<std::wstring, std::wstring>> DocumentHost::RefusedSettings() const {
  return m_Parts->watched.Refused();
}

DocumentHost::OpenWork DocumentHost::StillOpen() const {
  return {m_Parts->document->OpenSteps(), m_Parts->store.OpenLists(), m_Parts->text.IsOpen()};
}

}  // namespace rastrel::document
