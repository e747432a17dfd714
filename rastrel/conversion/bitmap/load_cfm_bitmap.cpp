#include "rastrel/conversion/bitmap/load_cfm_bitmap.h"

#include <limits>
#include <optional>
#include <span>

#include "rastrel/conversion/planes/cfm_dll_if_default.h"
#include "rastrel/conversion/planes/find_plane_info.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"

namespace rastrel::conversion {

namespace {

using host::ObjectHandle;

bool Fail(const wchar_t* reason, const std::wstring& path) {
  CAppLog::Instance().Printf(L"[CLQ] %s: %s", reason, path);
  return false;
}

// The same with the plane's own reason, if it has one.
bool FailBy(CFMPlane& plane, const wchar_t* reason, const std::wstring& path) {
  const std::wstring why = plane.GetFailure();
  return Fail(reason, why.empty() ? path : path + L": " + why);
}

// The pixels of a plane, given back in the end.
class PlanePixels {
 public:
  explicit PlanePixels(CFMPlane& plane)
      : m_Plane(plane), m_Taken(plane.GetPixels(m_Header, m_Pixels) != 0) {}
  ~PlanePixels() {
    if (m_Taken) m_Plane.ReleasePixels(m_Header, m_Pixels);
  }
  PlanePixels(const PlanePixels&) = delete;
  PlanePixels& operator=(const PlanePixels&) = delete;

  [[nodiscard]] std::span<const std::byte> Bytes() const { return m_Pixels; }

  // The header for rows from the top, as the block has them; nothing if there are no pixels.
  [[nodiscard]] std::optional<BITMAPINFOHEADER> TopDownHeader() const {
    // The lowest number has no negative.
    if (!m_Taken || m_Header == nullptr ||
        m_Header->biHeight == std::numeric_limits<std::int32_t>::min())
      return std::nullopt;
    BITMAPINFOHEADER header = *m_Header;
    header.biHeight = -header.biHeight;
    return header;
  }

 private:
  CFMPlane& m_Plane;
  const BITMAPINFOHEADER* m_Header = nullptr;
  std::span<const std::byte> m_Pixels;
  bool m_Taken;
};

// A bitmap of the host, given back in the end.
class HostBitmap {
 public:
  explicit HostBitmap(host::Application& application)
      : m_Application(application), m_Bitmap(application.NewVKBitmap()) {}
  ~HostBitmap() {
    if (m_Bitmap != nullptr) m_Application.DeleteVKBitmap(m_Bitmap);
  }
  HostBitmap(const HostBitmap&) = delete;
  HostBitmap& operator=(const HostBitmap&) = delete;

  [[nodiscard]] CVKBitmap* Get() const { return m_Bitmap; }

 private:
  host::Application& m_Application;
  CVKBitmap* m_Bitmap;
};

struct Size {
  double height;
  double width;
};

// An object that is not in the document yet; 0 if the host can't make one.
ObjectHandle MakeObject(host::Application& application, host::ObjectStore& store,
                        const BITMAPINFOHEADER& header, std::span<const std::byte> pixels,
                        const Size& size) {
  const HostBitmap bitmap(application);
  if (bitmap.Get() == nullptr || bitmap.Get()->Create(header, pixels) == 0) return 0;
  return store.DBInsertBitmap(*bitmap.Get(), size.width, size.height);
}

bool Add(host::ObjectStore& store, ObjectHandle made, ObjectHandle& object) {
  if (store.DSAddObject(made) == 0) {
    store.DBDestroyObject(made);
    return false;
  }
  store.DBValidateBounds(made);
  object = made;
  return true;
}

void Prepare(CFMPlane& plane) {
  plane.SetBaseDirectory(CBaseDir(PATH_PROGRAMS));
  if (const std::optional<std::wstring> language = host::GetHost().GetLanguageKey())
    plane.SetLanguageKey(language->c_str());
}

double CentimetresOf(std::int32_t pixels, std::int32_t resolution) {
  return static_cast<double>(pixels) / resolution * host::CentimetresPerInch;
}

bool LoadPlane(CFMPlane& plane, const std::wstring& info, const PS2BmpParams& params,
               ObjectHandle& object) {
  host::Application* const application = host::GetHost().GetApplication();
  host::ObjectStore* const store = host::GetHost().GetObjectStore();
  if (application == nullptr || store == nullptr)
    return Fail(L"the host has no document for", info);
  if (plane.Open(info.c_str()) == 0) return FailBy(plane, L"the plane reader can't open", info);
  std::int32_t width = 0;
  std::int32_t height = 0;
  if (plane.GetDimensions(width, height) == 0)
    return FailBy(plane, L"the plane reader has no dimensions of", info);
  const PlanePixels pixels(plane);
  const std::optional<BITMAPINFOHEADER> header = pixels.TopDownHeader();
  if (!header) return FailBy(plane, L"the plane reader has no pixels of", info);
  Size size{.height = params.height, .width = params.width};
  if (params.hasBounds == 0)
    size = {.height = CentimetresOf(height, params.cut.resolution),
            .width = CentimetresOf(width, params.cut.resolution)};
  const ObjectHandle made = MakeObject(*application, *store, *header, pixels.Bytes(), size);
  if (made == 0) return Fail(L"the host can't make a bitmap of", info);
  return Add(*store, made, object) || Fail(L"the document takes no bitmap of", info);
}

}  // namespace

bool LoadCfmBitmap(const std::wstring& cfmPath, const PS2BmpParams& params, ObjectHandle& object) {
  const std::wstring info = FindPlaneInfo(cfmPath);
  if (info.empty()) return Fail(L"there is no page in", cfmPath);
  const DynamicLinkBase<CFMDllIFDefault> reader;
  if (!reader) return Fail(L"there is no plane reader for", info);
  CFMPlane* const plane = reader->GetInterface(PlaneInterfaceId);
  if (plane == nullptr) return Fail(L"the plane reader is of another version for", info);
  Prepare(*plane);
  return LoadPlane(*plane, info, params, object);
}

}  // namespace rastrel::conversion
