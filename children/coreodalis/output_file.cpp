#include "children/coreodalis/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::odalis {
namespace {

constexpr unsigned HighestNumber = 1'000'000;
constexpr int HiddenNameTries = 100;

/// A name in the directory that says whose it is, so that a sweep knows it for a leftover.
std::string HiddenPath(const std::string& directory) {
  return directory + "/" + os::OwnTemporaryName();
}

bool IsWithoutAnonymousFiles(int error) {
  return error == EOPNOTSUPP || error == EISDIR || error == EINVAL || error == ENOENT;
}

bool IsWithoutLinks(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

OutputFile::Naming NamingOf(int result) {
  if (result == 0) return OutputFile::Naming::Named;
  return errno == EEXIST ? OutputFile::Naming::Taken : OutputFile::Naming::Failed;
}

/// Links a file that has no name. The way through /proc needs no privilege, the other no /proc.
int LinkAnonymous(int descriptor, const std::string& path) {
  const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
  if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) return 0;
  if (errno != ENOENT) return -1;
  return ::linkat(descriptor, "", AT_FDCWD, path.c_str(), AT_EMPTY_PATH);
}

/// Renames without replacing, on file systems that have no links.
int RenameHidden(const std::string& hidden, const std::string& path) {
  if (::renameat2(AT_FDCWD, hidden.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0)
    return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  // The name is taken with an empty file first, which nobody else can do at the same time.
  const os::FileDescriptor place(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!place.IsOpen()) return -1;
  if (::rename(hidden.c_str(), path.c_str()) == 0) return 0;
  const int error = errno;
  ::unlink(path.c_str());
  errno = error;
  return -1;
}

bool HasAccessList(int descriptor) {
  return ::fgetxattr(descriptor, "system.posix_acl_access", nullptr, 0) >= 0;
}

// A link to one is none.
bool IsDirectoryItself(const std::string& path) {
  struct stat state {};
  return ::lstat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

/// New names are on the disk once their directories are. Not every directory that may be written to
/// may be read.
Expected<void> FlushNames(std::span<const Publisher::Item> items) {
  std::string last;
  for (const Publisher::Item& item : items) {
    const std::string directory = DirectoryOf(item.path);
    if (directory == last) continue;
    last = directory;
    auto flushed = os::FlushNamesIn(directory);
    if (!flushed && flushed.Error().what != "open") return flushed;
  }
  return {};
}

// Or a link to one. Leaves errno.
bool IsDirectory(const std::string& path) {
  const int error = errno;
  struct stat state {};
  const bool is = ::stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
  errno = error;
  return is;
}

Expected<void> MakeDirectories(const std::string& directory) {
  const mode_t mode = directory.starts_with(os::DataRoot() + "/") ? 0700 : 0777;
  for (std::size_t end = 0; end != std::string::npos;) {
    end = directory.find('/', end + 1);
    const std::string element = directory.substr(0, end);
    if (::mkdir(element.c_str(), mode) == 0 || IsDirectory(element)) continue;
    return Failure{"create directory", element, errno == EEXIST ? ENOTDIR : errno};
  }
  return {};
}

}  // namespace

OutputFile::OutputFile(os::FileDescriptor descriptor, std::string directory, std::string hidden,
                       interpreter::Guardian& guardian)
    : m_Descriptor(std::move(descriptor)),
      m_Directory(std::move(directory)),
      m_Hidden(std::move(hidden)),
      m_Guardian(&guardian) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_Descriptor(std::move(other.m_Descriptor)),
      m_FlushAhead(other.m_FlushAhead),
      m_Directory(std::move(other.m_Directory)),
      m_Hidden(std::exchange(other.m_Hidden, {})),
      m_HidesReplaced(other.m_HidesReplaced),
      m_HasReplaced(other.m_HasReplaced),
      m_Guardian(other.m_Guardian) {}

OutputFile::~OutputFile() {
  if (m_Hidden.empty()) return;
  ::unlink(m_Hidden.c_str());
  static_cast<void>(m_Guardian->Release(m_Hidden));
}

Expected<OutputFile> OutputFile::Create(const std::string& directory,
                                        interpreter::Guardian& guardian, unsigned permissions,
                                        bool allowAnonymous) {
  if (auto made = MakeDirectories(directory); !made) return made.Error();
  if (allowAnonymous) {
    os::FileDescriptor anonymous(
        ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, permissions));
    if (anonymous.IsOpen()) return OutputFile(std::move(anonymous), directory, {}, guardian);
    if (!IsWithoutAnonymousFiles(errno)) return Failure{"create a file in", directory, errno};
  }
  for (int attempt = 0; attempt < HiddenNameTries; ++attempt) {
    const std::string hidden = HiddenPath(directory);
    if (!guardian.Guard(hidden)) return FailureOf("the guardian process is gone");
    os::FileDescriptor file(
        ::open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, permissions));
    if (file.IsOpen()) return OutputFile(std::move(file), directory, hidden, guardian);
    const int error = errno;
    static_cast<void>(guardian.Release(hidden));
    if (error != EEXIST) return Failure{"create", hidden, error};
  }
  return FailureOf("no free name for a file in '" + directory + "'");
}

