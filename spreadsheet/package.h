#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Packages of spreadsheets: a zip file or a folder. Their parts are unpacked or copied one by one,
/// so that the others cost nothing.
namespace rastrel::spreadsheet {

/// The limits of one package. Beyond any of these it is refused, and the failure names the entry.
struct PackageLimits {
  std::uint64_t entries = 10'000;              ///< of the whole package
  std::uint64_t directoryBytes = 16ULL << 20;  ///< of the list of its entries
  std::uint64_t totalBytes = 4ULL << 30;       ///< of all that is unpacked
  std::uint64_t ratio = 250;                   ///< unpacked to packed, of one entry ...
  std::uint64_t ratioFromBytes = 64ULL << 20;  ///< ... that unpacks to more than this
};

/// How far the unpacking is, in bytes of the current part; `whole` is the size by its header.
/// Called on the thread that unpacks. May throw, which ends the unpacking.
using UnpackProgress = std::function<void(std::uint64_t done, std::uint64_t whole)>;

/// A package whose entries have been checked. Every failure throws an Error, whose text begins with
/// the package's name where the package is at fault.
class Package {
 public:
  virtual ~Package() = default;
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;

  /// Name of the entry that is the part: the same name, or else the only one that differs
  /// in the case of ASCII letters alone, as the Open Packaging Conventions want. Empty if there is
  /// none.
  [[nodiscard]] virtual std::string Find(const std::string& part) const = 0;
  /// Bytes of the part, as far as is known without unpacking it. REQUIRES: it is there.
  [[nodiscard]] virtual std::uint64_t SizeOf(const std::string& part) const = 0;
  /// Writes the part to a file that is made new, in 64 KiB pieces. REQUIRES: it is there.
  virtual void Unpack(const std::string& part, const std::string& target,
                      const UnpackProgress& progress) = 0;
  /// For messages.
  [[nodiscard]] const std::string& Name() const { return m_Name; }

 protected:
  explicit Package(std::string name) : m_Name(std::move(name)) {}
  [[noreturn]] void Refuse(const std::string& why) const;
  [[noreturn]] void RefuseEntry(const std::string& entry, const std::string& why) const;

 private:
  std::string m_Name;
};

/// Opens a zip file by its native path. Throws an Error, with the failure of ZipSupport() if libzip
/// can't be used. All its entries are checked, and any of them that leads out of the package, is a
/// link, a device or encrypted, or has another's name is refused.
[[nodiscard]] std::unique_ptr<Package> OpenZipPackage(const std::string& path,
                                                      const PackageLimits& limits = {});
/// Opens a folder that holds an unpacked package. Links in it are not followed.
[[nodiscard]] std::unique_ptr<Package> OpenFolderPackage(const std::string& path,
                                                         const PackageLimits& limits = {});

}  // namespace rastrel::spreadsheet
