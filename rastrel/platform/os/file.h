#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Single files and directories by library path (see path.h). Links are followed unless a line
/// says otherwise.
namespace rastrel::os {

/// True if an entry of that name exists, of any kind.
[[nodiscard]] bool Exists(std::wstring_view path);
/// True if it exists and is a directory.
[[nodiscard]] bool IsDirectory(std::wstring_view path);
/// The same with the reason: ENOENT, ENOTDIR, or why it can't be looked at.
[[nodiscard]] Expected<void> CheckDirectory(std::wstring_view path);
/// True if it exists and is a regular file.
[[nodiscard]] bool IsRegularFile(std::wstring_view path);
/// True if the name itself is a link, wherever it leads. A closing separator changes nothing.
[[nodiscard]] bool IsLink(std::wstring_view path);
/// True if it exists and this process may read it (`_waccess` mode 4). For the superuser too, a
/// file with no read bit at all counts as unreadable only if the kernel says so.
[[nodiscard]] bool IsReadable(std::wstring_view path);
/// Size in bytes of a regular file; 0 if it does not exist, is of another kind or can't be
/// examined.
[[nodiscard]] std::uint64_t FileSize(std::wstring_view path);

/// Distinguishes one state of a file from another.
struct FileStamp {
  std::uint64_t size = 0;     ///< bytes
  std::int64_t modified = 0;  ///< time of the last change, nanoseconds since 1970
  bool operator==(const FileStamp&) const = default;
};
[[nodiscard]] Expected<FileStamp> StampOf(std::wstring_view path);
/// When the entry itself, a link too, last changed: content, attributes or name, in nanoseconds
/// since 1970. Unlike the time of the content nobody can set it back.
[[nodiscard]] Expected<std::int64_t> LastChangeOf(std::wstring_view path);

/// Who may reach a file or directory that is made.
enum class Access {
  ByUmask,  ///< whoever the umask lets: 0666 or 0777 less it
  Private,  ///< this user alone, whatever the umask: 0600 or 0700
};

/// Creates one directory. `Failure` also if it exists (EEXIST).
[[nodiscard]] Expected<void> MakeDirectory(std::wstring_view path, Access access = Access::ByUmask);
/// Removes a file or link (never a directory).
[[nodiscard]] Expected<void> RemoveFile(std::wstring_view path);
/// Gives a file another name on the same file system, and replaces a file of that name. The
/// Failure's `where` is the target.
[[nodiscard]] Expected<void> RenameFile(std::wstring_view source, std::wstring_view target);

/// Whether the owner's write bit is off. `Failure` if the attributes can't be read.
[[nodiscard]] Expected<bool> IsReadOnly(std::wstring_view path);
/// Sets the owner's write bit, and nothing else.
[[nodiscard]] Expected<void> ClearReadOnly(std::wstring_view path);

/// The whole file. `Failure` also if it is larger than `limit` bytes (error EFBIG) or not a
/// regular file (EINVAL); never blocks on a pipe.
[[nodiscard]] Expected<std::string> ReadWholeFile(std::wstring_view path, std::uint64_t limit);
/// Replaces the file as a whole: a reader sees the old or the new content, never a part, even after
/// a crash. A file that was there gives its permissions to the new one unless that is private.
/// Missing parent directories are a failure.
[[nodiscard]] Expected<void> ReplaceFile(std::wstring_view path, std::string_view content,
                                         Access access = Access::ByUmask);

/// Opens for writing, created and truncated, close-on-exec, never one of the three standard
/// descriptors. `access` is that of a file that was not there.
[[nodiscard]] Expected<FileDescriptor> CreateForWriting(std::wstring_view path,
                                                        Access access = Access::ByUmask);
/// Opens for reading and writing, created and truncated, with mode 0600.
[[nodiscard]] Expected<FileDescriptor> CreateLog(std::wstring_view path);
/// Opens an existing file for writing at its start, with the same care, and keeps its content.
[[nodiscard]] Expected<FileDescriptor> OpenForWriting(std::wstring_view path);
/// Opens for reading, with the same care.
[[nodiscard]] Expected<FileDescriptor> OpenForReading(std::wstring_view path);
/// Writes all of it, going on after short writes and interruptions. The Failure has no `where`.
[[nodiscard]] Expected<void> WriteAll(int descriptor, std::string_view bytes);

/// Copies one regular file over `target`, content, permission bits and modification time. By a
/// reflink or in the kernel where the file system can. A private copy gets the owner's bits of the
/// source alone, and those to read and write.
[[nodiscard]] Expected<void> CopyFileOver(std::wstring_view source, std::wstring_view target,
                                          Access access = Access::ByUmask);

/// Writes text to the standard error stream in one call; failures are ignored. A file or a pipe
/// gets the bytes unchanged; on a terminal they are cleaned but for line ends and tabs
/// (CleanLines).
void WriteToStandardError(std::string_view bytes);

}  // namespace rastrel::os
