#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/flush_ahead.h"

/// Files that appear in their directory only when they are whole.
namespace rastrel::odalis {

/// A file that is being written and has no name yet, or, where the file system knows no such files,
/// a hidden one that the guardian removes if the engine is ended.
class OutputFile {
 public:
  /// Makes one in the directory (native path), which is made with its parents if missing: private
  /// below the data root, else as the umask has it. `permissions` are the file's, less the umask.
  /// `allowAnonymous`: try the first form.
  [[nodiscard]] static Expected<OutputFile> Create(const std::string& directory,
                                                   interpreter::Guardian& guardian,
                                                   unsigned permissions,
                                                   bool allowAnonymous = true);
  /// The file that is open for reading as `descriptor`, in the directory as well, as if it had been
  /// made there: nothing where a new file would have another owner, group or access list, or where
  /// it can't have a name there, on another file system say. Its permissions become those of a new
  /// one, and its other names stay.
  [[nodiscard]] static std::optional<OutputFile> Take(int descriptor, const std::string& directory,
                                                      interpreter::Guardian& guardian,
                                                      unsigned permissions);
  ~OutputFile();
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&& other) = delete;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Open for reading, and for writing if it was made here; belongs to this object.
  [[nodiscard]] int Descriptor() const { return m_Descriptor.Get(); }

  /// Lets the system begin to write its buffers while more is added, so that Flush waits for the
  /// last of them alone. Costs a system call where a few megabytes have come since.
  void BeginFlush();
  /// Has the system write its buffers; the moment at which a full disk shows.
  [[nodiscard]] Expected<void> Flush();

  /// The result of giving a name.
  enum class Naming { Named, Taken, Failed };
  /// Gives the file its name (a path in its directory), in one step, and never in another's place.
  /// Failed leaves errno.
  [[nodiscard]] Naming Name(const std::string& path);
  /// Takes the name that Name gave away again; the file is as it was before.
  void Unname(const std::string& path);
  /// As Name, but in the place of a file of that name, if there is one. With `keepsReplaced` that
  /// file lives on under the hidden name until this object ends. Failed leaves errno.
  [[nodiscard]] Naming NameInPlace(const std::string& path, bool keepsReplaced = false);
  /// Takes the name that NameInPlace gave away again, and brings the file back that was kept.
  void BringBack(const std::string& path);

 private:
  OutputFile(os::FileDescriptor descriptor, std::string directory, std::string hidden,
             interpreter::Guardian& guardian);

  os::FileDescriptor m_Descriptor;
  os::FlushAhead m_FlushAhead;
  std::string m_Directory;
  std::string m_Hidden;          ///< path of the hidden file; empty: it has no name
  bool m_HidesReplaced = false;  ///< the hidden file is the one that was replaced
  bool m_HasReplaced = false;    ///< a file was replaced for good
  interpreter::Guardian* m_Guardian;
};

/// Gives finished files their names, all or none (but for the machine's end between two of them).
class Publisher {
 public:
  struct Item {
    OutputFile* file;
    std::string path;
  };
  /// The paths that the files have in the end, in order. Unless `overwrite`, no file is replaced:
  /// where one of the names is taken, all get "-2" in front of the extension, then "-3" and so on.
  /// A failure leaves the files that were there. The names are on the disk when this returns.
  ///
  /// `named` is called with the paths once all files have names that no other file had, and before
  /// the names are on the disk.
  using Named = std::function<void(const std::vector<std::string>& paths)>;
  [[nodiscard]] Expected<std::vector<std::string>> Publish(std::span<const Item> items,
                                                           bool overwrite, const Named& named = {});

 private:
  [[nodiscard]] static Expected<std::vector<std::string>> Replace(std::span<const Item> items);
  /// Named or Taken; if it is not Named, no file has a name of it.
  [[nodiscard]] static Expected<OutputFile::Naming> NameAll(std::span<const Item> items,
                                                            unsigned number);

  std::map<std::string, unsigned> m_NextNumber;  ///< by first path: where the last search ended
};

/// "a/b.tif" and 2 give "a/b-2.tif"; 1 gives the path as it is.
[[nodiscard]] std::string NumberedPath(const std::string& path, unsigned number);

/// The directory of a path, without closing separator but for the root.
[[nodiscard]] std::string DirectoryOf(const std::string& path);

}  // namespace rastrel::odalis
