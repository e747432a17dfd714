#include "interpreter/ghostscript_files.h"

#include <elf.h>
#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "interpreter/job_file.h"
#include "interpreter/shared_places.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t HeadBytes = 4096;
constexpr std::size_t MaximumSettings = 262144;  // bytes of a file of font settings

// Resources, profiles and fonts beside the shared ones.
constexpr const char* const OwnPlaces[] = {
    "/etc/ld.so.preload",    "/usr/local/share/ghostscript",
    "/etc/ghostscript",      "/usr/share/color",
    "/var/lib/color",        "/usr/share/cups/fonts",
    "/var/cache/fontconfig", "/etc/papersize",
    "/dev/random",           "/dev/zero",
};

// Programs that a script may start.
constexpr const char* const ProgramPlaces[] = {"/bin",     "/usr/bin", "/usr/local/bin",
                                               "/usr/lib", "/lib",     "/lib64"};

std::string HeadOf(const std::string& program) {
  const os::FileDescriptor file(open(program.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return file.IsOpen() ? ReadPart(file.Get(), 0, HeadBytes).ValueOr({}) : std::string();
}

template <typename Record>
bool ReadRecord(std::string_view bytes, std::size_t at, Record& record) {
  if (at > bytes.size() || bytes.size() - at < sizeof record) return false;
  std::memcpy(&record, bytes.data() + at, sizeof record);
  return true;
}

// The loader that a program in machine code names; empty if it names none.
std::string LoaderIn(std::string_view head) {
  Elf64_Ehdr header{};
  if (!head.starts_with(ELFMAG) || !ReadRecord(head, 0, header)) return {};
  for (std::size_t i = 0; i < header.e_phnum; ++i) {
    Elf64_Phdr segment{};
    if (!ReadRecord(head, header.e_phoff + i * sizeof segment, segment)) return {};
    if (segment.p_type != PT_INTERP) continue;
    if (segment.p_offset >= head.size()) return {};
    const std::string_view name = head.substr(segment.p_offset);
    return std::string(name.substr(0, name.find('\0')));
  }
  return {};
}

void AddProgram(const std::string& program, std::vector<WallPath>& files) {
  files.push_back({program, WallAccess::Execute});
  const std::string head = HeadOf(program);
  if (head.starts_with("#!")) {
    for (const char* const place : ProgramPlaces) files.push_back({place, WallAccess::Execute});
    files.push_back({fs::path(program).parent_path().string(), WallAccess::Execute});
  } else if (const std::string loader = LoaderIn(head); !loader.empty()) {
    files.push_back({loader, WallAccess::Execute});
  }
  // One that was installed in a place of its own has its libraries and resources beside it.
  std::error_code error;
  const fs::path prefix = fs::canonical(program, error).parent_path().parent_path();
  if (error || prefix.empty() || prefix == "/" || prefix == "/usr") return;
  for (const char* const name : {"lib", "lib64", "share"}) {
    files.push_back({(prefix / name).string(), WallAccess::Read});
  }
}

// Directories that a file of font settings names: the text of its <dir> elements that are full
// paths or lie in the home directory. Those relative to the XDG directories are there in any case.
void AddNamedDirectories(const fs::path& settings, const std::string& home,
                         std::vector<WallPath>& files) {
  const os::FileDescriptor file(open(settings.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.IsOpen()) return;
  const std::string text = ReadPart(file.Get(), 0, MaximumSettings).ValueOr({});
  std::size_t at = 0;
  while ((at = text.find("<dir", at)) != text.npos) {
    const std::size_t begin = text.find('>', at);
    const std::size_t end = text.find('<', begin);
    if (end == text.npos) return;
    std::string path = text.substr(begin + 1, end - begin - 1);
    if (path.starts_with("~/")) path.replace(0, 1, home);
    if (path.starts_with('/') && path.size() > 1) files.push_back({path, WallAccess::Read});
    at = end;
  }
}

// The same of all files of settings in a directory. The links that distributions lay there lead to
// settings of the fonts that they ship, which name no directories.
void AddDirectoriesNamedIn(const fs::path& directory, const std::string& home,
                           std::vector<WallPath>& files) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    std::error_code ignored;
    if (entry->is_symlink(ignored)) continue;
    if (entry->path().extension() == ".conf") AddNamedDirectories(entry->path(), home, files);
  }
}

// The user's fonts and the settings for them, where the font library looks.
void AddUsersFonts(std::vector<WallPath>& files) {
  const auto add = [&](const std::string& path) { files.push_back({path, WallAccess::Read}); };
  const std::string home = os::EnvironmentValue("HOME");
  const auto base = [&](const char* variable, const char* inHome) {
    const std::string value = os::EnvironmentValue(variable);
    if (value.starts_with('/')) return value;
    return home.empty() ? std::string() : home + inHome;
  };
  if (home.starts_with('/')) {
    for (const char* const name : {"/.fonts", "/.fonts.conf", "/.fonts.conf.d"}) add(home + name);
  }
  if (const auto data = base("XDG_DATA_HOME", "/.local/share"); !data.empty()) add(data + "/fonts");
  for (const std::string& directory :
       {base("XDG_CONFIG_HOME", "/.config"), base("XDG_CACHE_HOME", "/.cache")}) {
    if (!directory.empty()) add(directory + "/fontconfig");
  }
  for (const char* const variable : {"FONTCONFIG_FILE", "FONTCONFIG_PATH"}) {
    if (const auto value = os::EnvironmentValue(variable); value.starts_with('/')) add(value);
  }
  const std::string config = base("XDG_CONFIG_HOME", "/.config") + "/fontconfig";
  for (const std::string& settings :
       {std::string("/etc/fonts/fonts.conf"), std::string("/etc/fonts/local.conf"),
        config + "/fonts.conf", home + "/.fonts.conf", os::EnvironmentValue("FONTCONFIG_FILE")}) {
    AddNamedDirectories(settings, home, files);
  }
  for (const std::string& settings :
       {std::string("/etc/fonts/conf.d"), config + "/conf.d", home + "/.fonts.conf.d"}) {
    AddDirectoriesNamedIn(settings, home, files);
  }
}

}  // namespace

bool IsScript(const std::string& program) { return HeadOf(program).starts_with("#!"); }

std::vector<WallPath> GhostscriptFiles(const std::string& program) {
  std::vector<WallPath> files;
  AddProgram(program, files);
  for (const char* const place : LibraryPlaces) files.push_back({place, WallAccess::Read});
  for (const char* const place : FontPlaces) files.push_back({place, WallAccess::Read});
  for (const char* const place : OwnPlaces) files.push_back({place, WallAccess::Read});
  files.push_back({"/dev/null", WallAccess::Write});
  AddUsersFonts(files);
  return files;
}

}  // namespace rastrel::interpreter
