#include "rastrel/platform/os/path.h"

#include <dirent.h>
#include <dlfcn.h>
#include <link.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "rastrel/platform/os/text.h"

namespace rastrel::os {
namespace {

constexpr bool IsAsciiLetter(char32_t character) {
  return (character >= U'a' && character <= U'z') || (character >= U'A' && character <= U'Z');
}

constexpr char LowerAsciiByte(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool HasDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':' && IsAsciiLetter(static_cast<char32_t>(path[0]));
}

constexpr bool IsControl(char byte) {
  return static_cast<unsigned char>(byte) < ' ' || byte == '\x7F';
}

// A byte of a native name that library text can't spell has this code point and its value.
constexpr wchar_t KeptByte = 0xDC00;

constexpr wchar_t Kept(char byte) {
  return static_cast<wchar_t>(KeptByte + static_cast<unsigned char>(byte));
}

// Separators and ASCII but for the backslash are never kept: so such a path means no other one than
// it shows.
constexpr bool IsKept(wchar_t character) {
  return character == Kept('\\') || (character >= KeptByte + 0x80 && character <= KeptByte + 0xFF);
}

void AppendNative(std::string& native, std::wstring_view path) {
  while (!path.empty()) {
    const auto kept = std::ranges::find_if(path, IsKept);
    const auto length = static_cast<std::size_t>(kept - path.begin());
    const std::size_t begin = native.size();
    AppendUtf8FromWide(native, path.substr(0, length));
    std::replace(native.begin() + static_cast<std::ptrdiff_t>(begin), native.end(), '\\', '/');
    path.remove_prefix(length);
    if (path.empty()) return;
    native += static_cast<char>(path.front() - KeptByte);
    path.remove_prefix(1);
  }
}

// Length of the well-formed sequence of UTF-8 that the text begins with; 0 if there is none.
std::size_t SequenceLength(std::string_view text) {
  constexpr std::size_t longest = 4;
  for (std::size_t length = 1; length <= std::min(longest, text.size()); ++length) {
    const std::string_view sequence = text.substr(0, length);
    const std::wstring wide = WideFromUtf8(sequence);
    if (wide.size() == 1 && Utf8FromWide(wide) == sequence) return length;
  }
  return 0;
}

bool IsThere(const std::string& path) {
  struct stat state {};
  return ::lstat(path.c_str(), &state) == 0;
}

bool SameIgnoringCase(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char left, char right) {
    return LowerAsciiByte(left) == LowerAsciiByte(right);
  });
}

// The name in the directory that equals `name` but for case, or empty. Several: the first in byte
// order, so that the answer does not change with the order of the file system.
std::string FindIgnoringCase(const std::string& directory, std::string_view name) {
  std::string found;
  if (std::none_of(name.begin(), name.end(),
                   [](char byte) { return IsAsciiLetter(static_cast<unsigned char>(byte)); }))
    return found;
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(
      ::opendir(directory.empty() ? "." : directory.c_str()), ::closedir);
  if (!listing) return found;
  while (const dirent* entry = ::readdir(listing.get())) {
    const std::string_view candidate = entry->d_name;
    if (SameIgnoringCase(candidate, name) && (found.empty() || candidate < found))
      found = candidate;
  }
  return found;
}

// Follows `path` from `fixed`, which is not looked up, component by component.
std::string ResolveCase(const std::string& path, std::size_t fixed) {
  std::string resolved = path.substr(0, fixed);
  std::size_t position = fixed;
  while (position < path.size()) {
    const std::size_t begin = std::min(path.find_first_not_of('/', position), path.size());
    const std::size_t end = std::min(path.find('/', begin), path.size());
    resolved.append(path, position, begin - position);
    const std::string_view name = std::string_view(path).substr(begin, end - begin);
    const std::string candidate = resolved + std::string(name);
    if (name.empty() || IsThere(candidate)) {
      resolved = candidate;
    } else {
      const std::string found = FindIgnoringCase(resolved, name);
      if (found.empty()) return resolved + path.substr(begin);
      resolved += found;
    }
    position = end;
  }
  return resolved;
}

std::string HomeDirectory() {
  std::string home = EnvironmentValue("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
      found != nullptr && found->pw_dir != nullptr)
    home = found->pw_dir;
  return home;
}

std::string WithoutClosingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string ConfiguredDataRoot() {
  std::string own = EnvironmentValue("RASTREL_HOME");
  if (!own.empty()) return own;
  // The XDG base directory rules say to ignore a relative path.
  const std::string data = EnvironmentValue("XDG_DATA_HOME");
  if (data.starts_with('/')) return WithoutClosingSlashes(data) + "/rastrel";
  return WithoutClosingSlashes(HomeDirectory()) + "/.local/share/rastrel";
}

