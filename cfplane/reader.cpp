#include "cfplane/reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::planes {
namespace {

constexpr double InchesInMetre = 1 / 0.0254;

struct Ink {
  std::string_view name;
  pages::InkColor color;
};
constexpr std::array<Ink, 4> ProcessInks{{{"Cyan", {1, 0, 0, 0}},
                                          {"Magenta", {0, 1, 0, 0}},
                                          {"Yellow", {0, 0, 1, 0}},
                                          {"Black", {0, 0, 0, 1}}}};

// Whatever the description says of a process color, it looks as it always does.
std::optional<pages::InkColor> InkOf(const pages::PagePlane& plane) {
  const auto process = std::ranges::find(ProcessInks, plane.name, &Ink::name);
  return process != ProcessInks.end() ? process->color : plane.ink;
}

std::int32_t PixelsPerMetre(double pixelsPerInch) {
  const double number = std::round(pixelsPerInch * InchesInMetre);
  constexpr double highest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(number, highest));
}

BITMAPINFOHEADER HeaderOf(const BlockForm& form, const pages::PageInfo& info) {
  BITMAPINFOHEADER header;
  header.biWidth = static_cast<std::int32_t>(form.width);
  header.biHeight = static_cast<std::int32_t>(form.height);
  header.biBitCount = static_cast<std::uint16_t>(8 * form.samples);
  header.biSizeImage = static_cast<std::uint32_t>(form.Bytes());
  header.biXPelsPerMeter = PixelsPerMetre(info.xResolution);
  header.biYPelsPerMeter = PixelsPerMetre(info.yResolution);
  return header;
}

}  // namespace

template <typename Work>
int PageReader::Try(Work work) {
  try {
    const Expected<void> done = work();
    if (done) return 1;
    m_Failure = os::WideFromUtf8(rastrel::Describe(done.Error()));
  } catch (const std::bad_alloc&) {
    m_Failure = L"out of memory";  // short enough for the text's own room
  }
  return 0;
}

int PageReader::SetBaseDirectory(const wchar_t* path) {
  return Try([&]() -> Expected<void> {
    m_BaseDirectory = path != nullptr ? path : L"";
    return {};
  });
}

int PageReader::SetLanguageKey(const wchar_t* key) {
  return Try([&]() -> Expected<void> {
    m_LanguageKey = key != nullptr ? key : L"";
    return {};
  });
}

int PageReader::Open(const wchar_t* path) {
  return Try([&] { return OpenPage(path); });
}

Expected<void> PageReader::OpenPage(const wchar_t* path) {
  m_Directory.clear();
  m_Page.reset();
  m_Selection.reset();
  const std::string native = path != nullptr ? os::ToNative(path) : std::string();
  const std::size_t name = native.rfind('/') + 1;  // 0 if there is no slash
  if (native.substr(name) != pages::PageInfoName)
    return Failure{
        .what = "open a plane", .where = native, .error = EINVAL, .why = "is not named .info"};
  m_Directory = name == 0 ? "." : name == 1 ? "/" : native.substr(0, name - 1);
  const auto page = PageOf(0);
  if (page) return {};
  m_Directory.clear();
  return page.Error();
}

std::string PageReader::DirectoryOf(int layer) const {
  return layer == 0 ? m_Directory
                    : m_Directory + "/" + pages::PageName(static_cast<unsigned>(layer) + 1);
}

Expected<const PageReader::Page*> PageReader::PageOf(int layer) {
  if (m_Directory.empty()) return FailureOf("no plane is open");
  if (layer < 0 || layer >= std::numeric_limits<int>::max())
    return FailureOf("there is no layer " + std::to_string(layer));
  if (!m_Page || m_Page->layer != layer) {
    std::string directory = DirectoryOf(layer);
    auto info = pages::ReadPageInfo(directory);
    if (!info) return info.Error();
    m_Page.emplace(Page{layer, std::move(directory), std::move(*info)});
  }
  return &*m_Page;
}

Expected<const PageReader::Page*> PageReader::PageOfPlane(int layer, int plane) {
  auto page = PageOf(layer);
  if (!page) return page;
  if (plane < 0 || static_cast<std::size_t>(plane) >= (*page)->info.planes.size())
    return Failure{.what = "choose a plane",
                   .where = (*page)->directory,
                   .error = EINVAL,
                   .why = "there is no plane " + std::to_string(plane)};
  return page;
}

