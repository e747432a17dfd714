#include "cli/sheet/parts.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/exit_status.h"
#include "cli/sheet/part_name.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::cli::sheet {

namespace fs = std::filesystem;

Parts::Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress)
    : m_Package(std::move(package)), m_Folder(std::move(folder)), m_Progress(std::move(progress)) {}

// Thrown through the unpacking when nobody waits for it any more.
struct Stopped {};

Parts::~Parts() {
  m_Stops = true;
  Join();
}

void Parts::Join() {
  if (m_Thread.joinable()) m_Thread.join();
}

void Parts::MakeFoldersFor(const std::string& part) const {
  std::error_code ignored;
  // Never the folder itself: somebody who removes it must not find it back.
  for (std::size_t slash = part.find('/'); slash != part.npos; slash = part.find('/', slash + 1))
    fs::create_directory(PathOf(part.substr(0, slash)), ignored);
}

void Parts::FetchAhead(const std::vector<std::string>& parts) {
  Settle();
  std::vector<Ahead> ahead;
  std::error_code error;
  for (const std::string& part : parts) {
    if (part.empty() || !Has(part) || fs::exists(PathOf(part), error)) continue;
    MakeFoldersFor(part);
    ahead.push_back({part, std::make_unique<os::GrowingFile>(PathOf(part))});
    if (const auto& state = ahead.back().file->State(); !state)
      throw CommandError(ExitStatus::JobFailed, Describe(state.Error()));
  }
  m_Ahead = std::move(ahead);
  if (!m_Ahead.empty()) m_Thread = std::thread([this] { UnpackAhead(); });
}

void Parts::UnpackAhead() {
  for (Ahead& ahead : m_Ahead) {
    try {
      if (m_Failure) throw Stopped();
      m_Package->Unpack(ahead.part, PathOf(ahead.part),
                        [&](std::uint64_t done, std::uint64_t whole) {
                          if (m_Stops) throw Stopped();
                          ahead.file->Grow(done);
                          if (m_Progress) m_Progress(done, whole);
                        });
      ahead.file->End(true);
    } catch (...) {
      if (!m_Failure) m_Failure = std::current_exception();
      ahead.file->End(false);
    }
  }
}

void Parts::Settle() {
  Join();
  if (m_Failure) std::rethrow_exception(std::exchange(m_Failure, nullptr));
}

void Parts::Discard(const std::string& part) {
  Settle();
  m_Thread = std::thread([path = PathOf(part)] {
    std::error_code ignored;
    fs::remove(path, ignored);
  });
}

std::string Parts::Fetch(const std::string& part) {
  std::string path = PathOf(part);
  std::error_code error;
  if (fs::exists(path, error)) return path;
  if (!Has(part))
    throw CommandError(ExitStatus::BadInput,
                       Name() + ": it has no part '" + PrintableName(part) + "'");
  Join();  // a package is unpacked by one thread at a time
  MakeFoldersFor(part);
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

std::string WordsOf(const Failure& failure) {
  std::string place;
  if (failure.line > 0) place = std::to_string(failure.line) + ":";
  if (failure.column > 0) place += std::to_string(failure.column) + ":";
  return place + " " + failure.why;
}

}  // namespace

std::string TakeXmlWords() {
  const auto failure = xml::TakeXmlFailure();
  return failure ? WordsOf(*failure) : std::string();
}

std::string TakeXmlWords(const std::string& folder) {
  const auto failure = xml::TakeXmlFailure();
  if (!failure) return {};
  std::string path = failure->where;
  std::ranges::replace(path, '\\', '/');
  if (path.starts_with(folder + "/")) path.erase(0, folder.size() + 1);
  return path + (path.empty() ? "" : ":") + WordsOf(*failure);
}

}  // namespace rastrel::cli::sheet
