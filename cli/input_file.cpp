#include "cli/input_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "children/corerast/job_kind.h"
#include "cli/exit_status.h"
#include "rastrel/platform/os/outcome.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t NameLimit = 150;  // bytes; leaves room for what is put behind it

// A file that is asked for something.
struct Asked {
  const std::string& path;
  const char* verb;
};

[[noreturn]] void Refuse(const Asked& file, const std::string& why) {
  throw CommandError(ExitStatus::BadInput,
                     "can't " + std::string(file.verb) + " '" + file.path + "': " + why);
}

std::string HeadOf(const Asked& asked) {
  errno = 0;
  std::ifstream file(asked.path, std::ios::binary);
  if (!file) Refuse(asked, os::DescribeError(errno));
  std::string head(corerast::JobHeadSize, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  if (file.bad()) Refuse(asked, os::DescribeError(errno));
  head.resize(static_cast<std::size_t>(file.gcount()));
  return head;
}

const char* ExtensionOf(corerast::JobKind kind) {
  switch (kind) {
    case corerast::JobKind::Pdf: return ".pdf";
    case corerast::JobKind::Eps: return ".eps";
    case corerast::JobKind::PostScript:
    case corerast::JobKind::Unknown: break;
  }
  return ".ps";
}

bool IsUnsafe(wchar_t character) {
  constexpr std::wstring_view unsafe = L"/\\()\"'\x7F\xFFFD";
  return character < L' ' || (character >= 0x80 && character < 0xA0) ||
         unsafe.find(character) != unsafe.npos;
}

}  // namespace

InputFile InspectInput(const std::string& path, const char* verb) {
  const Asked asked{path, verb};
  std::error_code error;
  const auto state = std::filesystem::status(path, error);
  if (state.type() == std::filesystem::file_type::not_found) Refuse(asked, "there is no such file");
  if (error) Refuse(asked, os::DescribeError(error.value()));
  if (std::filesystem::is_directory(state)) Refuse(asked, "it is a directory");
  if (!std::filesystem::is_regular_file(state)) Refuse(asked, "it is no regular file");
  const std::string head = HeadOf(asked);
  if (head.empty()) Refuse(asked, "it is empty");
  const auto size = std::filesystem::file_size(path, error);
  const auto layout = corerast::FindJobLayout(head, error ? head.size() : size);
  if (layout.kind == corerast::JobKind::Unknown)
    Refuse(asked, "it is neither PostScript (\"%!\" at its start), nor EPS, nor PDF");
  InputFile input;
  input.path = path;
  input.safeName = SafeJobName(path.substr(path.rfind('/') + 1));
  input.extension = ExtensionOf(layout.kind);
  return input;
}

std::string SafeJobName(std::string_view fileName) {
  std::wstring name = os::WideFromUtf8(fileName);
  for (wchar_t& character : name)
    if (IsUnsafe(character)) character = L'_';
  name.erase(0, std::min(name.find_first_not_of(L".- "), name.size()));
  if (const auto dot = name.rfind(L'.'); dot != name.npos && dot > 0) name.resize(dot);
  while (os::Utf8FromWide(name).size() > NameLimit) name.pop_back();
  name.resize(name.find_last_not_of(L" .") + 1);
  return name.empty() ? "job" : os::Utf8FromWide(name);
}

}  // namespace rastrel::cli
