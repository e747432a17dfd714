#include "rastrel/platform/os/owner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <mutex>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::os {
namespace {

constexpr std::string_view TemporaryStart = ".rastrel-";
constexpr std::string_view TemporaryEnd = ".tmp";
constexpr std::size_t OwnerFileLimit = 1024;
constexpr std::size_t StartField = 20;  // of /proc/ID/stat, counted from 0 after the program's name

std::vector<std::string_view> FieldsOf(std::string_view line, char separator = ' ') {
  std::vector<std::string_view> fields;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(separator), line.size());
    fields.push_back(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return fields;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

// Files of /proc have no size of their own.
Expected<std::string> ReadProcFile(const std::string& path) {
  const auto file = TakeDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC), "open", path);
  if (!file) return file.Error();
  std::array<char, 4096> bytes{};
  const ssize_t count = ::read(file->Get(), bytes.data(), bytes.size());
  if (count < 0) return Failure{"read", path, errno};
  return std::string(bytes.data(), static_cast<std::size_t>(count));
}

// A process that has ended and was not reaped yet counts as none.
Expected<std::uint64_t> StartOf(std::uint32_t id) {
  const std::string path = "/proc/" + std::to_string(id) + "/stat";
  const auto text = ReadProcFile(path);
  if (!text) return text.Error();
  // The program's name may hold anything, a parenthesis included.
  const std::size_t name = text->rfind(") ");
  if (name == std::string::npos) return Failure{"read", path, EINVAL};
  const auto fields = FieldsOf(std::string_view(*text).substr(name + 2));
  std::uint64_t start = 0;
  if (fields.size() < StartField || !ReadNumber(fields[StartField - 1], start))
    return Failure{"read", path, EINVAL};
  if (fields[0] == "Z" || fields[0] == "X") return Failure{"read", path, ESRCH};
  return start;
}

// The parts of an identity that all processes of this machine and namespace share.
Expected<ProcessIdentity> CommonIdentity() {
  ProcessIdentity identity;
  auto boot = ReadProcFile("/proc/sys/kernel/random/boot_id");
  if (!boot) return boot.Error();
  while (boot->ends_with('\n')) boot->pop_back();
  identity.boot = *boot;
  std::array<char, PATH_MAX> space{};
  const ssize_t length = ::readlink("/proc/self/ns/pid", space.data(), space.size());
  if (length < 0) return Failure{"readlink", "/proc/self/ns/pid", errno};
  identity.space.assign(space.data(), static_cast<std::size_t>(length));
  utsname name{};
  if (::uname(&name) != 0) return Failure{"uname", {}, errno};
  identity.machine = name.nodename;
  std::ranges::replace_if(
      identity.machine, [](char one) { return one == ' ' || one == '\n'; }, '_');
  return identity;
}

// FNV-1a, so that a name stays short and plain.
std::string MarkOf(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (const char character : text)
    hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
  std::string mark;
  for (const int shift : {24, 16, 8, 0}) AppendHex(mark, static_cast<unsigned char>(hash >> shift));
  return mark;
}

std::string PlaceMark(const ProcessIdentity& identity) {
  return MarkOf(identity.space + " " + identity.machine);
}

Expected<ProcessIdentity> LookUpIdentity(std::uint32_t id) {
  auto identity = CommonIdentity();
  if (!identity) return identity;
  const auto start = StartOf(id);
  if (!start) return start.Error();
  identity->id = id;
  identity->start = *start;
  return identity;
}

// Looked up once: each prefix and each temporary file names this process. A fork has another id.
Expected<ProcessIdentity> OwnIdentity() {
  static std::mutex mutex;
  static std::optional<ProcessIdentity> known;
  const std::scoped_lock lock(mutex);
  if (known && known->id == CurrentProcessId()) return *known;
  auto identity = LookUpIdentity(CurrentProcessId());
  if (identity) known = *identity;
  return identity;
}

bool RunsSince(std::uint32_t id, std::uint64_t started) {
  const auto start = StartOf(id);
  if (start) return *start == started;
  return start.Error().error != ENOENT && start.Error().error != ESRCH;
}

}  // namespace

Expected<ProcessIdentity> IdentityOfProcess(std::uint32_t id) {
  if (id == CurrentProcessId()) return OwnIdentity();
  return LookUpIdentity(id);
}

