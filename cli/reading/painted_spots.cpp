#include "cli/reading/painted_spots.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <random>
#include <set>
#include <span>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/other_programs.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::chrono::seconds TimeLimit{60};
constexpr std::uint64_t PlaneLimit = std::uint64_t{256} << 20;
// Ink shows at any resolution: what is painted touches one pixel at least.
constexpr double PixelsAcross = 1500;
constexpr double HighestResolution = 72;

constexpr std::uint32_t TagStripOffsets = 273;
constexpr std::uint32_t TagStripByteCounts = 279;
constexpr std::uint32_t TagCompression = 259;

// Little-endian numbers of a file; 0 where there are none.
class TiffBytes {
 public:
  explicit TiffBytes(std::string_view bytes) : m_Bytes(bytes) {}

  [[nodiscard]] std::uint32_t Number(std::uint64_t at, std::size_t size) const {
    if (at > m_Bytes.size() || m_Bytes.size() - at < size) return 0;
    std::uint32_t number = 0;
    for (std::size_t index = size; index-- > 0;)
      number = number << 8 | static_cast<unsigned char>(m_Bytes[at + index]);
    return number;
  }

  // Values of an entry of the first directory, 16 or 32 bits each.
  [[nodiscard]] std::vector<std::uint32_t> Values(std::uint32_t tag) const {
    const std::uint64_t directory = Number(4, 4);
    const std::uint32_t entries = Number(directory, 2);
    for (std::uint32_t entry = 0; entry < entries; ++entry) {
      const std::uint64_t at = directory + 2 + entry * 12U;
      if (Number(at, 2) != tag) continue;
      const std::size_t size = Number(at + 2, 2) == 3 ? 2 : 4;
      const std::uint64_t count = std::min<std::uint64_t>(Number(at + 4, 4), m_Bytes.size());
      const std::uint64_t first = count * size <= 4 ? at + 8 : Number(at + 8, 4);
      std::vector<std::uint32_t> values;
      for (std::uint64_t index = 0; index < count; ++index)
        values.push_back(Number(first + index * size, size));
      return values;
    }
    return {};
  }

 private:
  std::string_view m_Bytes;
};

// A directory for the interpreter's files that only this user may look into, removed at the end.
class PrivateDirectory {
 public:
  PrivateDirectory() {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    std::random_device random;
    for (int attempt = 0; attempt < 100 && !error && m_Path.empty(); ++attempt) {
      const fs::path path = parent / ("rastrel-inspect-" + std::to_string(random()));
      if (!fs::create_directory(path, error)) continue;
      m_Path = path;
      fs::permissions(path, fs::perms::owner_all, error);
    }
    if (error || m_Path.empty())
      throw CommandError(ExitStatus::JobFailed,
                         "no temporary directory could be made: " + DescribeError(error.value()));
  }
  ~PrivateDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
  }
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  [[nodiscard]] std::string Path() const { return m_Path.string(); }

 private:
  std::filesystem::path m_Path;
};

int HexDigit(char digit) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const char upper = digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
  const std::size_t value = digits.find(upper);
  return value == digits.npos ? -1 : static_cast<int>(value);
}

// The page that holds the bounds and a point around them, moved to where the interpreter's page is.
// (Its own way to crop an EPS moves some files that stand in a DOS EPS off the page.)
std::vector<std::string> PageOptions(const std::optional<CRect>& bounds) {
  const auto option = [](const char* name, double value) { return name + std::to_string(value); };
  if (!bounds) return {option("-r", HighestResolution)};
  const double width = double{1} * bounds->right - bounds->left + 2;
  const double height = double{1} * bounds->top - bounds->bottom + 2;
  const double scale = std::min(1.0, PixelsAcross / std::max(width, height));
  return {option("-r", HighestResolution * scale),
          option("-dDEVICEWIDTHPOINTS=", width),
          option("-dDEVICEHEIGHTPOINTS=", height),
          "-dFIXEDMEDIA",
          "-c",
          "<</BeginPage {pop " + std::to_string(1.0 - bounds->left) + " " +
              std::to_string(1.0 - bounds->bottom) + " translate}>> setpagedevice"};
}

