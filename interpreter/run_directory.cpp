#include "interpreter/run_directory.h"

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <utility>

#include "interpreter/cfm2_writer.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::interpreter {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t NameBytes = 16;
constexpr std::chrono::minutes EmptyAge{1};

bool IsRunName(const std::string& name) {
  return name.size() == 2 * NameBytes &&
         name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// A run's directory holds its work directories from its first instants on, so an empty one that is
// not brand-new has been emptied by those who took its pages.
void RemoveEmptied(const std::string& parent) {
  std::error_code error;
  const auto now = fs::file_time_type::clock::now();
  for (fs::directory_iterator entry(parent, error), last; !error && entry != last;
       entry.increment(error)) {
    std::error_code ignored;
    if (!IsRunName(entry->path().filename().string())) continue;
    if (now - entry->last_write_time(ignored) < EmptyAge || ignored) continue;
    rmdir(entry->path().c_str());  // fails on one that holds anything
  }
}

bool SamePlace(const std::string& one, const std::string& other) {
  std::error_code error;
  return fs::equivalent(one, other, error) && !error;
}

// Makes `link` lead to `target`, or finds that it does. Relative where it can be, so that a data
// root may be moved.
bool LeadTo(const std::string& link, const std::string& target) {
  std::error_code error;
  const fs::path root = fs::canonical(fs::path(link).parent_path(), error);
  const fs::path place = fs::canonical(target, error);
  if (error) return false;
  const fs::path relative = place.lexically_relative(root);
  const bool below = !relative.empty() && *relative.begin() != "..";
  if (symlink((below ? relative : place).c_str(), link.c_str()) != 0 && errno != EEXIST) {
    return false;
  }
  return SamePlace(link, target);
}

}  // namespace

std::string RandomDigits(std::size_t bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes; ++i) {
    unsigned char byte = 0;
    if (getrandom(&byte, 1, 0) != 1) return {};
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

RunDirectory::RunDirectory(std::string parent, std::string name)
    : m_Parent(std::move(parent)), m_Name(std::move(name)), m_Path(m_Parent + "/" + m_Name) {}

Expected<RunDirectory> RunDirectory::Make(const std::string& ripDirectory, Guardian& guardian) {
  const std::string parent = ripDirectory + "/System/c-out";
  std::error_code error;
  fs::create_directories(parent, error);
  if (error) return Failure{"mkdir", parent, error.value()};
  RemoveEmptied(parent);
  return MakeIn(parent, guardian);
}

Expected<RunDirectory> RunDirectory::MakeIn(const std::string& parent, Guardian& guardian) {
  const std::string name = RandomDigits(NameBytes);
  if (name.empty()) return Failure{"getrandom", {}, errno};
  RunDirectory made(parent, name);
  if (!guardian.Guard(made.m_Path)) return Failure{"guard", made.m_Path, errno};
  for (const std::string& path : {made.m_Path, made.Temporary(), made.Planes()}) {
    if (mkdir(path.c_str(), 0777) != 0) return Failure{"mkdir", path, errno};
  }
  if (chmod(made.Temporary().c_str(), 0700) != 0) {
    return Failure{"chmod", made.Temporary(), errno};
  }
  return made;
}

bool RunDirectory::RemoveWork() const {
  std::error_code first;
  std::error_code second;
  fs::remove_all(Temporary(), first);
  fs::remove_all(Planes(), second);
  return !first && !second;
}

Expected<std::string> RunDirectory::ListedPath() const {
  const std::string native = m_Path + "/";
  // A backslash separates in the library's text, so a native name with one has no such text.
  if (IsPlainValue(native) && native.find('\\') == native.npos) return native;
  const std::string root = os::DataRoot();
  for (char letter = 'r'; letter <= 'z'; ++letter) {
    if (!LeadTo(root + "/drive_" + letter, m_Parent)) continue;
    const char drive = static_cast<char>(letter - 'a' + 'A');
    return std::string(1, drive) + ":\\" + m_Name + "\\";
  }
  return Failure{"find a drive letter that can stand for", m_Parent, EEXIST};
}

}  // namespace rastrel::interpreter