std::optional<OutputFile> OutputFile::Take(int descriptor, const std::string& directory,
                                           interpreter::Guardian& guardian, unsigned permissions) {
  // As a new file there would be. It goes without having had a name.
  const auto made = Create(directory, guardian, permissions);
  if (!made) return std::nullopt;
  struct stat fresh {};
  struct stat given {};
  if (::fstat(made->Descriptor(), &fresh) != 0 || ::fstat(descriptor, &given) != 0)
    return std::nullopt;
  if (fresh.st_dev != given.st_dev || fresh.st_uid != given.st_uid ||
      fresh.st_gid != given.st_gid || given.st_nlink != 1 || HasAccessList(made->Descriptor()))
    return std::nullopt;
  os::FileDescriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
  const std::string hidden = HiddenPath(directory);
  if (!own.IsOpen() || !guardian.Guard(hidden)) return std::nullopt;
  if (LinkAnonymous(own.Get(), hidden) != 0) {
    static_cast<void>(guardian.Release(hidden));
    return std::nullopt;
  }
  OutputFile taken(std::move(own), directory, hidden, guardian);
  if (::fchmod(taken.Descriptor(), fresh.st_mode & 07777) != 0) return std::nullopt;
  return taken;
}

void OutputFile::BeginFlush() {
  struct stat state {};
  if (::fstat(m_Descriptor.Get(), &state) != 0) return;
  m_FlushAhead.Begin(m_Descriptor.Get(), static_cast<std::uint64_t>(state.st_size));
}

Expected<void> OutputFile::Flush() {
  // A file system that can't be asked has no answer.
  if (::fdatasync(m_Descriptor.Get()) == 0 || errno == EINVAL || errno == ENOSYS) return {};
  return Failure{"flush a file in", m_Directory, errno};
}

OutputFile::Naming OutputFile::Name(const std::string& path) {
  if (m_Hidden.empty()) return NamingOf(LinkAnonymous(m_Descriptor.Get(), path));
  if (::link(m_Hidden.c_str(), path.c_str()) == 0) return Naming::Named;
  if (!IsWithoutLinks(errno)) return NamingOf(-1);
  return NamingOf(RenameHidden(m_Hidden, path));
}

void OutputFile::Unname(const std::string& path) {
  if (m_Hidden.empty()) {
    // An anonymous file that had a name and lost it can't be given one again.
    const std::string hidden = HiddenPath(m_Directory);
    if (m_Guardian->Guard(hidden) && ::rename(path.c_str(), hidden.c_str()) == 0) {
      m_Hidden = hidden;
    } else {
      ::unlink(path.c_str());
    }
    return;
  }
  // Without links the hidden name was given up for the other one, and is the only one again.
  if (::access(m_Hidden.c_str(), F_OK) == 0) {
    ::unlink(path.c_str());
  } else {
    static_cast<void>(::rename(path.c_str(), m_Hidden.c_str()));
  }
}

