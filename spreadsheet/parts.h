#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/growing_file.h"
#include "spreadsheet/package.h"

namespace rastrel::spreadsheet {

/// The parts of a package that are needed, as files below a folder of this process's own, each at
/// the path of its name.
class Parts {
 public:
  /// `folder` is there and empty; a native path.
  Parts(std::unique_ptr<Package> package, std::string folder, UnpackProgress progress);
  ~Parts();
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  /// Whether the package has the part. Throws an Error if it is a link.
  [[nodiscard]] bool Has(const std::string& part) const { return !m_Package->Find(part).empty(); }
  /// Native path of the part's file, which is unpacked at the first call. Fails if the package has
  /// no such part, or can't unpack it.
  [[nodiscard]] Expected<std::string> Fetch(const std::string& part);
  /// Begins to unpack parts in this order on a thread of its own, and returns at once. A reader of
  /// their files through the XML layer waits for the bytes still to come. They are to be read in
  /// this order: where a reader waits for one of them, the rest of those before it is not unpacked
  /// any more. Parts that the package lacks, and files already made, are skipped. Progress is
  /// reported on that thread. Settles first.
  [[nodiscard]] Expected<void> FetchAhead(const std::vector<std::string>& parts);
  /// Waits until they are unpacked. Fails with the reason of the first one that could not be; its
  /// readers found only that its file can't be read. A failure is returned once.
  [[nodiscard]] Expected<void> Settle();
  /// The same, for a caller that will read no more: of a part larger than WholeBytes the rest is
  /// not unpacked. A smaller one is, so that a damaged one is always found to be so. No part may be
  /// fetched or read after that.
  [[nodiscard]] Expected<void> Stop();
  static constexpr std::uint64_t WholeBytes = 64ULL << 20;
  /// Begins to remove the part's file, which nobody will ask for again: giving back the pages of a
  /// large one takes the system a while. Stops first, and fails as that does.
  [[nodiscard]] Expected<void> Discard(const std::string& part);
  /// Native path that the part has or would have.
  [[nodiscard]] std::string PathOf(const std::string& part) const { return m_Folder + "/" + part; }
  [[nodiscard]] const std::string& Folder() const { return m_Folder; }
  /// Of the package, for messages.
  [[nodiscard]] const std::string& Name() const { return m_Package->Name(); }

  /// Throws an Error since a part is no readable XML: with the place and the reason of the XML
  /// layer, or with `otherwise` if it reported none.
  [[noreturn]] void RefuseXml(const std::string& part, const std::string& otherwise) const;
  /// The same with the caller's reason.
  [[noreturn]] void Refuse(const std::string& part, const std::string& why) const;

 private:
  std::unique_ptr<Package> m_Package;
  std::string m_Folder;
  struct Ahead {
    std::string part;
    std::unique_ptr<os::GrowingFile> file;
  };
  void MakeFoldersFor(const std::string& part) const;
  // How much of the parts is still wanted.
  enum class Demand { All, SmallParts, Nothing };
  void UnpackAhead();
  void UnpackOne(std::size_t index);
  [[nodiscard]] bool IsWanted(std::size_t index, std::uint64_t whole) const;
  void Join();
  void ThrowFailure();

  UnpackProgress m_Progress;
  std::vector<Ahead> m_Ahead;
  std::exception_ptr m_Failure;  // of the thread
  std::atomic<Demand> m_Demand = Demand::All;
  std::thread m_Thread;
};

}  // namespace rastrel::spreadsheet
