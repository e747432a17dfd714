#include "interpreter/separations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "interpreter/cut_paths.h"
#include "interpreter/job_file.h"
#include "interpreter/plane_file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> ProcessNames{"Cyan", "Magenta", "Yellow", "Black"};
constexpr std::array<const char*, 4> ProcessFiles{"cyan.tif", "magenta.tif", "yellow.tif",
                                                  "black.tif"};
constexpr std::size_t PlaneLimit = 64;
constexpr std::string_view Extension = ".tif";

struct PlaneFile {
  std::string name;    // of the color
  std::string source;  // file name in the work directory
  std::size_t rank;    // process colors by their order, all others after them
};

struct TiffCloser {
  void operator()(TIFF* file) const { TIFFClose(file); }
};
using Tiff = std::unique_ptr<TIFF, TiffCloser>;

Tiff OpenTiff(const std::string& path) {
  TIFFSetErrorHandler(nullptr);
  TIFFSetWarningHandler(nullptr);
  struct stat state {};
  if (lstat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) return nullptr;
  return Tiff(TIFFOpen(path.c_str(), "r"));
}

// Readable for this user alone; TIFFOpen leaves that to the umask. Null leaves errno.
Tiff CreateTiff(const std::string& path) {
  os::FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.IsOpen()) return nullptr;
  errno = ENOMEM;
  Tiff made(TIFFFdOpen(file.Get(), path.c_str(), "w"));
  if (made) static_cast<void>(file.Release());
  return made;
}