int PageReader::GetDimensions(std::int32_t& width, std::int32_t& height) {
  return Try([&] { return ReadDimensions(width, height); });
}

Expected<void> PageReader::ReadDimensions(std::int32_t& width, std::int32_t& height) {
  const auto page = PageOf(m_Selection ? m_Selection->layer : 0);
  if (!page) return page.Error();
  const pages::PageInfo& info = (*page)->info;
  if (info.width > MaximumSide || info.height > MaximumSide)
    return Failure{.what = "measure a plane",
                   .where = (*page)->directory,
                   .error = EINVAL,
                   .why = "it has too many pixels to a side"};
  width = static_cast<std::int32_t>(info.width);
  height = static_cast<std::int32_t>(info.height);
  return {};
}

int PageReader::GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) {
  return Try([&] { return ReadBlock(header, pixels); });
}

Expected<void> PageReader::ReadBlock(const BITMAPINFOHEADER*& header,
                                     std::span<const std::byte>& pixels) {
  const auto page = PageOf(m_Selection ? m_Selection->layer : 0);
  if (!page) return page.Error();
  const pages::PageInfo& info = (*page)->info;
  auto read = m_Selection ? ReadPlane((*page)->directory, info,
                                      static_cast<std::size_t>(m_Selection->plane))
                          : ReadPicture((*page)->directory, info);
  if (!read) return read.Error();
  const Block& block =
      m_Blocks.emplace_back(Block{HeaderOf(read->form, info), std::move(read->block)});
  header = &block.header;
  pixels = block.pixels.Bytes();
  return {};
}

void PageReader::ReleasePixels(const BITMAPINFOHEADER* header,
                               std::span<const std::byte> /*pixels*/) {
  m_Blocks.remove_if([header](const Block& block) { return &block.header == header; });
}

int PageReader::GetNumberofLayers() {
  int layers = 0;
  Try([&]() -> Expected<void> {
    if (m_Directory.empty()) return FailureOf("no plane is open");
    for (layers = 1; layers < std::numeric_limits<int>::max(); ++layers) {
      const std::string info = DirectoryOf(layers) + "/" + pages::PageInfoName;
      struct stat state {};
      if (::lstat(info.c_str(), &state) != 0) break;
    }
    return {};
  });
  return layers;
}

int PageReader::GetNumberofPlanes(int layer) {
  int planes = 0;
  Try([&]() -> Expected<void> {
    const auto page = PageOf(layer);
    if (!page) return page.Error();
    planes = static_cast<int>((*page)->info.planes.size());
    return {};
  });
  return planes;
}

int PageReader::GetPlane(int layer, int plane, PlaneDescription& description) {
  return Try([&] { return Describe(layer, plane, description); });
}

Expected<void> PageReader::Describe(int layer, int plane, PlaneDescription& description) {
  const auto page = PageOfPlane(layer, plane);
  if (!page) return page.Error();
  const pages::PageInfo& info = (*page)->info;
  const auto form = PlaneForm(info, static_cast<std::size_t>(plane));
  if (!form) return FailureAt((*page)->directory, form.Error());
  const pages::PagePlane& listed = info.planes[static_cast<std::size_t>(plane)];
  PlaneDescription found;
  found.name = os::WideFromUtf8(listed.name);
  found.page = info.page;
  found.width = static_cast<std::int32_t>(form->width);
  found.height = static_cast<std::int32_t>(form->height);
  found.xResolution = info.xResolution;
  found.yResolution = info.yResolution;
  found.isInk = info.color == pages::PageColor::Cmyk || info.color == pages::PageColor::Separations;
  if (const auto ink = InkOf(listed); found.isInk && ink) {
    found.isColorKnown = true;
    found.cyan = (*ink)[0];
    found.magenta = (*ink)[1];
    found.yellow = (*ink)[2];
    found.black = (*ink)[3];
  }
  description = std::move(found);
  return {};
}

int PageReader::SelectPlane(int layer, int plane) {
  return Try([&]() -> Expected<void> {
    const auto page = PageOfPlane(layer, plane);
    if (!page) return page.Error();
    m_Selection = {layer, plane};
    return {};
  });
}

CFMPlane* Reader::GetInterface(const InterfaceId& id) {
  return id == PlaneInterfaceId || id == PlaneSetInterfaceId ? &m_Planes : nullptr;
}

}  // namespace rastrel::planes
