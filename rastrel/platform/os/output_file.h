#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Files that a command makes for its user. Paths are native.
namespace rastrel::os {

/// Called with the path of a hidden file before it is made, for who has to remove it if this
/// process ends first, and with an empty one when it is gone.
using OnHiddenFile = std::function<void(const std::string& path)>;

/// The fate of an entry that has a new file's name already.
enum class Existing {
  Refused,   ///< it stays, and the new file is not made (EEXIST). A link counts, wherever it leads
  Replaced,  ///< the new file takes its place, and that of a link itself
  Followed,  ///< as Replaced, but a link is followed to its end. For names that the user gave
};

/// A file, or a directory with all in it, on its way to its name. Until Commit it has a hidden name
/// (OwnTemporaryName) in the directory of its place, and an entry of the name stays as it is:
///
///     Create or Take      .rastrel-4711.8812.0ef1a2b3.9c5d77aa-0.tmp
///     Commit              the file's content is on the disk, it gets its name in one step, and the
///                         name is on the disk
///     destruction         without Commit: the hidden entry goes; a taken one goes back
///
/// So a reader, and whoever comes after a crash, sees the old file or the new one, each whole. A
/// regular file that is replaced gives its permissions to the new one. With Followed a pipe, a
/// terminal or an open stream (/dev/stdout) is written to directly, since nothing can take its
/// place. Hidden entries that killed processes left in the directory go with the next Commit there.
/// Any thread, one at a time. Move-only.
///
/// A failure's `where` is the place, and never the hidden name.
class OutputFile {
 public:
  /// Makes an empty file for `target`, with mode 0666 less the umask. Fails if the place can't be
  /// had (see CheckPlace) or the disk takes no file.
  [[nodiscard]] static Expected<OutputFile> Create(const std::string& target, Existing existing,
                                                   const OnHiddenFile& onHidden = {});
  /// Takes a finished file or directory from elsewhere. On another file system it is copied, and
  /// the source stays. The source itself may not be a link. A directory takes the place of a link,
  /// and never that of the link's end.
  [[nodiscard]] static Expected<OutputFile> Take(const std::string& source,
                                                 const std::string& target, Existing existing,
                                                 const OnHiddenFile& onHidden = {});
  ~OutputFile();
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Appends to a file that Create made.
  [[nodiscard]] Expected<void> Write(std::string_view bytes);
  /// Appends the rest of an open file. The failure's `what` is "read" if that could not be read.
  [[nodiscard]] Expected<void> Append(int source);

  /// Gives the file its name. Fails as CheckPlace does if an entry came to have the name meanwhile.
  /// After a failure an old entry is in its place, and the file is as before Commit.
  [[nodiscard]] Expected<void> Commit();

  /// Gives several files their names, in order: all of them, or after a failure none, and then
  /// the replaced entries are back in their places.
  [[nodiscard]] static Expected<void> CommitAll(std::span<OutputFile> files);

 private:
  enum class State { Hidden, Named, Exchanged, Final, Direct };

  OutputFile(std::string target, Existing existing, OnHiddenFile onHidden);
  [[nodiscard]] Expected<void> CheckOwnPlace() const;
  [[nodiscard]] Expected<void> Prepare();
  [[nodiscard]] Expected<void> OpenDirect();
  [[nodiscard]] Expected<void> MakeHidden();
  [[nodiscard]] Expected<void> MoveHere(const std::string& source);
  [[nodiscard]] Expected<void> CopyHere(const std::string& source);
  [[nodiscard]] Expected<void> Flush();
  [[nodiscard]] Expected<void> Name(bool keepsReplaced);
  void TakeBack();
  [[nodiscard]] Expected<void> Finish();
  void ChooseHiddenName();
  void RemoveHidden();
  void Announce(const std::string& path) const;

  std::string m_Target;  // the end of links; empty if moved from
  Existing m_Existing;
  OnHiddenFile m_OnHidden;
  std::string m_Hidden;  // empty: there is no hidden entry
  std::string m_Origin;  // the taken file's path, if it was moved
  FileDescriptor m_File;
  bool m_IsDirectory = false;
  std::optional<unsigned> m_Permissions;  // of the file to replace
  State m_State = State::Hidden;
};

/// The path with a number before its extension: "a/b.tif" and 2 give "a/b-2.tif". A dot at a name's
/// beginning begins no extension.
[[nodiscard]] std::string NumberedPath(const std::string& path, unsigned number);

/// Whether a file could have this name: EEXIST if anything has it and it is not to be replaced,
/// EISDIR if a directory has it, and the system's error if its directory is not there or can't be
/// looked at. Makes nothing; for a refusal before long work.
[[nodiscard]] Expected<void> CheckPlace(const std::string& target, Existing existing);

}  // namespace rastrel::os