std::optional<PageSize> ReadSize(TIFF* file) {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bits = 0;
  std::uint16_t samples = 0;
  TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
  TIFFGetFieldDefaulted(file, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
  if (width == 0 || height == 0 || bits != 8) return {};
  return PageSize{width, height, samples};
}

std::string PageDigits(unsigned page) {
  std::string digits = std::to_string(page);
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  return digits;
}

std::vector<PlaneFile> FindPlanes(const std::string& workDirectory, unsigned page) {
  const std::string start = PageDigits(page) + "(";
  std::vector<PlaneFile> planes;
  std::error_code error;
  for (fs::directory_iterator entry(workDirectory, error), last; !error && entry != last;
       entry.increment(error)) {
    const std::string file = entry->path().filename().string();
    if (!file.starts_with(start)) continue;
    const std::string name = PlaneName(file);
    if (name.empty()) continue;
    const auto process = std::ranges::find(ProcessNames, name);
    planes.push_back({name, file, static_cast<std::size_t>(process - ProcessNames.begin())});
  }
  std::ranges::sort(planes, [](const PlaneFile& one, const PlaneFile& other) {
    return one.rank != other.rank ? one.rank < other.rank : one.name < other.name;
  });
  return planes;
}

// A picture of all planes together, from the interpreter's own composite. Its samples are ink.
Expected<void> WritePreview(const std::string& composite, const PageSize& size,
                            const std::string& path) {
  const Tiff file = OpenTiff(composite);
  if (!file) return Failure{"open", composite, EINVAL};
  const auto found = ReadSize(file.get());
  const std::size_t rowBytes = std::size_t{size.width} * 4;
  if (!found || found->width != size.width || found->height != size.height ||
      static_cast<std::size_t>(TIFFScanlineSize64(file.get())) != rowBytes) {
    return Failure{"read", composite, EINVAL};
  }
  Preview preview({size.width, size.height, 3});
  std::vector<std::byte> ink(rowBytes);
  std::vector<std::byte> light(std::size_t{size.width} * 3);
  for (unsigned row = 0; row < size.height; ++row) {
    if (!preview.Wants(row)) continue;
    if (TIFFReadScanline(file.get(), ink.data(), row) < 0) {
      return Failure{"read", composite, EINVAL};
    }
    for (std::size_t i = 0; i < size.width; ++i) {
      const unsigned white = 255U - std::to_integer<unsigned>(ink[4 * i + 3]);
      for (std::size_t channel = 0; channel < 3; ++channel) {
        const unsigned shine = 255U - std::to_integer<unsigned>(ink[4 * i + channel]);
        light[3 * i + channel] = static_cast<std::byte>(shine * white / 255U);
      }
    }
    preview.AddRow(row, light);
  }
  return preview.Write(path);
}

Expected<PageSize> CheckPlane(const std::string& path) {
  const Tiff file = OpenTiff(path);
  const auto size = file ? ReadSize(file.get()) : std::nullopt;
  if (!size || size->channels != 1) return Failure{"read", path, EINVAL};
  return *size;
}

// The form of a plane that is written again: as the interpreter has it, at its resolution.
void SetPlaneForm(TIFF* to, TIFF* from, const PageSize& size) {
  TIFFSetField(to, TIFFTAG_IMAGEWIDTH, size.width);
  TIFFSetField(to, TIFFTAG_IMAGELENGTH, size.height);
  TIFFSetField(to, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(to, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(to, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(to, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  for (const ttag_t tag : {ttag_t{TIFFTAG_XRESOLUTION}, ttag_t{TIFFTAG_YRESOLUTION}}) {
    float resolution = 0;
    if (TIFFGetField(from, tag, &resolution) == 1) {
      TIFFSetField(to, tag, static_cast<double>(resolution));
    }
  }
  TIFFSetField(to, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  TIFFSetField(to, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(to, 0));
}

// Writes a plane again with other samples, and removes it where it was.
Expected<void> MoveChanged(const std::string& source, const std::string& target,
                           const PageSize& size, const std::array<std::uint8_t, 256>& transfer) {
  const Tiff from = OpenTiff(source);
  if (!from) return Failure{"open", source, EINVAL};
  const Tiff to = CreateTiff(target);
  if (!to) return Failure{"create", target, errno};
  SetPlaneForm(to.get(), from.get(), size);
  std::vector<std::uint8_t> samples(static_cast<std::size_t>(TIFFScanlineSize64(from.get())));
  if (samples.size() != size.width) return Failure{"read", source, EINVAL};
  for (unsigned row = 0; row < size.height; ++row) {
    if (TIFFReadScanline(from.get(), samples.data(), row) < 0) {
      return Failure{"read", source, EINVAL};
    }
    for (std::uint8_t& sample : samples) sample = transfer[sample];
    if (TIFFWriteScanline(to.get(), samples.data(), row) < 0) {
      return Failure{"write", target, errno != 0 ? errno : ENOSPC};
    }
  }
  if (TIFFFlush(to.get()) != 1) return Failure{"write", target, errno != 0 ? errno : ENOSPC};
  if (unlink(source.c_str()) != 0) return Failure{"remove", source, errno};
  return {};
}

// Bytes of a number as a file has it, the lowest first.
std::uint32_t NumberIn(std::string_view bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    number = (number << 8) | static_cast<unsigned char>(bytes[i]);
  return number;
}

// The interpreter has counted the page from the first that it has made. Sets the number to that of
// the job's page, in the entry of a TIFF file's directory that holds it:
//
//     0        2           4                   8           10          12
//     | tag    | kind (3)  | values: 2         | number    | pages     |
//
// The number counts from 0. A file without the entry stays as it is.
Expected<void> NumberPlane(const std::string& path, unsigned page) {
  constexpr std::size_t EntrySize = 12;
  constexpr std::uint32_t PageNumberTag = 297;
  const os::FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  const auto header = ReadPart(file.Get(), 0, 8);
  if (!header) return FailureAt(path, header.Error());
  if (header->size() < 8 || !header->starts_with("II")) return {};
  const std::uint64_t directory = NumberIn(std::string_view(*header).substr(4));
  const auto count = ReadPart(file.Get(), directory, 2);
  if (!count) return FailureAt(path, count.Error());
  const auto entries = ReadPart(file.Get(), directory + 2, NumberIn(*count) * EntrySize);
  if (!entries) return FailureAt(path, entries.Error());
  for (std::size_t at = 0; at + EntrySize <= entries->size(); at += EntrySize) {
    if (NumberIn(std::string_view(*entries).substr(at, 2)) != PageNumberTag) continue;
    const char number[]{static_cast<char>((page - 1) & 0xff),
                        static_cast<char>(((page - 1) >> 8) & 0xff)};
    const auto place = static_cast<off_t>(directory + 2 + at + 8);
    if (pwrite(file.Get(), number, sizeof number, place) != sizeof number)
      return Failure{"write", path, errno};
  }
  return {};
}

// Moves a plane to its page and takes it into the info.
Expected<void> TakePlane(const PlaneFile& plane, const RunDescription& run,
                         const std::string& workDirectory, const std::string& directory,
                         pages::PageInfo& info) {
  const std::size_t spot = info.planes.size() + 1 - ProcessNames.size();
  const std::string name = plane.rank < ProcessFiles.size()
                               ? std::string(ProcessFiles[plane.rank])
                               : "spot-" + std::to_string(spot) + std::string(Extension);
  const std::string source = workDirectory + "/" + plane.source;
  const auto size = CheckPlane(source);
  if (!size) return size.Error();
  if (info.planes.empty()) {
    info.width = size->width;
    info.height = size->height;
  } else if (size->width != info.width || size->height != info.height) {
    return Failure{"compare planes", source, EINVAL};
  }
  const std::string target = directory + "/" + name;
  if (const auto transfer = run.transfers.find(plane.name); transfer != run.transfers.end()) {
    const auto moved = MoveChanged(source, target, *size, transfer->second);
    if (!moved) return moved.Error();
  } else if (rename(source.c_str(), target.c_str()) != 0) {
    return Failure{"rename", source, errno};
  }
  if (run.pagesBefore > 0) {
    if (const auto numbered = NumberPlane(target, info.page); !numbered) return numbered;
  }
  const auto described = pages::DescribeFile(directory, name);
  if (!described) return described.Error();
  pages::PagePlane& taken = info.planes.emplace_back(pages::PagePlane{plane.name, name, 0});
  const auto ink = run.inks.find(plane.name);
  if (plane.rank >= ProcessFiles.size() && ink != run.inks.end()) taken.ink = ink->second;
  info.files.push_back(*described);
  return {};
}

// The planes of a page that are printed, in their order.
Expected<std::vector<PlaneFile>> PrintedPlanes(const std::string& workDirectory, unsigned page,
                                               const RunDescription& run) {
  std::vector<PlaneFile> planes = FindPlanes(workDirectory, page);
  // The interpreter makes a plane for every separation that a page names; that of the cut color
  // holds nothing, since its paths were taken out.
  std::erase_if(planes, [&](const PlaneFile& plane) {
    return run.cuts != nullptr && plane.rank >= ProcessNames.size() &&
           run.cuts->TakesSeparation(plane.name);
  });
  if (planes.size() < ProcessNames.size() || planes[3].rank != 3 || planes.size() > PlaneLimit) {
    return Failure{"find the planes of page " + std::to_string(page), workDirectory, EINVAL};
  }
  return planes;
}

// Makes the preview of the interpreter's composite, which goes.
Expected<void> TakeComposite(const std::string& composite, const std::string& directory,
                             pages::PageInfo& info) {
  const PageSize size{info.width, info.height, 4};
  const auto pictured = WritePreview(composite, size, directory + "/" + pages::PreviewName);
  if (!pictured) return pictured.Error();
  const auto picture = pages::DescribeFile(directory, pages::PreviewName);
  if (!picture) return picture.Error();
  info.files.push_back(*picture);
  unlink(composite.c_str());
  return {};
}

}  // namespace

bool HasSeparations(const std::string& workDirectory, unsigned page) {
  const std::string path = workDirectory + "/" + PageDigits(page) + std::string(Extension);
  return access(path.c_str(), F_OK) == 0;
}

std::string PlaneName(const std::string& fileName) {
  const auto bytes = PlaneNameBytes(fileName);
  return bytes ? os::Utf8FromUtf8OrAnsi(*bytes) : std::string();
}

Expected<void> MakeSeparationPage(const std::string& workDirectory, const std::string& runDirectory,
                                  unsigned page, const RunDescription& run,
                                  std::uint64_t pixelLimit) {
  const auto planes = PrintedPlanes(workDirectory, page, run);
  if (!planes) return planes.Error();
  const std::string directory = runDirectory + "/" + pages::PageName(page);
  if (mkdir(directory.c_str(), 0700) != 0) return Failure{"mkdir", directory, errno};
  pages::PageInfo info = DescribePage(run, page);
  info.color =
      planes->size() > ProcessNames.size() ? pages::PageColor::Separations : pages::PageColor::Cmyk;
  for (const PlaneFile& plane : *planes) {
    const auto taken = TakePlane(plane, run, workDirectory, directory, info);
    if (!taken) return taken.Error();
    if (std::uint64_t{info.width} * info.height > pixelLimit) {
      return Failure{"take", directory, EFBIG};
    }
  }
  const std::string composite = workDirectory + "/" + PageDigits(page) + std::string(Extension);
  if (const auto pictured = TakeComposite(composite, directory, info); !pictured) return pictured;
  if (const auto cut = WriteCutPaths(run, directory, info); !cut) return cut;
  return WritePageInfo(directory, info);
}

}  // namespace rastrel::interpreter
