#include "cli/input/xml_input.h"

#include <array>
#include <charconv>

#include "cli/console/exit_status.h"
#include "cli/input/file_head.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/availability.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw CommandError(ExitStatus::BadInput, "can't read '" + path + "': " + why);
}

// Places are written as compilers write them.
void ThrowXmlFailure(const XmlInput& input) {
  std::optional<Failure> failure = xml::TakeXmlFailure();
  if (!failure) return;
  failure->where = os::Utf8FromWide(os::FromNative(input.path));
  throw CommandError(ExitStatus::BadInput, Describe(*failure));
}

// Faults that are found without a reader of XML.
void ThrowIfNoXml(const XmlInput& input) {
  constexpr std::size_t size = 512;
  const FileHead head = ReadFileHead(input.path, size);
  if (!head.trouble.empty()) Refuse(input.path, head.trouble);
  if (MayBeXml(head.bytes)) return;
  const std::string kind(KnownKind(head.bytes));
  Refuse(input.path, "it is no document of XML" + (kind.empty() ? "" : ", but " + kind));
}

bool EndsInXml(const std::wstring& path) {
  return os::LowerAscii(os::SplitPath(path).extension) == L".xml";
}

}  // namespace

std::wstring ReaderPath(const std::string& path) {
  constexpr std::size_t shortest = 5;
  const std::wstring wide = os::FromNative(path);
  return wide.empty() || wide.size() >= shortest ? wide : L"././" + wide;
}

void RequireXmlParser() {
  const auto parser = xml::LoadXmlParser();
  if (parser) return;
  throw CommandError(ExitStatus::NotInstalled, Describe(parser.Error()) + "; install libxml2");
}

void ThrowIfRefused(const XmlInput& input) {
  RequireXmlParser();
  ThrowIfNoXml(input);
  ThrowXmlFailure(input);
  const std::wstring path = ReaderPath(input.path);
  if (input.namedXml && !EndsInXml(path)) Refuse(input.path, "its name does not end in .xml");
  const XmlNode root = LoadXmlFile(path);
  ThrowXmlFailure(input);
  std::wstring name;
  NodeBaseName(root, name);
  if (name != input.root)
    Refuse(input.path, "its root is <" + os::Utf8FromWide(name) + ">, and not <" +
                           os::Utf8FromWide(input.root) + ">");
}

std::string OneLineText(const wchar_t* text) {
  std::wstring line = text;
  for (wchar_t& character : line)
    if (character < L' ' || character == L'\x7F') character = L' ';
  return os::Utf8FromWide(line);
}

std::string ShortNumber(double number) {
  std::array<char, 32> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() ? std::string(text.data(), end) : "?";
}

}  // namespace rastrel::cli