OutputFile::Naming OutputFile::NameInPlace(const std::string& path, bool keepsReplaced) {
  if (m_Hidden.empty()) {
    const std::string hidden = HiddenPath(m_Directory);
    if (!m_Guardian->Guard(hidden)) {
      errno = ESRCH;
      return Naming::Failed;
    }
    m_Hidden = hidden;
    if (LinkAnonymous(m_Descriptor.Get(), hidden) != 0) return Naming::Failed;
  }
  if (RenameHidden(m_Hidden, path) == 0) return Naming::Named;
  if (errno != EEXIST) return Naming::Failed;
  if (IsDirectoryItself(path)) {
    errno = EISDIR;
    return Naming::Failed;
  }
  const char* const hidden = m_Hidden.c_str();
  if (keepsReplaced) {
    if (::renameat2(AT_FDCWD, hidden, AT_FDCWD, path.c_str(), RENAME_EXCHANGE) == 0) {
      m_HidesReplaced = true;
      return Naming::Named;
    }
    // On file systems that can't exchange two names the replaced file is lost.
    if (errno != EINVAL && errno != ENOSYS) return Naming::Failed;
  }
  if (::rename(hidden, path.c_str()) != 0) return Naming::Failed;
  m_HasReplaced = true;
  return Naming::Named;
}

void OutputFile::BringBack(const std::string& path) {
  if (m_HasReplaced) return;  // without the old file the new one stays, which is whole
  const char* const hidden = m_Hidden.c_str();
  if (m_HidesReplaced) {
    static_cast<void>(::renameat2(AT_FDCWD, hidden, AT_FDCWD, path.c_str(), RENAME_EXCHANGE));
    m_HidesReplaced = false;
  } else {
    static_cast<void>(::rename(path.c_str(), hidden));
  }
}

std::string NumberedPath(const std::string& path, unsigned number) {
  return number < 2 ? path : os::NumberedPath(path, number);
}

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

Expected<std::vector<std::string>> Publisher::Replace(std::span<const Item> items) {
  std::vector<std::string> named;
  for (const Item& item : items) {
    if (item.file->NameInPlace(item.path, items.size() > 1) == OutputFile::Naming::Named) {
      named.push_back(item.path);
      continue;
    }
    const int error = errno;
    for (std::size_t i = named.size(); i-- > 0;) items[i].file->BringBack(items[i].path);
    return Failure{"name", item.path, error};
  }
  if (const auto flushed = FlushNames(items); !flushed) return flushed.Error();
  return named;
}

Expected<OutputFile::Naming> Publisher::NameAll(std::span<const Item> items, unsigned number) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::string path = NumberedPath(items[i].path, number);
    const OutputFile::Naming naming = items[i].file->Name(path);
    if (naming == OutputFile::Naming::Named) continue;
    const int error = errno;
    for (const Item& earlier : items.first(i)) {
      earlier.file->Unname(NumberedPath(earlier.path, number));
    }
    if (naming == OutputFile::Naming::Failed) return Failure{"name", path, error};
    return naming;
  }
  return OutputFile::Naming::Named;
}

Expected<std::vector<std::string>> Publisher::Publish(std::span<const Item> items, bool overwrite,
                                                      const Named& hasNames) {
  if (items.empty()) return std::vector<std::string>{};
  if (overwrite) return Replace(items);
  unsigned& number = m_NextNumber.try_emplace(items.front().path, 1).first->second;
  for (; number <= HighestNumber; ++number) {
    auto naming = NameAll(items, number);
    if (!naming) return naming.Error();
    if (*naming == OutputFile::Naming::Taken) continue;
    std::vector<std::string> named;
    for (const Item& item : items) named.push_back(NumberedPath(item.path, number));
    ++number;
    if (hasNames) hasNames(named);
    if (const auto flushed = FlushNames(items); !flushed) return flushed.Error();
    return named;
  }
  return FailureOf("no free number for '" + items.front().path + "'");
}

}  // namespace rastrel::odalis
