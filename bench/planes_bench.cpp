// The plane reader against reading the same file into memory: a gray page, whose samples are the
// block; rows that have to be padded; an RGB page, whose red and blue change places. And the memory
// of a set of planes, of which one is held at a time.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/require.h"
#include "cfplane/reader.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel;
using bench::Require;
using test::ScratchDirectory;

constexpr std::size_t Piece = std::size_t{1} << 20;

struct Form {
  const char* kind;  // of netpbm
  unsigned width;
  unsigned height;
  std::size_t samples;
  [[nodiscard]] std::size_t Bytes() const { return samples * width * height; }
};
constexpr Form Gray{"P5", 32768, 32768, 1};
constexpr Form OddGray{"P5", 32767, 32768, 1};
constexpr Form Rgb{"P6", 18920, 18917, 3};
constexpr Form Plane{"P5", 16384, 32768, 1};

// A file of pixels; its size.
std::uint64_t WriteFile(const std::string& path, const Form& form) {
  std::ofstream file(path, std::ios::binary);
  file << form.kind << "\n" << form.width << " " << form.height << "\n255\n";
  std::string piece(Piece, '\0');
  for (std::size_t i = 0; i < piece.size(); ++i) piece[i] = static_cast<char>(i * 31 + i / 4096);
  for (std::size_t left = form.Bytes(); left > 0;) {
    const std::size_t count = std::min(left, piece.size());
    file.write(piece.data(), static_cast<std::streamsize>(count));
    left -= count;
  }
  Require(static_cast<bool>(file.flush()), "the page can't be written");
  return static_cast<std::uint64_t>(file.tellp());
}

void WriteInfo(const ScratchDirectory& root, const std::string& directory, const Form& form,
               pages::PageColor color, std::vector<pages::PagePlane> planes, std::uint64_t bytes) {
  pages::PageInfo info;
  info.width = form.width;
  info.height = form.height;
  info.xResolution = info.yResolution = 300;
  info.color = color;
  info.planes = std::move(planes);
  for (const auto& plane : info.planes)
    info.files.push_back({plane.file, bytes, std::string(64, '0')});
  root.Write(directory + "/.info", pages::FormatPageInfo(info));
}

// Opens the page and takes the pixels, of the picture or of one plane, and gives them back.
void TakePixels(planes::PageReader& reader) {
  const BITMAPINFOHEADER* header = nullptr;
  std::span<const std::byte> pixels;
  Require(reader.GetPixels(header, pixels) != 0, "the pixels can't be read");
  Require(pixels.size() == header->biSizeImage, "the pixels are not all there");
  reader.ReleasePixels(header, pixels);
}

void ReadPage(const ScratchDirectory& root, const std::string& directory) {
  planes::PageReader reader;
  Require(reader.Open(root.Wide(directory + "/.info").c_str()) != 0, "the page can't be opened");
  TakePixels(reader);
}

// The file in new memory, as large reads bring it.
void ReadFile(const std::string& path, std::size_t bytes) {
  const os::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  void* const place =
      ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  Require(file.IsOpen() && place != MAP_FAILED, "the file can't be read");
  auto* at = static_cast<char*>(place);
  for (std::size_t left = bytes; left > 0;) {
    const ssize_t count = ::read(file.Get(), at, left);
    Require(count > 0, "the file is short");
    at += count;
    left -= static_cast<std::size_t>(count);
  }
  ::munmap(place, bytes);
}

void ComparePage(const ScratchDirectory& root, const std::string& directory,
                 const std::string& file, std::uint64_t bytes, const std::string& name,
                 double limit) {
  const std::string path = root.Path(directory + "/" + file);
  const auto nothing = [] {};
  const auto ours = [&] { ReadPage(root, directory); };
  ours();  // the file is in the system's cache from here on
  // One thread does all of it, so that the processor's clock is fair to both.
  const bench::Comparison comparison{.name = name,
                                     .peerName = "read of the file into memory",
                                     .rounds = 9,
                                     .limit = limit,
                                     .clock = bench::Clock::Processor};
  bench::Compare(comparison, nothing, ours, [&] { ReadFile(path, bytes); });
}

void CompareGray(const char* name, const Form& form, double limit) {
  const ScratchDirectory root;
  root.Write("p/page.pgm", "");
  const std::uint64_t bytes = WriteFile(root.Path("p/page.pgm"), form);
  WriteInfo(root, "p", form, pages::PageColor::Gray, {{"Gray", "page.pgm", 0}}, bytes);
  ComparePage(root, "p", "page.pgm", bytes, name, limit);
}

void CompareRgb() {
  const ScratchDirectory root;
  root.Write("p/page.ppm", "");
  const std::uint64_t bytes = WriteFile(root.Path("p/page.ppm"), Rgb);
  WriteInfo(root, "p", Rgb, pages::PageColor::Rgb,
            {{"Red", "page.ppm", 0}, {"Green", "page.ppm", 1}, {"Blue", "page.ppm", 2}}, bytes);
  ComparePage(root, "p", "page.ppm", bytes, "RGB page of 1 GiB", 2);
}

// The most memory that reading all planes of a set adds, in a process of its own; KiB.
long PeakOfSet(const ScratchDirectory& root) {
  int ends[2];
  Require(::pipe(ends) == 0, "no pipe");
  const pid_t child = ::fork();
  if (child == 0) {
    const long before = bench::StatusKilobytes("VmHWM:");
    planes::PageReader reader;
    Require(reader.Open(root.Wide("p/.info").c_str()) != 0, "the set can't be opened");
    for (int plane = 0; plane < reader.GetNumberofPlanes(0); ++plane) {
      Require(reader.SelectPlane(0, plane) != 0, "no such plane");
      TakePixels(reader);
    }
    const long peak = bench::StatusKilobytes("VmHWM:") - before;
    Require(::write(ends[1], &peak, sizeof peak) == sizeof peak, "no pipe");
    ::_exit(0);
  }
  ::close(ends[1]);
  long peak = 0;
  Require(::read(ends[0], &peak, sizeof peak) == sizeof peak, "the set can't be read");
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
  return peak;
}

void MeasureSet() {
  const ScratchDirectory root;
  root.Write("p/1.pgm", "");
  const std::uint64_t bytes = WriteFile(root.Path("p/1.pgm"), Plane);
  std::vector<pages::PagePlane> planes;
  for (const char* const name : {"1", "2", "3", "4"}) {
    const std::string file = std::string(name) + ".pgm";
    planes.push_back({name, file, 0});
    if (file == "1.pgm") continue;
    Require(::link(root.Path("p/1.pgm").c_str(), root.Path("p/" + file).c_str()) == 0, "no link");
  }
  WriteInfo(root, "p", Plane, pages::PageColor::Separations, std::move(planes), bytes);
  bench::Print({"peak memory of a plane set of 2 GiB", static_cast<double>(PeakOfSet(root)), "KiB",
                "one plane of it", static_cast<double>(Plane.Bytes()) / 1024, 1.05});
}

}  // namespace

int main() {
  CompareGray("gray page of 1 GiB", Gray, 1.1);
  // Each row goes through a buffer, which a file with other rows than the block's needs.
  CompareGray("gray page of 1 GiB, rows to be padded", OddGray, 1.4);
  CompareRgb();
  MeasureSet();
}
