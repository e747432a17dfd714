#include "interpreter/job_kind.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "rastrel/platform/os/dos_eps.h"

namespace rastrel::interpreter {
namespace {

constexpr std::string_view UniversalExit = "\x1b%-12345X";
constexpr std::size_t BinaryHeaderSize = 12;  // up to the PostScript section's length
constexpr std::size_t PdfHeaderReach = 1024;
constexpr std::string_view Whitespace = " \t\r\n\f\v\x04";

std::string_view FirstLine(std::string_view text) {
  return text.substr(0, text.find_first_of("\r\n"));
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(Whitespace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(Whitespace) - first + 1);
}

// The value of a comment at the beginning of a line, or empty.
std::string_view FindComment(std::string_view head, std::string_view comment) {
  for (std::size_t at = head.find(comment); at != head.npos; at = head.find(comment, at + 1)) {
    const bool atLineStart = at == 0 || head[at - 1] == '\n' || head[at - 1] == '\r';
    if (atLineStart) return Trim(FirstLine(head.substr(at + comment.size())));
  }
  return {};
}

unsigned FindPages(std::string_view head) {
  const std::string_view value = FindComment(head, "%%Pages:");
  unsigned pages = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), pages);
  return error == std::errc() ? pages : 0;
}

// Whether the first bounding box is one that holds nothing. A box that comes later or is missing is
// the interpreter's business.
bool HasEmptyBox(std::string_view head) {
  std::string_view rest = FindComment(head, "%%BoundingBox:");
  std::array<double, 4> box{};
  for (double& side : box) {
    rest.remove_prefix(std::min(rest.find_first_not_of(Whitespace), rest.size()));
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), side);
    if (error != std::errc()) return false;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  }
  return box[2] <= box[0] || box[3] <= box[1];
}

void FindPostScript(std::string_view head, JobLayout& layout) {
  std::string_view rest = head;
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  while (true) {
    rest.remove_prefix(std::min(rest.find_first_not_of(Whitespace), rest.size()));
    if (rest.starts_with(UniversalExit)) {
      layout.wrapped = true;
      rest.remove_prefix(UniversalExit.size());
      continue;
    }
    const std::string_view line = FirstLine(rest);
    if (line.starts_with("%!")) break;
    if (line.starts_with("@PJL")) layout.wrapped = true;
    if (!line.starts_with('%') && !line.starts_with("@PJL")) return;
    rest.remove_prefix(line.size());
  }
  const std::string_view line = FirstLine(rest);
  const bool eps = line.starts_with("%!PS-Adobe-") && line.find("EPSF") != line.npos;
  layout.kind = eps && !HasEmptyBox(rest) ? JobKind::Eps : JobKind::PostScript;
  const std::size_t skipped = head.size() - rest.size();
  layout.offset += skipped;
  layout.length -= skipped;
  layout.pages = FindPages(rest);
}

bool FindBinaryEps(std::string_view head, std::uint64_t fileSize, JobLayout& layout) {
  if (!os::IsDosEps(head) || head.size() < BinaryHeaderSize) return false;
  const os::DosEpsPart part = os::ReadDosEpsHead(head).postScript;
  layout.offset = part.place;
  layout.length = part.size;
  layout.kind = JobKind::Eps;
  const bool inside = layout.offset >= BinaryHeaderSize && layout.length > 0 &&
                      layout.offset <= fileSize && layout.length <= fileSize - layout.offset;
  layout.section = inside;
  if (!inside) layout.kind = JobKind::Unknown;
  return true;
}

}  // namespace

JobLayout FindJobLayout(std::string_view head, std::uint64_t fileSize) {
  JobLayout layout;
  layout.length = fileSize;
  if (FindBinaryEps(head, fileSize, layout)) return layout;
  FindPostScript(head, layout);
  if (layout.kind != JobKind::Unknown) return layout;
  if (head.substr(0, PdfHeaderReach).find("%PDF-") != head.npos) layout.kind = JobKind::Pdf;
  return layout;
}

std::uint64_t WrapperLength(std::string_view tail) {
  const std::size_t at = tail.rfind(UniversalExit);
  if (at == tail.npos) return 0;
  // Between two of them only printer-language lines may come, never a page.
  std::size_t first = at;
  const std::size_t before = at == 0 ? tail.npos : tail.rfind(UniversalExit, at - 1);
  if (before != tail.npos) {
    const std::string_view between = tail.substr(before + UniversalExit.size(), at - before);
    if (between.empty() || Trim(between).starts_with("@PJL")) first = before;
  }
  return tail.size() - first;
}

std::string FindTitle(std::string_view head) { return std::string(FindComment(head, "%%Title:")); }

}  // namespace rastrel::interpreter