bool MayBeAlive(const ProcessIdentity& process) {
  const auto here = CommonIdentity();
  if (!here || here->machine != process.machine) return true;
  if (here->boot != process.boot) return false;
  if (here->space != process.space) return true;
  return RunsSince(process.id, process.start);
}

std::string OwnTag() {
  std::string tag = std::to_string(CurrentProcessId());
  if (const auto own = OwnIdentity())
    tag += "." + std::to_string(own->start) + "." + MarkOf(own->boot) + "." + PlaceMark(*own);
  return tag;
}

TagOwner OwnerOfTag(std::string_view tag) {
  const auto fields = FieldsOf(tag, '.');
  std::uint32_t id = 0;
  std::uint64_t start = 0;
  if (fields.size() != 4 || !ReadNumber(fields[0], id) || !ReadNumber(fields[1], start))
    return TagOwner::Unknown;
  const auto here = CommonIdentity();
  if (!here || fields[3] != PlaceMark(*here)) return TagOwner::MayLive;
  const bool lives = fields[2] == MarkOf(here->boot) && RunsSince(id, start);
  return lives ? TagOwner::MayLive : TagOwner::Ended;
}

std::string OwnTemporaryName() {
  static std::atomic<unsigned> next{0};
  return std::string(TemporaryStart) + OwnTag() + "-" +
         std::to_string(next.fetch_add(1, std::memory_order_relaxed)) + std::string(TemporaryEnd);
}

bool IsAbandonedTemporaryName(std::string_view name) {
  const std::size_t dash = name.rfind('-');
  return name.starts_with(TemporaryStart) && name.ends_with(TemporaryEnd) &&
         dash >= TemporaryStart.size() &&
         OwnerOfTag(name.substr(TemporaryStart.size(), dash - TemporaryStart.size())) ==
             TagOwner::Ended;
}

std::string FormatIdentity(const ProcessIdentity& process) {
  return std::to_string(process.id) + " " + std::to_string(process.start) + " " + process.boot +
         " " + process.space + " " + process.machine;
}

std::optional<ProcessIdentity> ParseIdentity(std::string_view line) {
  const auto fields = FieldsOf(line);
  ProcessIdentity identity;
  if (fields.size() != 5 || !ReadNumber(fields[0], identity.id) ||
      !ReadNumber(fields[1], identity.start) || identity.id == 0)
    return std::nullopt;
  // No machine has an empty part, and one at the end would not come back.
  if (std::ranges::any_of(fields, &std::string_view::empty)) return std::nullopt;
  identity.boot = fields[2];
  identity.space = fields[3];
  identity.machine = fields[4];
  return identity;
}

Expected<void> WriteOwner(const std::string& directory, const ProcessIdentity& owner) {
  const std::string path = directory + "/" + std::string(OwnerFileName);
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  const auto file = TakeDescriptor(::open(path.c_str(), flags, 0600), "open", path);
  if (!file) return file.Error();
  const auto written = WriteAll(file->Get(), FormatIdentity(owner) + "\n");
  if (written) return {};
  ::unlink(path.c_str());
  return FailureAt(path, written.Error());
}

// A link could name another directory's owner, and a pipe would be waited for.
Expected<ProcessIdentity> ReadOwner(const std::string& directory) {
  const std::string path = directory + "/" + std::string(OwnerFileName);
  const auto file = TakeDescriptor(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY), "open",
      path);
  if (!file) return file.Error();
  struct stat state {};
  if (::fstat(file->Get(), &state) != 0) return Failure{"fstat", path, errno};
  if (!S_ISREG(state.st_mode)) return Failure{"read", path, EINVAL, "it is no file"};
  std::array<char, OwnerFileLimit> bytes{};
  const auto count = ReadSome(file->Get(), bytes.data(), bytes.size());
  if (!count) return FailureAt(path, count.Error());
  const std::string_view line(bytes.data(), *count);
  if (line.ends_with('\n'))
    if (auto owner = ParseIdentity(line.substr(0, line.size() - 1))) return *owner;
  return Failure{"read", path, EINVAL, "it names no process"};
}

Expected<void> RemoveOwner(const std::string& directory) {
  const std::string path = directory + "/" + std::string(OwnerFileName);
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return Failure{"unlink", path, errno};
  return {};
}

}  // namespace rastrel::os