// A relative root means the directory of the first look, however often the host changes its own.
std::string FromFirstDirectory(const std::string& root) {
  static std::mutex mutex;
  static auto* const roots = new std::map<std::string, std::string>;
  const std::scoped_lock lock(mutex);
  const auto [known, isNew] = roots->try_emplace(root);
  if (isNew) known->second = CurrentDirectory() + "/" + root;
  return known->second;
}

}  // namespace

std::string ToNative(std::wstring_view path) {
  if (path.empty()) return {};
  std::string native;
  std::size_t fixed = 0;
  const bool drive = HasDrive(path);
  if (drive) {
    native = DataRoot() + "/drive_";
    native += LowerAsciiByte(static_cast<char>(path[0]));
    fixed = native.size();
    path.remove_prefix(2);
    if (!path.empty() && !IsSeparator(path[0])) native += '/';
  }
  AppendNative(native, path);
  // Nearly every path exists as it is spelled. Only a missing component is worth a search: a
  // component that is no directory, or may not be searched, exists.
  struct stat state {};
  if (::lstat(native.c_str(), &state) == 0 || errno != ENOENT) return native;
  return ResolveCase(native, fixed);
}

std::wstring FromNative(std::string_view path) {
  std::wstring text = WideFromUtf8(path);
  const bool isSpelled = path.find('\\') == path.npos && Utf8FromWide(text) == path;
  if (!isSpelled) text.clear();
  while (!isSpelled && !path.empty()) {
    const std::size_t length = path.front() == '\\' ? 0 : SequenceLength(path);
    if (length == 0) {
      text += Kept(path.front());
    } else {
      AppendWideFromUtf8(text, path.substr(0, length));
    }
    path.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return HasDrive(text) ? L"./" + text : text;
}

Expected<void> CheckForCommandLine(std::string_view path) {
  const char* held = nullptr;
  const std::wstring text = WideFromUtf8(path);
  if (path.find('"') != path.npos) {
    held = "a double quote";
  } else if (path.find('\\') != path.npos) {
    held = "a backslash";
  } else if (std::ranges::any_of(path, IsControl)) {
    held = "a control character";
  } else if (Utf8FromWide(text) != path) {
    held = "bytes that are no UTF-8";
  } else {
    return {};
  }
  std::string shown = Utf8FromWide(text);
  std::ranges::replace_if(shown, IsControl, '?');
  return FailureOf("the path '" + shown + "' holds " + held +
                   ", which can't be passed to the programs of a job");
}

std::string DataRoot() {
  // Children get paths below the root and run in another directory.
  std::string root = WithoutClosingSlashes(ConfiguredDataRoot());
  return root.starts_with('/') ? root : FromFirstDirectory(root);
}

PathParts SplitPath(std::wstring_view path) {
  PathParts parts;
  if (HasDrive(path)) {
    parts.drive = path.substr(0, 2);
    path.remove_prefix(2);
  }
  const std::size_t separator = path.find_last_of(L"/\\");
  if (separator != std::wstring_view::npos) {
    parts.directory = path.substr(0, separator + 1);
    path.remove_prefix(separator + 1);
  }
  const std::size_t dot = std::min(path.find_last_of(L'.'), path.size());
  parts.name = path.substr(0, dot);
  parts.extension = path.substr(dot);
  return parts;
}

bool EndsInSeparator(std::wstring_view path) { return !path.empty() && IsSeparator(path.back()); }

std::wstring WithClosingBackslash(std::wstring path) {
  if (!EndsInSeparator(path)) path += L'\\';
  return path;
}

std::string ExecutablePath() {
  std::string path(256, '\0');
  for (;;) {
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) < path.size()) {
      path.resize(static_cast<std::size_t>(length));
      return path;
    }
    path.resize(path.size() * 2);
  }
}

std::string ModulePath() {
  Dl_info information{};
  void* extra = nullptr;
  static const char hereInThisModule = 0;
  if (::dladdr1(&hereInThisModule, &information, &extra, RTLD_DL_LINKMAP) == 0) return {};
  // The program itself has no name in the loader's list.
  const auto* module = static_cast<const link_map*>(extra);
  if (module == nullptr || module->l_name == nullptr || *module->l_name == '\0')
    return ExecutablePath();
  const std::unique_ptr<char, void (*)(void*)> path(::realpath(module->l_name, nullptr), std::free);
  return path ? path.get() : std::string();
}

std::string CurrentDirectory() {
  const std::unique_ptr<char, void (*)(void*)> path(::getcwd(nullptr, 0), std::free);
  return path ? path.get() : std::string();
}

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : std::string();
}

}  // namespace rastrel::os
