#pragma once

/// Copying of single files by native name, below open directories: what CopyFileOver and
/// CopyTreeInto share.
namespace rastrel::os {

/// A name below an open directory.
struct FileAt {
  int directory;     ///< open descriptor, or AT_FDCWD
  const char* name;  ///< native bytes, relative to it
};

/// What becomes of a source that is a link.
enum class LinksInSource { Followed, Refused };

/// Copies a regular file's content, permission bits and modification time over the target, which is
/// made if it is missing. A target that is the source itself is a failure and stays whole; any
/// other failure leaves no half target behind. Returns null, or the call that failed ("open"
/// concerns the source), with errno set.
[[nodiscard]] const char* CopyFileAt(FileAt source, FileAt target, LinksInSource links);

}  // namespace rastrel::os
