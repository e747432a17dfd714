#include "host/separation_planes.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "cfplane/plane_set.h"
#include "rastrel/conversion/planes/cfm_dll_if_default.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

constexpr const char* NoReader = "the reader of separated planes, libcfplane.so, is not installed";

struct Rgb {
  int red, green, blue;
};
constexpr std::array<Rgb, 6> SpotColors{{{255, 128, 0},      // orange
                                         {0, 153, 76},       // green
                                         {127, 0, 204},      // violet
                                         {140, 90, 40},      // brown
                                         {0, 180, 180},      // turquoise
                                         {240, 100, 170}}};  // pink

// A reader with an open file. Pixels are its own while they are looked at.
class OpenReader {
 public:
  [[nodiscard]] static Expected<std::unique_ptr<OpenReader>> Open(const std::wstring& info) {
    auto opened = std::make_unique<OpenReader>();
    if (!opened->m_Library) return FailureOf(NoReader);
    opened->m_Set = static_cast<CFMPlaneSet*>(opened->m_Library->GetInterface(PlaneSetInterfaceId));
    if (opened->m_Set == nullptr)
      return FailureOf("the reader of separated planes does not read single planes");
    const CBaseDir programs(PATH_PROGRAMS);
    static_cast<void>(opened->m_Set->SetBaseDirectory(programs));
    if (const auto key = host::GetHost().GetLanguageKey())
      static_cast<void>(opened->m_Set->SetLanguageKey(key->c_str()));
    if (opened->m_Set->Open(info.c_str()) == 0) return opened->LastFailure(info);
    return opened;
  }

  [[nodiscard]] CFMPlaneSet& Set() { return *m_Set; }
  [[nodiscard]] Failure LastFailure(const std::wstring& info) const {
    const std::wstring why = m_Set->GetFailure();
    return FailureOf(os::Utf8FromWide(why.empty() ? L"the planes of " + info + L" can't be read"
                                                  : std::wstring(why)));
  }

 private:
  DynamicLinkBase<CFMDllIFDefault> m_Library;
  CFMPlaneSet* m_Set = nullptr;
};

// Pixels in the page directory, which may go before they are read.
class DirectoryPixels : public PlanePixels {
 public:
  /// `width` and `height` are those of the shape.
  DirectoryPixels(std::wstring info, int layer, int plane, int width, int height)
      : m_Info(std::move(info)),
        m_Layer(layer),
        m_Plane(plane),
        m_Width(static_cast<std::size_t>(width)),
        m_Height(static_cast<std::size_t>(height)) {}

  [[nodiscard]] Expected<PlaneBytes> Read() const override {
    PlaneBytes copy;
    const auto visited = Visit(
        [&](std::span<const std::uint8_t> pixels) { copy.assign(pixels.begin(), pixels.end()); });
    if (!visited) return visited.Error();
    return copy;
  }

  [[nodiscard]] Expected<void> Visit(const Look& look) const override {
    auto reader = OpenReader::Open(m_Info);
    if (!reader) return reader.Error();
    CFMPlaneSet& set = (*reader)->Set();
    const BITMAPINFOHEADER* header = nullptr;
    std::span<const std::byte> block;
    if (set.SelectPlane(m_Layer, m_Plane) == 0 || set.GetPixels(header, block) == 0)
      return (*reader)->LastFailure(m_Info);
    const Expected<void> shown = Show(*header, block, look);
    set.ReleasePixels(header, block);
    return shown;
  }

  // Kept, so that a plane which was looked at to be valid is not read again for it.
  [[nodiscard]] Expected<double> MeanInk() const override {
    if (!m_MeanInk) {
      const auto mean = PlanePixels::MeanInk();
      if (!mean) return mean;
      m_MeanInk = *mean;
    }
    return *m_MeanInk;
  }

 private:
  [[nodiscard]] Expected<void> Show(const BITMAPINFOHEADER& header,
                                    std::span<const std::byte> block, const Look& look) const {
    const std::size_t stride = (m_Width + 3) / 4 * 4;
    if (header.biBitCount != 8 || static_cast<std::int64_t>(m_Width) != header.biWidth ||
        block.size() / stride < m_Height)
      return FailureOf(os::Utf8FromWide(L"a plane of " + m_Info + L" is no longer as it was"));
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(block.data());
    if (stride == m_Width) {
      look({bytes, m_Width * m_Height});
      return {};
    }
    PlaneBytes pixels;
    pixels.reserve(m_Width * m_Height);
    for (std::size_t row = 0; row < m_Height; ++row)
      pixels.insert(pixels.end(), bytes + row * stride, bytes + row * stride + m_Width);
    look(pixels);
    return {};
  }

