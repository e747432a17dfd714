#include "cli/input/xml_input.h"

#include "cli/input/file_head.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/availability.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

Failure Refusal(const std::string& path, const std::string& why) {
  return FailureOf("can't read '" + path + "': " + why);
}

// Success if the XML layer reported no failure. Places are written as compilers write them.
Expected<void> CheckXmlFailure(const XmlInput& input) {
  auto state = xml::TakeXmlFailure();
  if (state) return state;
  return FailureAt(os::Utf8FromWide(os::FromNative(input.path)), state.Error());
}

// Faults that are found without a reader of XML.
Expected<void> CheckHead(const XmlInput& input) {
  constexpr std::size_t size = 512;
  const auto head = ReadFileHead(input.path, size);
  if (!head) return Refusal(input.path, Describe(head.Error()));
  if (MayBeXml(*head)) return {};
  const std::string kind(KnownKind(*head));
  return Refusal(input.path, "it is no document of XML" + (kind.empty() ? "" : ", but " + kind));
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

Expected<void> CheckXmlParser() {
  const auto parser = xml::LoadXmlParser();
  if (!parser) return FailureOf(Describe(parser.Error()) + "; install libxml2");
  return {};
}

Expected<void> CheckXmlInput(const XmlInput& input) {
  if (auto checked = CheckHead(input); !checked) return checked;
  if (auto checked = CheckXmlFailure(input); !checked) return checked;
  const std::wstring path = ReaderPath(input.path);
  if (input.namedXml && !EndsInXml(path))
    return Refusal(input.path, "its name does not end in .xml");
  const XmlNode root = LoadXmlFile(path);
  if (auto checked = CheckXmlFailure(input); !checked) return checked;
  std::wstring name;
  NodeBaseName(root, name);
  if (name != input.root)
    return Refusal(input.path, "its root is <" + os::Utf8FromWide(name) + ">, and not <" +
                                   os::Utf8FromWide(input.root) + ">");
  return {};
}

std::string OneLineText(const wchar_t* text) {
  std::wstring line = text;
  for (wchar_t& character : line)
    if (character < L' ' || character == L'\x7F') character = L' ';
  return os::Utf8FromWide(line);
}

}  // namespace rastrel::cli
