#include "rastrel/conversion/separation/separation_objects.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/cfm/directories.h"
#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/conversion/planes/find_plane_info.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/host/sheet_layer.h"
#include "rastrel/platform/host/undo_step.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace host = rastrel::host;
namespace os = rastrel::os;

namespace {

constexpr const wchar_t* Section = L"Separation";
constexpr std::uint32_t MaximumOutputFile = 260;  // characters
constexpr int SeparationSheet = 1;
constexpr int Locked = 100;

std::wstring OutputFile() {
  wchar_t file[MaximumOutputFile + 1] = {};
  GetStringKorvane(Section, L"Output File", file, MaximumOutputFile + 1, DS_USER, nullptr);
  return file;
}

// The file's name ends in ".ps"; a directory above it may have the same letters in its name.
std::wstring CfmPathOf(std::wstring file) {
  constexpr std::wstring_view extension = L".ps";
  if (const std::size_t at = file.rfind(extension); at != std::wstring::npos)
    file.replace(at, extension.size(), L".cfm");
  return file;
}

struct SeparationLayer {
  int number = 0;
  bool made = false;  // for this run
};

SeparationLayer EmptyLayer(host::Application& application) {
  if (const std::optional<int> empty = application.GetEmptySeparationLayer())
    return {.number = *empty};
  SeparationLayer layer{.number = application.GetNextEmptyLayer()};
  if (CSheetLayerPalette* palette = application.GetSheetLayerPalette())
    layer.made = palette->AddSheetToPalette({.number = layer.number,
                                             .name = L"Separations",
                                             .sheetType = SeparationSheet,
                                             .hasSubstrate = false}) != 0;
  return layer;
}

// Puts a plane into the document; false leaves it to its owner, who destroys it.
bool Place(host::ObjectStore& store, std::unique_ptr<CGenericCFPlane> plane, int sheetLayer) {
  if (!plane || plane->IsStateValid() == 0) return false;
  host::ObjectHandle object = 0;
  if (plane->Add(1, 1, 0, object) == 0) return false;
  // The document owns it now.
  static_cast<void>(plane.release());
  store.DSAddObject(object);
  store.DBValidateBounds(object);
  store.DBSetSheetLayer(object, sheetLayer);
  store.DBSetPropertyLocks(object,
                           {.color = Locked, .font = Locked, .lineStyle = Locked, .size = Locked});
  return true;
}

// Returns whether there is one plane at least in the document.
bool PlaceAll(host::ObjectStore& store, host::Application& application, const std::wstring& info,
              int sheetLayer) {
  if (info.empty()) return false;
  const auto set = application.NewGenericCFPlane(info.c_str(), 0, 0);
  if (!set) {
    CAppLog::Instance().Printf(L"[CLQ] the host can't open the planes of %s", info);
    return false;
  }
  bool placed = false;
  const int layers = set->GetNumberofLayers();
  for (int layer = 0; layer < layers; ++layer) {
    const int planes = set->GetNumberofPlanes(layer);
    for (int plane = 0; plane < planes; ++plane)
      if (Place(store, application.NewGenericCFPlane(info.c_str(), layer, plane), sheetLayer))
        placed = true;
  }
  return placed;
}

int PlaceSeparation(host::ObjectStore& store, host::Application& application,
                    const std::wstring& cfm) {
  const host::UndoStep step(store, L"(*v*)Separating");
  const SeparationLayer layer = EmptyLayer(application);
  const std::wstring info = rastrel::conversion::FindPlaneInfo(cfm);
  const bool placed = PlaceAll(store, application, info, layer.number);
  if (placed) {
    application.SetActiveOnlySheetLayer(layer.number);
    application.SetCurrentSheetLayer(layer.number);
  } else if (layer.made) {
    application.GetSheetLayerPalette()->RemoveSheetFromPalette(layer.number);
  }
  application.ZoomObj();
  return placed ? 1 : 0;
}

int Separate(host::ObjectStore& store, host::Application& application, const std::wstring& file) {
  if (file.empty()) return 0;
  CQProgressDlg dialog(file.c_str(), nullptr);
  dialog.DoModal();
  const std::wstring cfm = CfmPathOf(file);
  if (dialog.IsCancelled()) {
    DeleteDirectory(cfm.c_str());
    return 0;
  }
  return PlaceSeparation(store, application, cfm);
}

std::wstring SeparationDirectory() { return CExePaths::Instance().m_RipDir + L"Separation"; }

std::wstring WithoutClosingSeparator(std::wstring directory) {
  if (directory.size() > 1 && os::EndsInSeparator(directory)) directory.pop_back();
  return directory;
}

// Also of a text without a terminator no more than `size` characters are read.
int LengthOfText(const wchar_t* buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  return static_cast<int>(std::find(buffer, buffer + size, L'\0') - buffer);
}

// Copies at most `size` characters, and the terminator if there is room. Returns the path's length.
int CopyPath(const std::wstring& path, wchar_t* buffer, int size) {
  const auto length = static_cast<int>(path.size());
  if (buffer == nullptr || size <= 0) return length;
  std::copy_n(path.c_str(), std::min(length + 1, size), buffer);
  return length;
}

int CopyFallbackPath(wchar_t* buffer, int size) {
  const std::wstring& queue = CExePaths::Instance().m_QueueDir;
  if (!queue.empty() && size > static_cast<int>(queue.size()))
    return CopyPath(WithoutClosingSeparator(queue), buffer, size);
  return CopyPath(WithoutClosingSeparator(CBaseDir(PATH_TEMP)), buffer, size);
}

}  // namespace

int GenerateSCObjects() {
  host::ObjectStore* store = host::GetHost().GetObjectStore();
  host::Application* application = host::GetHost().GetApplication();
  if (store == nullptr || application == nullptr) {
    CAppLog::Instance().Printf(L"[CLQ] the host has no document to separate into");
    return 0;
  }
  static_cast<void>(application->GetQueueComChannel(Section));
  const std::wstring file = OutputFile();
  const int result = Separate(*store, *application, file);
  if (GetIntKorvane(Section, L"Delete", 1, DS_USER, nullptr) != 0 && !file.empty())
    static_cast<void>(os::RemoveFile(file));
  return result;
}

int GetSeparationPath(wchar_t* buffer, int size) {
  const std::wstring directory = SeparationDirectory();
  if (os::IsDirectory(directory)) {
    const auto length = static_cast<int>(directory.size());
    return size > length ? CopyPath(directory, buffer, size) : length + 1;
  }
  if (os::MakeDirectory(directory, os::Access::Private)) return LengthOfText(buffer, size);
  return CopyFallbackPath(buffer, size);
}

int CleanOldSepFiles() {
  const std::wstring directory = SeparationDirectory();
  if (os::IsLink(directory)) return 0;
  const auto names = os::ListDirectory(directory);
  if (!names) return 0;
  for (const std::wstring& name : *names) {
    const std::wstring entry = directory + L'\\' + name;
    if (os::IsDirectory(entry) && !os::IsLink(entry))
      DeleteDirectory(entry.c_str());
    else
      static_cast<void>(os::RemoveFile(entry));
  }
  return static_cast<int>(names->size());
}