  std::wstring m_Info;
  int m_Layer;
  int m_Plane;
  std::size_t m_Width;
  std::size_t m_Height;
  mutable std::optional<double> m_MeanInk;
};

CVKFullColor NamedCmyk(const std::wstring& name, double c, double m, double y, double k) {
  CVKFullColor color;
  color.SetColor(c, m, y, k, COLORSPACE_CMYK);
  color.SetColorName(name);
  return color;
}

// A plane of light takes away the light that it lacks: less red is cyan.
CVKFullColor InkOfLight(const std::wstring& name) {
  if (name == L"Red") return NamedCmyk(name, 1, 0, 0, 0);
  if (name == L"Green") return NamedCmyk(name, 0, 1, 0, 0);
  if (name == L"Blue") return NamedCmyk(name, 0, 0, 1, 0);
  return NamedCmyk(name, 0, 0, 0, 1);
}

// The descriptions, read at once: a reader that stayed open would have to end before the host.
class ReaderSet : public PlaneSet {
 public:
  using Layers = std::vector<std::vector<PlaneDescription>>;

  ReaderSet(std::wstring info, CFMPlaneSet& set, Palette palette)
      : m_Info(std::move(info)), m_Palette(std::move(palette)) {
    const int layers = set.GetNumberofLayers();
    for (int layer = 0; layer < layers; ++layer) {
      std::vector<PlaneDescription>& planes = m_Layers.emplace_back();
      const int count = set.GetNumberofPlanes(layer);
      // A plane that can't be described keeps its place, and is none.
      for (int plane = 0; plane < count; ++plane)
        static_cast<void>(set.GetPlane(layer, plane, planes.emplace_back()));
    }
  }

  [[nodiscard]] int LayerCount() override { return static_cast<int>(m_Layers.size()); }
  [[nodiscard]] int PlaneCount(int layer) override {
    const bool there = layer >= 0 && layer < LayerCount();
    return there ? static_cast<int>(m_Layers[static_cast<std::size_t>(layer)].size()) : 0;
  }
  [[nodiscard]] std::optional<SeparationShape> Plane(int layer, int plane) override {
    if (plane < 0 || plane >= PlaneCount(layer)) return std::nullopt;
    const PlaneDescription& found = At(layer, plane);
    const bool sound =
        found.width > 0 && found.height > 0 && found.width <= MaximumPlaneSide &&
        found.height <= MaximumPlaneSide &&
        static_cast<std::uint64_t>(found.width) * static_cast<std::uint64_t>(found.height) <=
            MaximumPlanePixels &&
        found.xResolution > 0 && found.yResolution > 0;
    if (!sound) return std::nullopt;
    SeparationShape shape;
    shape.ink = InkOf(layer, plane);
    shape.page = static_cast<int>(found.page);
    shape.pixelWidth = found.width;
    shape.pixelHeight = found.height;
    shape.xResolution = found.xResolution;
    shape.yResolution = found.yResolution;
    shape.pixels =
        std::make_shared<DirectoryPixels>(m_Info, layer, plane, found.width, found.height);
    return shape;
  }

 private:
  [[nodiscard]] const PlaneDescription& At(int layer, int plane) const {
    return m_Layers[static_cast<std::size_t>(layer)][static_cast<std::size_t>(plane)];
  }
  [[nodiscard]] CVKFullColor InkOf(int layer, int plane) const {
    const PlaneDescription& found = At(layer, plane);
    if (!found.isInk) return InkOfLight(found.name);
    if (found.isColorKnown)
      return NamedCmyk(found.name, found.cyan, found.magenta, found.yellow, found.black);
    if (const PaletteEntry* entry = m_Palette.Find(found.name)) return entry->color;
    std::size_t spots = 0;
    for (int before = 0; before < plane; ++before)
      if (!At(layer, before).isColorKnown) ++spots;
    const Rgb& color = SpotColors[spots % SpotColors.size()];
    return NamedRgb(found.name, color.red, color.green, color.blue);
  }

  std::wstring m_Info;
  Palette m_Palette;
  Layers m_Layers;
};

}  // namespace

Expected<void> CheckPlaneReader() {
  const DynamicLinkBase<CFMDllIFDefault> reader;
  if (!reader) return FailureOf(NoReader);
  return {};
}

Expected<std::unique_ptr<PlaneSet>> OpenPlanes(const std::wstring& info, const Palette& palette) {
  auto reader = OpenReader::Open(info);
  if (!reader) return reader.Error();
  return std::unique_ptr<PlaneSet>(std::make_unique<ReaderSet>(info, (*reader)->Set(), palette));
}

}  // namespace rastrel::document
