#include "server/web/templates/template_folder.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t LongestName = 255;
constexpr std::size_t EntryLimit = 100'000;
constexpr std::array<std::string_view, 7> Extensions{".xml", ".cro", ".crx", ".cml",
                                                     ".llx", ".cr2", ".zml"};

std::string ExtensionOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == name.npos ? std::string() : LowerCase(name.substr(dot));
}

Failure NoTemplate() { return FailureOf("there is no such template", FailureCode::BadInput); }

}  // namespace

bool IsTemplateName(std::string_view name) {
  if (name.empty() || name.size() > LongestName || name.front() == '.' || !IsUtf8(name))
    return false;
  const bool isPlain = std::ranges::all_of(name, [](char one) {
    const auto byte = static_cast<unsigned char>(one);
    return byte >= 0x20 && byte != 0x7F && one != '/' && one != '\\';
  });
  return isPlain && std::ranges::find(Extensions, ExtensionOf(name)) != Extensions.end();
}

Expected<TemplateFile> TemplateFolder::Find(const std::string& name) const {
  if (!IsTemplateName(name)) return NoTemplate();
  TemplateFile file;
  file.name = name;
  file.path = m_Directory + "/" + name;
  struct stat found {};
  if (::lstat(file.path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return NoTemplate();
  const auto stampOf = [](const timespec& time) {
    return std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec);
  };
  file.bytes = static_cast<std::uint64_t>(found.st_size);
  file.modified =
      static_cast<std::int64_t>(found.st_mtim.tv_sec) * 1000 + found.st_mtim.tv_nsec / 1'000'000;
  // Nobody can set the time of the entry's change back.
  file.stamp = std::to_string(found.st_ino) + "-" + std::to_string(found.st_size) + "-" +
               stampOf(found.st_mtim) + "-" + stampOf(found.st_ctim);
  return file;
}

Expected<std::vector<TemplateFile>> TemplateFolder::List() const {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator entries(m_Directory, error);
  if (error == std::errc::no_such_file_or_directory) return std::vector<TemplateFile>();
  if (error) return Failure{"open", m_Directory, error.value()};
  std::size_t seen = 0;
  for (; entries != fs::directory_iterator() && seen < EntryLimit; ++seen) {
    std::string name = entries->path().filename().string();
    if (IsTemplateName(name)) names.push_back(std::move(name));
    entries.increment(error);
    if (error) return Failure{"read", m_Directory, error.value()};
  }
  std::ranges::sort(names);
  std::vector<TemplateFile> files;
  for (const std::string& name : names) {
    if (files.size() == ListLimit) break;
    if (auto file = Find(name)) files.push_back(*std::move(file));
  }
  return files;
}

}  // namespace rastrel::server::web
