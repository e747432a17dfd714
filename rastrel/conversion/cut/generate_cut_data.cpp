#include "rastrel/conversion/cut/generate_cut_data.h"

#include "rastrel/conversion/cut/cut_source.h"
#include "rastrel/conversion/postscript_files.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace conversion = rastrel::conversion;
namespace os = rastrel::os;

namespace {

using conversion::CutSource;
using conversion::CutSourcePlace;

constexpr const wchar_t* PostScriptExtension = L".ps";

bool CopyFile(const std::wstring& path, const std::wstring& copy) {
  return static_cast<bool>(os::CopyFileOver(path, copy, os::Access::Private));
}

// The operations that the three classes of the host have alike, under no common base.
template <class Object>
class SourceOf : public CutSource {
 public:
  explicit SourceOf(Object& object) : m_Object(object) {}

  [[nodiscard]] CPS2CutData GetCutData() override { return m_Object.GetCutData(); }
  [[nodiscard]] CPS2CutData GetHalfCutData() override { return m_Object.GetHalfCutData(); }
  [[nodiscard]] CGenericItem& GetItem() override { return m_Object; }

 protected:
  Object& m_Object;
};

class EpsSource : public SourceOf<CGenericEPS> {
 public:
  using SourceOf::SourceOf;

  [[nodiscard]] std::wstring GetExtension(const std::wstring& /*path*/) const override {
    return PostScriptExtension;
  }
  [[nodiscard]] bool MakeFile(const std::wstring& /*path*/, const std::wstring& file) override {
    if (conversion::WriteAsPostScript(m_Object, file)) return true;
    if (!conversion::KeepsPostScriptFiles()) static_cast<void>(os::RemoveFile(file));
    return false;
  }
  [[nodiscard]] CutSourcePlace GetPlace() override {
    return {.width = m_Object.GetWidth(), .height = m_Object.GetHeight()};
  }
  [[nodiscard]] Header GetHeader() const override { return {.hasPageSize = true}; }
};

class PsSource : public SourceOf<CGenericPS> {
 public:
  using SourceOf::SourceOf;

  [[nodiscard]] std::wstring GetExtension(const std::wstring& /*path*/) const override {
    return PostScriptExtension;
  }
  [[nodiscard]] bool MakeFile(const std::wstring& path, const std::wstring& file) override {
    return CopyFile(path, file);
  }
  [[nodiscard]] CutSourcePlace GetPlace() override {
    const BOUNDS own = m_Object.GetBounds();
    const BOUNDS bounds = DBTranslateBounds(own, m_Object.GetMatrix());
    return {.width = bounds.xmax - bounds.xmin,
            .height = bounds.ymax - bounds.ymin,
            .x = bounds.xmin,
            .y = bounds.ymax};
  }
  [[nodiscard]] Header GetHeader() const override { return {}; }
};

class PdfSource : public SourceOf<CGenericPDF> {
 public:
  using SourceOf::SourceOf;

  [[nodiscard]] std::wstring GetExtension(const std::wstring& path) const override {
    return os::SplitPath(path).extension;
  }
  [[nodiscard]] bool MakeFile(const std::wstring& path, const std::wstring& file) override {
    return CopyFile(path, file);
  }
  [[nodiscard]] CutSourcePlace GetPlace() override {
    const BOUNDS bounds = m_Object.GetBounds();
    return {.width = bounds.xmax - bounds.xmin, .height = bounds.ymax - bounds.ymin};
  }
  [[nodiscard]] Header GetHeader() const override { return {.inSideFile = true, .belowLimit = 1}; }
};

}  // namespace

unsigned long long GenerateEPSCutData(CGenericEPS* object, int resolution, int withPreview,
                                      const wchar_t* path) {
  EpsSource source(*object);
  return conversion::GenerateCutData(source, resolution, withPreview != 0, path);
}

unsigned long long GeneratePSCutData(CGenericPS* object, int resolution, int withPreview,
                                     const wchar_t* path) {
  PsSource source(*object);
  return conversion::GenerateCutData(source, resolution, withPreview != 0, path);
}

unsigned long long GeneratePDFCutData(CGenericPDF* object, int resolution, int withPreview,
                                      const wchar_t* path) {
  PdfSource source(*object);
  return conversion::GenerateCutData(source, resolution, withPreview != 0, path);
}
