#include "cli/input/input_file.h"

#include <filesystem>
#include <system_error>

#include "cli/input/file_head.h"
#include "cli/input/standard_input.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t NameLimit = 150;  // bytes; leaves room for endings

// A file that is asked for something.
struct Asked {
  const std::string& path;
  const char* verb;
};

Failure Refusal(const Asked& file, const std::string& why) {
  return FailureOf("can't " + std::string(file.verb) + " '" + file.path + "': " + why);
}

const char* ExtensionOf(interpreter::JobKind kind) {
  switch (kind) {
    case interpreter::JobKind::Pdf: return ".pdf";
    case interpreter::JobKind::Eps: return ".eps";
    case interpreter::JobKind::PostScript:
    case interpreter::JobKind::Unknown: break;
  }
  return ".ps";
}

bool IsUnsafe(wchar_t character) {
  constexpr std::wstring_view unsafe = L"/\\()\"'\xFFFD";
  return unsafe.find(character) != unsafe.npos ||
         !os::IsSafeToShow(static_cast<char32_t>(character));
}

}  // namespace

Expected<InputFile> InspectInput(const std::string& path, const char* verb) {
  const Asked asked{path, verb};
  const auto head = ReadFileHead(path, interpreter::JobHeadSize);
  if (!head) return Refusal(asked, Describe(head.Error()));
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  const auto layout = interpreter::FindJobLayout(*head, error ? head->size() : size);
  if (layout.kind == interpreter::JobKind::Unknown)
    return Refusal(asked, "it is neither PostScript (\"%!\" at its start), nor EPS, nor PDF");
  InputFile input;
  input.path = path;
  input.safeName = SafeJobName(path.substr(path.rfind('/') + 1));
  input.extension = ExtensionOf(layout.kind);
  input.access = AccessOf(path);
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
