#include "cli/printing/ticket_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "cli/console/exit_status.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t LargestTicket = std::uint64_t{256} << 20;
constexpr std::size_t VersionSize = 4;
constexpr std::string_view KnownVersion("\1\0\0\0", VersionSize);

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw CommandError(ExitStatus::BadInput, "the ticket '" + path + "' can't be read: " + why);
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

void CheckVersion(const std::string& bytes, const std::string& path) {
  if (bytes.size() < VersionSize)
    Refuse(path, "it has " + std::to_string(bytes.size()) + " bytes, which is no ticket");
  if (!bytes.starts_with(KnownVersion))
    Refuse(path, "it is no ticket, or one of another version (its first four bytes are not 1)");
}

}  // namespace

std::string TicketPath(const std::string& text) {
  if (text.empty()) throw CommandError(ExitStatus::WrongUse, "a ticket's path is empty");
  std::string path = text.front() == '/' ? text : os::CurrentDirectory() + "/" + text;
  const std::string taken = os::ToNative(os::FromNative(path));
  if (taken == path) return path;
  throw CommandError(ExitStatus::WrongUse,
                     "'" + text + "' can't be a ticket's path: it would be taken for '" + taken +
                         "', since backslashes part directories and case counts for nothing");
}

void LoadTicket(CJobTicket& ticket, const std::string& path) {
  auto content = os::ReadWholeFile(os::FromNative(path), LargestTicket);
  if (!content) Refuse(path, Describe(content.Error()));
  TicketBytes file(std::move(*content));
  CheckVersion(file.Bytes(), path);
  CArchive archive(&file, CArchive::load);
  const std::string size = std::to_string(file.Bytes().size());
  try {
    ticket.Serialize(archive);
  } catch (const CArchiveException& exception) {
    Refuse(path, std::string(exception.what()) + " at byte " + std::to_string(file.Position()) +
                     " of " + size + "; the file is cut off or damaged");
  }
  if (file.Position() != file.Bytes().size())
    Refuse(path, "its record ends at byte " + std::to_string(file.Position()) + " of " + size +
                     "; the file is damaged");
}

void SaveTicket(const CJobTicket& ticket, const std::string& path) {
  CJobTicket saved = ticket;
  if (saved.m_Status == JS_ACTIVE) saved.m_Status = JS_IDLE;
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  saved.Serialize(archive);
  archive.Close();
  const auto& bytes = file.Bytes();
  const auto written = os::ReplaceFile(os::FromNative(path),
                                       {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (!written)
    throw CommandError(ExitStatus::JobFailed,
                       "the ticket can't be saved: " + Describe(written.Error()));
}

}  // namespace rastrel::cli
