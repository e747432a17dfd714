// Packages in zip files, through libzip.

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <unordered_map>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "spreadsheet/error.h"
#include "spreadsheet/package.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/zip_directory.h"
#include "spreadsheet/zip_library.h"

namespace rastrel::spreadsheet {
namespace {

constexpr std::size_t PieceSize = 64 * 1024;
// Bytes that an entry takes besides its data and its name, twice: in front of the data, and in the
// list at the end.
constexpr std::uint64_t LocalHeaderSize = 30;
constexpr std::uint64_t ListedHeaderSize = 46;
// Kinds of files in the upper half of the attributes of entries that were made on such systems.
constexpr unsigned UnixSystem = 3;
constexpr unsigned AppleSystem = 19;
constexpr unsigned KindMask = 0170000;
constexpr unsigned LinkKind = 0120000;
constexpr unsigned FolderKind = 0040000;
constexpr unsigned FileKind = 0100000;

struct Entry {
  zip_uint64_t index = 0;
  std::string name;
  std::uint64_t size = 0;    // as its header says
  std::uint64_t packed = 0;  // bytes in the file
};

std::string Lower(std::string name) {
  for (char& letter : name)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + 32);
  return name;
}

std::string Count(std::uint64_t number) { return std::to_string(number); }

const ZipLibrary& BoundLibrary() {
  const auto& library = ZipLibrary::Instance();
  if (!library) throw Error(library.Error());
  return *library;
}

class ZipPackage : public Package {
 public:
  ZipPackage(const std::string& path, const PackageLimits& limits)
      : Package(path), m_Zip(BoundLibrary()), m_Limits(limits), m_Left(limits.totalBytes) {
    CheckDirectory(path);
    Open(path);
    try {
      ReadEntries();
    } catch (...) {
      m_Zip.discard(m_Archive);
      throw;
    }
  }
  ~ZipPackage() override { m_Zip.discard(m_Archive); }
  ZipPackage(const ZipPackage&) = delete;
  ZipPackage& operator=(const ZipPackage&) = delete;

  [[nodiscard]] std::string Find(const std::string& part) const override {
    const Entry* entry = EntryOf(part);
    return entry == nullptr ? std::string() : entry->name;
  }
  [[nodiscard]] std::uint64_t SizeOf(const std::string& part) const override {
    const Entry* entry = EntryOf(part);
    return entry == nullptr ? 0 : entry->size;
  }
  void Unpack(const std::string& part, const std::string& target,
              const UnpackProgress& progress) override;

 private:
  // The library holds the whole list in memory, so that its size is looked at first.
  void CheckDirectory(const std::string& path) {
    std::error_code error;
    m_FileSize = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file) Refuse("it can't be read");
    const std::uint64_t tailSize = std::min<std::uint64_t>(m_FileSize, ZipTailSize);
    std::string tail(tailSize, '\0');
    file.seekg(static_cast<std::streamoff>(m_FileSize - tailSize));
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    const auto claim = FindZipDirectory(tail);
    if (!claim) Refuse("it is no whole zip file: the list of its entries is missing");
    if (claim->entries > m_Limits.entries)
      Refuse("it has " + Count(claim->entries) + " entries, and the limit is " +
             Count(m_Limits.entries));
    if (claim->bytes > m_Limits.directoryBytes)
      Refuse("the list of its entries has " + Count(claim->bytes) + " bytes, and the limit is " +
             Count(m_Limits.directoryBytes));
  }

  void Open(const std::string& path) {
    int code = 0;
    m_Archive = m_Zip.open(path.c_str(), ZIP_RDONLY, &code);
    if (m_Archive != nullptr) return;
    zip_error_t error;
    m_Zip.errorInit(&error, code);
    const std::string words = m_Zip.errorText(&error);
    m_Zip.errorEnd(&error);
    Refuse("it is no sound zip file: " + words);
  }

  void ReadEntries() {
    const zip_int64_t count = m_Zip.countEntries(m_Archive, ZIP_FL_UNCHANGED);
    if (static_cast<std::uint64_t>(std::max<zip_int64_t>(count, 0)) > m_Limits.entries)
      Refuse("it has " + std::to_string(count) + " entries, and the limit is " +
             Count(m_Limits.entries));
    std::uint64_t taken = 0;
    for (zip_int64_t index = 0; index < count; ++index) {
      Entry entry = ReadEntry(static_cast<zip_uint64_t>(index));
      taken += LocalHeaderSize + ListedHeaderSize + 2 * entry.name.size() + entry.packed;
      if (taken > m_FileSize)
        RefuseEntry(entry.name, "it overlaps others: up to it they would take " + Count(taken) +
                                    " bytes, and the file has " + Count(m_FileSize));
      const auto [known, isNew] = m_Entries.emplace(entry.name, entry);
      if (!isNew) RefuseEntry(entry.name, "another entry has the same name");
      const auto [other, isFirst] = m_ByLowerName.emplace(Lower(entry.name), &known->second);
      if (!isFirst) other->second = nullptr;
    }
  }

