#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "cli/sheet/package.h"
#include "rastrel/platform/os/growing_file.h"

namespace rastrel::cli::sheet {

/// The parts of a package that are needed, as files below a folder of this process's own, each at
/// the place that its name tells.
class Parts {
 public:
  /// `folder` is there and empty; a native path.
  Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress);
  ~Parts();
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  /// Whether the package has the part.
  [[nodiscard]] bool Has(const std::string& part) const { return !m_Package->Find(part).empty(); }
  /// Native path of the part's file, which is unpacked at the first call. Throws
  /// CommandError(BadInput) if the package has no such part.
  std::string Fetch(const std::string& part);
  /// Begins to unpack parts in this order on a thread of its own, and returns at once. Who reads
  /// their files through the XML layer waits for what is still to come. What the package lacks, and
  /// what is there already, is passed over. The progress is told on that thread.
  void FetchAhead(const std::vector<std::string>& parts);
  /// Waits until they are unpacked. Throws what kept one from it; its readers were told that its
  /// file can't be read.
  void Settle();
  /// Begins to remove the part's file, which nobody will ask for again: giving back the pages of a
  /// large one takes the system a while. Settles first.
  void Discard(const std::string& part);
  /// Native path that the part has or would have.
  [[nodiscard]] std::string PathOf(const std::string& part) const { return m_Folder + "/" + part; }
  [[nodiscard]] const std::string& Folder() const { return m_Folder; }
  /// Of the package, for messages.
  [[nodiscard]] const std::string& Name() const { return m_Package->Name(); }

  /// Ends the command since a part is no XML that can be read: with what the XML layer found, or
  /// with `otherwise` if it found nothing.
  [[noreturn]] void RefuseXml(const std::string& part, const std::string& otherwise) const;
  /// The same with words of the caller's.
  [[noreturn]] void Refuse(const std::string& part, const std::string& why) const;

 private:
  std::unique_ptr<Package> m_Package;
  std::string m_Folder;
  struct Ahead {
    std::string part;
    std::unique_ptr<os::GrowingFile> file;
  };
  void MakeFoldersFor(const std::string& part) const;
  void UnpackAhead();
  void Join();

  UnpackProgress m_Progress;
  std::vector<Ahead> m_Ahead;
  std::exception_ptr m_Failure;  // of the thread
  std::atomic<bool> m_Stops = false;
  std::thread m_Thread;
};

/// What the XML layer found wrong last, as "3:17: why"; empty if nothing. Forgets it.
[[nodiscard]] std::string TakeXmlWords();
/// The same with the file's name in front, "xl/styles.xml:3:17: why": the part's, if it lies below
/// `folder`, a native path.
[[nodiscard]] std::string TakeXmlWords(const std::string& folder);

}  // namespace rastrel::cli::sheet
