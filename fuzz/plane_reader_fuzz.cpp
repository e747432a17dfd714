// A page directory out of any bytes, through the plane reader: its description is the text up to
// the line "end", and each file that it lists has the bytes after that, or none, with its true
// size. The reader takes no more memory than the files ask for, and gives as many pixels as it
// says.

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "cfplane/reader.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/path.h"

namespace {

using namespace rastrel;

void Check(bool holds) {
  if (!holds) std::abort();
}

// Removed at the end of the program, and emptied in between.
class Directory {
 public:
  Directory() {
    std::string name = std::filesystem::exists("/dev/shm") ? "/dev/shm/plane-fuzz-XXXXXX"
                                                           : "/tmp/plane-fuzz-XXXXXX";
    Check(::mkdtemp(name.data()) != nullptr);
    m_Path = name;
  }
  ~Directory() { std::filesystem::remove_all(m_Path); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  void Empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(m_Path))
      std::filesystem::remove_all(entry.path());
  }
  void Write(const std::string& name, std::string_view content) const {
    std::ofstream(m_Path / name, std::ios::binary) << content;
  }
  [[nodiscard]] std::wstring InfoPath() const {
    return os::FromNative((m_Path / pages::PageInfoName).string());
  }

 private:
  std::filesystem::path m_Path;
};

// Lays the directory out. Returns the bytes of its largest file.
std::size_t LayOut(const Directory& directory, const std::string& input) {
  constexpr std::string_view end = "\nend\n";
  const std::size_t found = input.find(end);
  const std::size_t length = found == input.npos ? input.size() : found + end.size();
  const std::string text = input.substr(0, length);
  const std::string content = input.substr(length);
  auto info = pages::ParsePageInfo(text);
  if (!info) {
    directory.Write(pages::PageInfoName, text);
    return 0;
  }
  for (pages::PageFile& file : info->files) {
    // A name that no file can have is left out, as one that is missing.
    if (file.name.size() > 255 || file.name == pages::PageInfoName) continue;
    file.bytes = content.size();
    directory.Write(file.name, content);
  }
  directory.Write(pages::PageInfoName, pages::FormatPageInfo(*info));
  return content.size();
}

void TakePixels(CFMPlaneSet& planes, std::size_t fileBytes) {
  const BITMAPINFOHEADER* header = nullptr;
  std::span<const std::byte> pixels;
  if (planes.GetPixels(header, pixels) == 0) {
    Check(planes.GetFailure()[0] != L'\0');
    return;
  }
  std::int32_t width = 0;
  std::int32_t height = 0;
  Check(planes.GetDimensions(width, height) != 0);
  Check(header->biWidth == width && header->biHeight == height && width > 0 && height > 0);
  const std::size_t stride =
      (static_cast<std::size_t>(width) * (header->biBitCount / 8) + 3) / 4 * 4;
  Check(pixels.size() == stride * static_cast<std::size_t>(height));
  Check(pixels.size() == header->biSizeImage && pixels.size() <= 4 * fileBytes);
  // Each byte is there to be read.
  std::size_t sum = 0;
  for (const std::byte byte : pixels) sum += std::to_integer<std::size_t>(byte);
  Check(sum <= 255 * pixels.size());
  planes.ReleasePixels(header, pixels);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Directory directory;
  const std::size_t fileBytes =
      LayOut(directory, std::string(reinterpret_cast<const char*>(bytes), size));
  planes::PageReader reader;
  if (reader.Open(directory.InfoPath().c_str()) == 0) {
    Check(reader.GetFailure()[0] != L'\0');
    Check(reader.GetNumberofLayers() == 0);
  } else {
    Check(reader.GetNumberofLayers() == 1);
    TakePixels(reader, fileBytes);
    const int count = reader.GetNumberofPlanes(0);
    Check(count > 0);
    for (int plane = 0; plane < std::min(count, 8); ++plane) {
      PlaneDescription description;
      if (reader.GetPlane(0, plane, description) != 0) Check(!description.name.empty());
      Check(reader.SelectPlane(0, plane) != 0);
      TakePixels(reader, fileBytes);
    }
    Check(reader.SelectPlane(0, count) == 0);
  }
  directory.Empty();
  return 0;
}
