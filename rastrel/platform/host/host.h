#pragma once

#include <optional>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/settings.h"

/// What the library needs of the program that loads it. Printing needs settings, directories and
/// translation, whose operations may be called from any thread and may not throw. Imports and
/// conversions need a document besides, which the user interface thread alone touches.
namespace rastrel::host {

class Application;
class ContourCut;
class DialogViews;
class GraphicsIO;
class ObjectStore;
class PlaneReader;
class TextCompose;

/// The store of settings.
class RASTREL_API Settings {
 public:
  virtual ~Settings();
  /// The text stored under section and key, or nothing.
  [[nodiscard]] virtual std::optional<std::wstring> Read(const std::wstring& section,
                                                         const std::wstring& key,
                                                         DataStoreType store) = 0;
  /// Stores a text. False if it could not be stored; the old value stands then.
  [[nodiscard]] virtual bool Write(const std::wstring& section, const std::wstring& key,
                                   const std::wstring& value, DataStoreType store) = 0;
};

/// The base directories, and those of the system.
class RASTREL_API Directories {
 public:
  virtual ~Directories();
  /// Path of a base directory without a closing separator.
  [[nodiscard]] virtual std::wstring BaseDirectory(path_type type) = 0;
  /// Directories of the operating system, without a closing separator; nothing where the system has
  /// no such directory.
  [[nodiscard]] virtual std::optional<std::wstring> WindowsDirectory() = 0;
  [[nodiscard]] virtual std::optional<std::wstring> SystemDirectory() = 0;
  [[nodiscard]] virtual std::optional<std::wstring> PrinterDriverDirectory() = 0;
};

/// The translation table.
class RASTREL_API Translation {
 public:
  virtual ~Translation();
  /// The text in the user's language, or nothing if the table does not have it.
  [[nodiscard]] virtual std::optional<std::wstring> Translate(const std::wstring& text) = 0;
};

/// Hands out what the host provides. A program that installs no host gets an embedded one with
/// `settings.ini` and `Queue` of the data root, with texts in English with the mark removed, and
/// without a document.
class RASTREL_API Host {
 public:
  virtual ~Host();
  /// Never null; owned by the host.
  [[nodiscard]] virtual Settings& GetSettings() = 0;
  [[nodiscard]] virtual Directories& GetDirectories() = 0;
  [[nodiscard]] virtual Translation& GetTranslation() = 0;
  /// Shows the user that the host is busy, until its next event. On the host's thread. Does nothing
  /// where there is no pointer to change.
  virtual void BeginWaitCursor();

  /// How dialogs are shown; owned by the host. The default shows nothing: a dialog runs to the end
  /// that its work has, and is cancelled once it could only be ended by a person.
  [[nodiscard]] virtual DialogViews& GetDialogViews();

  /// The host's open document, by the host's libraries: object_store.h, text_compose.h,
  /// graphics_io.h, contour_cut.h, plane_reader.h and application.h. Owned by the host, the same as
  /// long as it is installed. Null, the default, says that the host has no such thing: an import
  /// then changes nothing, fails, and logs why.
  [[nodiscard]] virtual ObjectStore* GetObjectStore();
  [[nodiscard]] virtual TextCompose* GetTextCompose();
  [[nodiscard]] virtual GraphicsIO* GetGraphicsIO();
  [[nodiscard]] virtual ContourCut* GetContourCut();
  [[nodiscard]] virtual PlaneReader* GetPlaneReader();
  [[nodiscard]] virtual Application* GetApplication();
};

/// Installs a host before the library's first use. Not owned; null brings the embedded one back.
RASTREL_API void SetHost(Host* host);
/// The host in force. Never fails.
[[nodiscard]] RASTREL_API Host& GetHost();

}  // namespace rastrel::host
