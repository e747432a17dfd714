#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::host {
class DialogViews;
}

namespace rastrel::text {
class FontCatalog;
class TextEngine;
}  // namespace rastrel::text

namespace rastrel::document {

class Document;
class DocumentApplication;
class DocumentStore;
class Notices;

/// The embedded host: a host with a document, for imports and conversions in a program that has no
/// document of its own. Settings, directories and translation are the standalone host's; only the
/// settings that an import changes for the load of a graphic are kept in memory
/// (load_settings_store.h).
///
/// It is installed with host::SetHost and holds one document as long as it lives. Messages to the
/// user are collected in the notices. Only the thread that made it may use it. Its reader of
/// separated planes is a library that is loaded by its name (plane_library.h).
class DocumentHost : public standalone::StandaloneHost {
 public:
  /// With a new, empty document.
  DocumentHost();
  /// With that document, which must not be null.
  explicit DocumentHost(std::unique_ptr<Document> document);
  ~DocumentHost() override;
  DocumentHost(const DocumentHost&) = delete;
  DocumentHost& operator=(const DocumentHost&) = delete;

  /// With the document of a file. Fails as LoadDocument does (document_file.h).
  [[nodiscard]] static Expected<std::unique_ptr<DocumentHost>> Open(const std::wstring& path);
  /// Saves the document to a file, whole or not at all.
  [[nodiscard]] Expected<void> Save(const std::wstring& path) const;

  [[nodiscard]] host::Settings& GetSettings() override;
  [[nodiscard]] host::ObjectStore* GetObjectStore() override;
  [[nodiscard]] host::TextCompose* GetTextCompose() override;
  [[nodiscard]] host::GraphicsIO* GetGraphicsIO() override;
  [[nodiscard]] host::ContourCut* GetContourCut() override;
  [[nodiscard]] host::PlaneReader* GetPlaneReader() override;
  [[nodiscard]] host::Application* GetApplication() override;
  /// Those that were set, else views that show nothing.
  [[nodiscard]] host::DialogViews& GetDialogViews() override;
  /// Sets the views that show dialogs, among them the one that asks for a font in place of a
  /// missing one. Null: none. They must outlive the host.
  void SetDialogViews(host::DialogViews* views);

  /// Chooses the font that replaces a missing one of that name (in any case, with or without spaces
  /// and hyphens), so that nobody is asked; an empty name means texts that name no font. Fails
  /// if the replacement is not on this machine.
  Expected<void> ReplaceFont(const std::wstring& name, const std::wstring& replacement);
  /// With true, nothing replaces a missing font that `ReplaceFont` does not name: an import that
  /// asks for replacements is cancelled, any other leaves the line out. Both are reported. By
  /// default the user is asked where a view can ask, and else a usual font is taken, with a notice.
  void CancelMissingFonts(bool cancel);

  /// Says whether a graphic may be loaded from a library path; its failure is the reason, for
  /// the user.
  using ReadPolicy = std::function<Expected<void>(const std::wstring& path)>;
  /// Asks it before each load from now on, of both kinds (LoadTHZ, LoadVEFile). A graphic that it
  /// refuses is not loaded, and a loss in the notices. By default all are loaded.
  void SetReadPolicy(ReadPolicy policy);

  /// The document, the notices and the fonts. Owned by the host.
  [[nodiscard]] Document& GetDocument();
  [[nodiscard]] const Document& GetDocument() const;
  [[nodiscard]] Notices& GetNotices();
  [[nodiscard]] const text::FontCatalog& GetFonts() const;

  /// Section and key of each setting that could not be stored since the host was made, once each.
  [[nodiscard]] std::vector<std::pair<std::wstring, std::wstring>> RefusedSettings() const;

  /// Work that was begun and not closed.
  struct OpenWork {
    int undoSteps = 0;
    std::size_t lists = 0;
    bool paragraph = false;
    bool operator==(const OpenWork&) const = default;
  };
  /// The undo steps, lists and paragraph that are open now: all 0 and false after a command that
  /// closes all that it opened.
  [[nodiscard]] OpenWork StillOpen() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_Parts;
};

}  // namespace rastrel::document
