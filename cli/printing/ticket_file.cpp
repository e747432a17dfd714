#include "cli/printing/ticket_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t LargestTicket = std::uint64_t{256} << 20;
constexpr std::size_t VersionSize = 4;
constexpr std::string_view KnownVersion("\1\0\0\0", VersionSize);

Failure Unreadable(const std::string& path, const std::string& why) {
  return FailureOf("the ticket '" + path + "' can't be read: " + why);
}

// The bytes of a ticket file, and how far a reader has come.
class TicketBytes : public CFile {
 public:
  explicit TicketBytes(std::string bytes) : m_Bytes(std::move(bytes)) {}
  unsigned Read(void* bytes, unsigned count) override {
    const std::size_t taken = std::min<std::size_t>(count, m_Bytes.size() - m_Position);
    std::memcpy(bytes, m_Bytes.data() + m_Position, taken);
    m_Position += taken;
    return static_cast<unsigned>(taken);
  }
  [[nodiscard]] bool Write(const void* /*bytes*/, unsigned /*count*/) override { return false; }
  [[nodiscard]] std::size_t Position() const { return m_Position; }
  [[nodiscard]] const std::string& Bytes() const { return m_Bytes; }

 private:
  std::string m_Bytes;
  std::size_t m_Position = 0;
};

Expected<void> CheckVersion(const std::string& bytes, const std::string& path) {
  if (bytes.size() < VersionSize)
    return Unreadable(path,
                      "it has " + std::to_string(bytes.size()) + " bytes, which is no ticket");
  if (!bytes.starts_with(KnownVersion))
    return Unreadable(
        path, "it is no ticket, or one of another version (its first four bytes are not 1)");
  return {};
}

}  // namespace

Expected<std::string> TicketPath(const std::string& text) {
  if (text.empty()) return FailureOf("a ticket's path is empty");
  std::string path = text.front() == '/' ? text : os::CurrentDirectory() + "/" + text;
  const std::string taken = os::ToNative(os::FromNative(path));
  if (taken == path) return path;
  return FailureOf("'" + text + "' can't be a ticket's path: it would be taken for '" + taken +
                   "', since backslashes part directories and case counts for nothing");
}

Expected<void> LoadTicket(CJobTicket& ticket, const std::string& path) {
  auto content = os::ReadWholeFile(os::FromNative(path), LargestTicket);
  if (!content) return Unreadable(path, Describe(content.Error()));
  TicketBytes file(std::move(*content));
  if (auto version = CheckVersion(file.Bytes(), path); !version) return version;
  CArchive archive(&file, CArchive::load);
  const std::string size = std::to_string(file.Bytes().size());
  try {
    ticket.Serialize(archive);
  } catch (const CArchiveException& exception) {
    return Unreadable(path, std::string(exception.what()) + " at byte " +
                                std::to_string(file.Position()) + " of " + size +
                                "; the file is cut off or damaged");
  }
  if (file.Position() != file.Bytes().size())
    return Unreadable(path, "its record ends at byte " + std::to_string(file.Position()) + " of " +
                                size + "; the file is damaged");
  return {};
}

Expected<void> SaveTicket(const CJobTicket& ticket, const std::string& path) {
  CJobTicket saved = ticket;
  if (saved.m_Status == JS_ACTIVE) saved.m_Status = JS_IDLE;
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  saved.Serialize(archive);
  archive.Close();
  const auto& bytes = file.Bytes();
  const auto written = os::ReplaceFile(os::FromNative(path),
                                       {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (!written) return FailureOf("the ticket can't be saved: " + Describe(written.Error()));
  return {};
}

}  // namespace rastrel::cli