void Paint(const std::string& path, const std::optional<CRect>& bounds,
           const std::string& directory) {
  const std::string interpreter = FindProgram("gs");
  if (interpreter.empty())
    throw CommandError(ExitStatus::NotInstalled, "Ghostscript (gs) is not installed");
  // The planes' name is a relative one: a `%` in the directory's would be taken for a page number.
  std::vector<std::string> arguments = {"-q",
                                        "-dBATCH",
                                        "-dNOPAUSE",
                                        "-dSAFER",
                                        "-sDEVICE=tiffsep",
                                        "-sCompression=none",
                                        "-dMaxBitmap=200000000",
                                        "-sOutputFile=p%d.tif"};
  for (std::string& option : PageOptions(bounds)) arguments.push_back(std::move(option));
  arguments.insert(arguments.end(), {"-f", std::filesystem::absolute(path).string()});
  if (!RunInDirectory(interpreter, arguments, directory, TimeLimit))
    throw CommandError(ExitStatus::JobFailed, "Ghostscript can't paint it, or not within " +
                                                  std::to_string(TimeLimit.count()) + " seconds");
}

}  // namespace

std::optional<std::string> PlaneName(std::string_view fileName) {
  constexpr std::string_view end = ").tif";
  const std::size_t open = fileName.find('(');
  if (open == fileName.npos || !fileName.ends_with(end)) return std::nullopt;
  const std::string_view coded = fileName.substr(open + 1, fileName.size() - end.size() - open - 1);
  std::string name;
  for (std::size_t index = 0; index < coded.size(); ++index) {
    const bool isCode = coded[index] == '%' && index + 2 < coded.size() &&
                        HexDigit(coded[index + 1]) >= 0 && HexDigit(coded[index + 2]) >= 0;
    if (isCode) {
      name.push_back(
          static_cast<char>(HexDigit(coded[index + 1]) * 16 + HexDigit(coded[index + 2])));
      index += 2;
    } else {
      name.push_back(coded[index]);
    }
  }
  return name;
}

std::optional<bool> PlaneHasInk(std::string_view bytes) {
  const TiffBytes tiff(bytes);
  const auto offsets = tiff.Values(TagStripOffsets);
  const auto counts = tiff.Values(TagStripByteCounts);
  const bool isPlain = tiff.Values(TagCompression) == std::vector<std::uint32_t>{1};
  if (!bytes.starts_with(std::string_view("II*\0", 4)) || !isPlain || offsets.empty() ||
      offsets.size() != counts.size())
    return std::nullopt;
  for (std::size_t strip = 0; strip < offsets.size(); ++strip) {
    if (offsets[strip] > bytes.size() || bytes.size() - offsets[strip] < counts[strip])
      return std::nullopt;
    if (bytes.substr(offsets[strip], counts[strip]).find_first_not_of('\xFF') != bytes.npos)
      return true;
  }
  return false;
}

std::vector<std::string> PaintedSpots(const std::string& path, const std::optional<CRect>& bounds) {
  constexpr std::array<std::string_view, 4> process{"Cyan", "Magenta", "Yellow", "Black"};
  const PrivateDirectory directory;
  Paint(path, bounds, directory.Path());
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
    const std::optional<std::string> name = PlaneName(entry.path().filename().string());
    if (!name || std::ranges::find(process, *name) != process.end()) continue;
    const auto bytes = os::ReadWholeFile(os::FromNative(entry.path().string()), PlaneLimit);
    const auto ink = bytes ? PlaneHasInk(*bytes) : std::nullopt;
    if (!ink) throw CommandError(ExitStatus::JobFailed, "a plane of it can't be read");
    if (*ink) names.insert(os::Utf8FromWide(os::WideFromAnsi(*name)));
  }
  return {names.begin(), names.end()};
}

}  // namespace rastrel::cli
