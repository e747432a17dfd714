#pragma once

/// The program that loads the library, as the library sees it, and `SetHost`, which installs it.

#include <optional>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/settings.h"

/// The interfaces that a host implements. Printing needs settings, directories and translation,
/// whose operations may be called from any thread, several at a time, and must not throw. Imports
/// and conversions need a document besides, which only the user interface thread touches.
///
/// All text is wide, one Unicode code point for each character.
namespace rastrel::host {

class Application;
class ContourCut;
class DialogViews;
class GraphicsIO;
class ObjectStore;
class PlaneReader;
class TextCompose;

/// The store of settings. Called from any thread.
class RASTREL_API Settings {
 public:
  virtual ~Settings();
  /// The text stored under section and key; nothing if there is none. ASCII case of the two does
  /// not count.
  [[nodiscard]] virtual std::optional<std::wstring> Read(const std::wstring& section,
                                                         const std::wstring& key,
                                                         DataStoreType store) = 0;
  /// Stores a text, which the next `Read` on any thread returns. False if it could not be stored;
  /// the old value is then kept.
  [[nodiscard]] virtual bool Write(const std::wstring& section, const std::wstring& key,
                                   const std::wstring& value, DataStoreType store) = 0;
};

/// The base directories, and those of the operating system. Paths have no closing separator. Called
/// from any thread.
class RASTREL_API Directories {
 public:
  virtual ~Directories();
  /// The path of a base directory. The programs' one (PATH_PROGRAMS) must exist.
  [[nodiscard]] virtual std::wstring BaseDirectory(path_type type) = 0;
  /// The directory of the operating system; nothing if the system has no such directory.
  [[nodiscard]] virtual std::optional<std::wstring> WindowsDirectory() = 0;
  /// The directory of its libraries; nothing if there is none.
  [[nodiscard]] virtual std::optional<std::wstring> SystemDirectory() = 0;
  /// The directory of its printer drivers; nothing if there is none.
  [[nodiscard]] virtual std::optional<std::wstring> PrinterDriverDirectory() = 0;
};

/// The translation table. Called from any thread.
class RASTREL_API Translation {
 public:
  virtual ~Translation();
  /// The text in the user's language, without the mark "(*v*)" at its start; nothing if the table
  /// does not have it.
  [[nodiscard]] virtual std::optional<std::wstring> Translate(const std::wstring& text) = 0;
};

/// A host: the one object through which the library reaches all the others. A program that installs
/// no host gets the standalone host, with `settings.ini` and `Queue` of the data root, with English
/// texts, and without a document.
///
/// A returned object belongs to the host, and is the same object in each call while the host is
/// installed.
class RASTREL_API Host {
 public:
  virtual ~Host();
  /// The settings. Any thread.
  [[nodiscard]] virtual Settings& GetSettings() = 0;
  /// The directories. Any thread.
  [[nodiscard]] virtual Directories& GetDirectories() = 0;
  /// The translation table. Any thread.
  [[nodiscard]] virtual Translation& GetTranslation() = 0;
  /// Shows the user that the host is busy, until its next event. On the user interface thread by
  /// imports; on their caller's by GetPSPageSize and by the readers of job notes and spreadsheets.
  /// By default nothing.
  virtual void BeginWaitCursor();

  /// The views that show dialogs (dialogs.h). On the user interface thread. By default views that
  /// show nothing: a dialog runs to the end that its work has, and is cancelled once only a person
  /// could end it; messages go to the standard error stream.
  [[nodiscard]] virtual DialogViews& GetDialogViews();

  /// The database of the open document (object_store.h). By default null, as the next ones are: the
  /// host has no such thing, and an operation of the library that needs it changes nothing, fails,
  /// and logs why. An import needs the database, the text engine and the application. All of them
  /// on the user interface thread.
  [[nodiscard]] virtual ObjectStore* GetObjectStore();
  /// The text engine (text_compose.h), or null.
  [[nodiscard]] virtual TextCompose* GetTextCompose();
  /// The loader of native graphics (graphics_io.h), or null.
  [[nodiscard]] virtual GraphicsIO* GetGraphicsIO();
  /// The maker of cut lines (contour_cut.h), or null.
  [[nodiscard]] virtual ContourCut* GetContourCut();
  /// The reader of separated planes (plane_reader.h), or null.
  [[nodiscard]] virtual PlaneReader* GetPlaneReader();
  /// The application (application.h), or null.
  [[nodiscard]] virtual Application* GetApplication();

  /// The key of the user's language, which the reader of separated planes gets; nothing if the host
  /// has no such key. On the user interface thread. By default nothing.
  [[nodiscard]] virtual std::optional<std::wstring> GetLanguageKey();
};

/// Installs a host, before the library's first use. The host is not owned: it must outlive its last
/// use, or be taken away before. Null installs the standalone host again.
RASTREL_API void SetHost(Host* host);
/// The host in force. Any thread; never fails.
[[nodiscard]] RASTREL_API Host& GetHost();

}  // namespace rastrel::host