  Entry ReadEntry(zip_uint64_t index) {
    zip_stat_t stat;
    m_Zip.statInit(&stat);
    if (m_Zip.statEntry(m_Archive, index, ZIP_FL_UNCHANGED | ZIP_FL_ENC_RAW, &stat) != 0)
      Refuse(std::string("its list of entries is damaged: ") +
             m_Zip.errorText(m_Zip.errorOf(m_Archive)));
    constexpr zip_uint64_t needed = ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE |
                                    ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    if ((stat.valid & needed) != needed) Refuse("its list of entries is incomplete");
    Entry entry{index, stat.name, stat.size, stat.comp_size};
    CheckName(entry);
    if (stat.encryption_method != ZIP_EM_NONE) RefuseEntry(entry.name, "it is encrypted");
    if (entry.packed > m_FileSize)
      RefuseEntry(entry.name, "it would take " + Count(entry.packed) + " bytes, and the file has " +
                                  Count(m_FileSize));
    if (stat.comp_method != ZIP_CM_STORE && stat.comp_method != ZIP_CM_DEFLATE)
      RefuseEntry(entry.name, "it is packed by method " + std::to_string(stat.comp_method) +
                                  ", which packages don't have");
    return entry;
  }

  void CheckName(const Entry& entry) {
    const std::string why = WhyBadName(entry.name);
    if (!why.empty()) RefuseEntry(entry.name, why);
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (m_Zip.attributes(m_Archive, entry.index, ZIP_FL_UNCHANGED, &system, &attributes) != 0)
      Refuse("its list of entries is damaged");
    if (system != UnixSystem && system != AppleSystem) return;
    const unsigned kind = attributes >> 16 & KindMask;
    if (kind == LinkKind) RefuseEntry(entry.name, "it is a link");
    if (kind != 0 && kind != FileKind && kind != FolderKind)
      RefuseEntry(entry.name, "it is a device, a pipe or a socket");
  }

  [[nodiscard]] const Entry* EntryOf(const std::string& part) const {
    if (const auto found = m_Entries.find(part); found != m_Entries.end()) return &found->second;
    const auto found = m_ByLowerName.find(Lower(part));
    return found == m_ByLowerName.end() ? nullptr : found->second;
  }

  void CheckSize(const Entry& entry, std::uint64_t size) const {
    if (size > m_Left)
      RefuseEntry(entry.name, "with it the parts unpack to more than " +
                                  Count(m_Limits.totalBytes) + " bytes, which is the limit");
    const std::uint64_t packed = std::max<std::uint64_t>(entry.packed, 1);
    if (size > m_Limits.ratioFromBytes && size / m_Limits.ratio > packed)
      RefuseEntry(entry.name, "it unpacks to more than " + Count(m_Limits.ratio) + " times its " +
                                  Count(entry.packed) + " bytes, which is the limit");
  }

  const ZipLibrary& m_Zip;
  PackageLimits m_Limits;
  std::uint64_t m_Left;  // bytes that may still be unpacked
  std::uint64_t m_FileSize = 0;
  zip_t* m_Archive = nullptr;
  std::unordered_map<std::string, Entry> m_Entries;
  std::unordered_map<std::string, const Entry*> m_ByLowerName;  // null if several differ in case
};

void ZipPackage::Unpack(const std::string& part, const std::string& target,
                        const UnpackProgress& progress) {
  const Entry& entry = *EntryOf(part);
  CheckSize(entry, entry.size);
  const auto close = [this](zip_file_t* file) { m_Zip.closeEntry(file); };
  const std::unique_ptr<zip_file_t, decltype(close)> file(
      m_Zip.openEntry(m_Archive, entry.index, ZIP_FL_UNCHANGED), close);
  if (!file) RefuseEntry(entry.name, m_Zip.errorText(m_Zip.errorOf(m_Archive)));
  const auto output = os::CreateForWriting(os::FromNative(target));
  if (!output) throw Error(output.Error());
  std::array<char, PieceSize> piece;
  std::uint64_t done = 0;
  for (;;) {
    const zip_int64_t count = m_Zip.readEntry(file.get(), piece.data(), piece.size());
    if (count < 0)
      RefuseEntry(entry.name,
                  std::string("it is damaged: ") + m_Zip.errorText(m_Zip.entryError(file.get())));
    if (count == 0) break;
    done += static_cast<std::uint64_t>(count);
    if (done > entry.size) RefuseEntry(entry.name, "it unpacks to more than its header says");
    const auto written =
        os::WriteAll(output->Get(), {piece.data(), static_cast<std::size_t>(count)});
    if (!written) throw Error(FailureAt(target, written.Error()));
    if (progress) progress(done, entry.size);
  }
  if (done != entry.size) RefuseEntry(entry.name, "it unpacks to less than its header says");
  m_Left -= done;
}

}  // namespace

std::unique_ptr<Package> OpenZipPackage(const std::string& path, const PackageLimits& limits) {
  return std::make_unique<ZipPackage>(path, limits);
}

}  // namespace rastrel::spreadsheet
