#include "spreadsheet/parts.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "spreadsheet/error.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {

namespace fs = std::filesystem;

Parts::Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress)
    : m_Package(std::move(package)), m_Folder(std::move(folder)), m_Progress(std::move(progress)) {}

// Thrown through the unpacking of a part that nobody will read any further.
struct Unwanted {};

Parts::~Parts() {
  m_Demand = Demand::Nothing;
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

Expected<void> Parts::FetchAhead(const std::vector<std::string>& parts) {
  return Caught([&] {
    OrThrow(Settle());
    std::vector<Ahead> ahead;
    std::error_code error;
    for (const std::string& part : parts) {
      if (part.empty() || !Has(part) || fs::exists(PathOf(part), error)) continue;
      MakeFoldersFor(part);
      ahead.push_back({part, std::make_unique<os::GrowingFile>(PathOf(part))});
      OrThrow(ahead.back().file->State());
    }
    m_Ahead = std::move(ahead);
    if (!m_Ahead.empty()) m_Thread = std::thread([this] { UnpackAhead(); });
  });
}

// Whether the part's next bytes are. A reader that waits for a later part has left this one.
bool Parts::IsWanted(std::size_t index, std::uint64_t whole) const {
  const Demand demand = m_Demand;
  if (demand == Demand::Nothing) return false;
  if (whole <= WholeBytes) return true;
  if (demand == Demand::SmallParts) return false;
  return std::none_of(m_Ahead.begin() + static_cast<std::ptrdiff_t>(index) + 1, m_Ahead.end(),
                      [](const Ahead& later) { return later.file->IsAwaited(); });
}

void Parts::UnpackOne(std::size_t index) {
  const Ahead& ahead = m_Ahead[index];
  const std::uint64_t size = m_Package->SizeOf(ahead.part);
  if (!IsWanted(index, size)) throw Unwanted();
  m_Package->Unpack(ahead.part, PathOf(ahead.part), [&](std::uint64_t done, std::uint64_t whole) {
    if (!IsWanted(index, whole)) throw Unwanted();
    ahead.file->Grow(done);
    if (m_Progress) m_Progress(done, whole);
  });
}

void Parts::UnpackAhead() {
  for (std::size_t index = 0; index < m_Ahead.size(); ++index) {
    bool isWhole = false;
    try {
      if (!m_Failure) {
        UnpackOne(index);
        isWhole = true;
      }
    } catch (const Unwanted&) {
      isWhole = false;
    } catch (...) {
      m_Failure = std::current_exception();
    }
    m_Ahead[index].file->End(isWhole);
  }
}

void Parts::ThrowFailure() {
  if (m_Failure) std::rethrow_exception(std::exchange(m_Failure, nullptr));
}

Expected<void> Parts::Settle() {
  Join();
  return Caught([this] { ThrowFailure(); });
}

Expected<void> Parts::Stop() {
  m_Demand = Demand::SmallParts;
  return Settle();
}

Expected<void> Parts::Discard(const std::string& part) {
  if (auto stopped = Stop(); !stopped) return stopped;
  m_Thread = std::thread([path = PathOf(part)] {
    std::error_code ignored;
    fs::remove(path, ignored);
  });
  return {};
}

Expected<std::string> Parts::Fetch(const std::string& part) {
  std::string path = PathOf(part);
  std::error_code error;
  if (fs::exists(path, error)) return path;
  return Caught([&] {
    if (!Has(part)) {
      Failure failure = FailureOf("it has no part '" + PrintableName(part) + "'");
      failure.where = Name();
      throw Error(std::move(failure));
    }
    Join();  // a package is unpacked by one thread at a time
    MakeFoldersFor(part);
    m_Package->Unpack(part, path, m_Progress);
    return path;
  });
}

void Parts::RefuseXml(const std::string& part, const std::string& otherwise) const {
  throw Error(TakeXmlFailureAt(Name() + ": " + PrintableName(part), otherwise));
}

void Parts::Refuse(const std::string& part, const std::string& why) const {
  Failure failure = FailureOf(why);
  failure.where = Name() + ": " + PrintableName(part);
  throw Error(std::move(failure));
}

}  // namespace rastrel::spreadsheet
