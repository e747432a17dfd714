#include "cli/sheet/parts.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/exit_status.h"
#include "cli/sheet/part_name.h"
#include "rastrel/imports/xml_failure.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli::sheet {

namespace fs = std::filesystem;

Parts::Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress)
    : m_Package(std::move(package)), m_Folder(std::move(folder)), m_Progress(std::move(progress)) {}

std::string Parts::Fetch(const std::string& part) {
  std::string path = PathOf(part);
  std::error_code error;
  if (fs::exists(path, error)) return path;
  if (!Has(part))
    throw CommandError(ExitStatus::BadInput,
                       Name() + ": it has no part '" + PrintableName(part) + "'");
  // Never the folder itself: somebody who removes it must not find it back.
  for (std::size_t slash = part.find('/'); slash != part.npos; slash = part.find('/', slash + 1))
    fs::create_directory(PathOf(part.substr(0, slash)), error);
  m_Package->Unpack(part, path, m_Progress);
  return path;
}

void Parts::RefuseXml(const std::string& part, const std::string& otherwise) const {
  const std::string words = TakeXmlWords();
  if (words.empty()) Refuse(part, otherwise);
  throw CommandError(ExitStatus::BadInput, Name() + ": " + PrintableName(part) + ":" + words);
}

void Parts::Refuse(const std::string& part, const std::string& why) const {
  throw CommandError(ExitStatus::BadInput, Name() + ": " + PrintableName(part) + ": " + why);
}

namespace {

std::string WordsOf(const imports::XmlFailure& failure) {
  std::string place;
  if (failure.line > 0) place = std::to_string(failure.line) + ":";
  if (failure.column > 0) place += std::to_string(failure.column) + ":";
  return place + " " + os::Utf8FromWide(failure.reason);
}

}  // namespace

std::string TakeXmlWords() {
  const auto failure = imports::TakeXmlFailure();
  return failure ? WordsOf(*failure) : std::string();
}

std::string TakeXmlWords(const std::string& folder) {
  const auto failure = imports::TakeXmlFailure();
  if (!failure) return {};
  std::string path = os::Utf8FromWide(failure->path);
  std::ranges::replace(path, '\\', '/');
  if (path.starts_with(folder + "/")) path.erase(0, folder.size() + 1);
  return path + (path.empty() ? "" : ":") + WordsOf(*failure);
}

}  // namespace rastrel::cli::sheet
