#include "spreadsheet/xml_reading.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::spreadsheet {

using xml::StreamChoice;

bool GuardedHandler::ReadFrom(const std::string& path, xml::XmlWhitespace blanks) {
  const bool done = xml::StreamXmlFile(os::FromNative(path), *this, blanks);
  if (m_Thrown) std::rethrow_exception(m_Thrown);
  return done;
}

StreamChoice PathReader::Begin(std::wstring_view baseName, const XmlNode& start, int depth) {
  static_cast<void>(start);
  m_Open.resize(static_cast<std::size_t>(depth));
  m_Open.emplace_back(baseName);
  StreamChoice choice = StreamChoice::Skip;
  for (const Wanted& wanted : m_Wanted) {
    const bool isOnPath = m_Open.size() <= wanted.path.size() &&
                          std::equal(m_Open.begin(), m_Open.end(), wanted.path.begin());
    if (!isOnPath) continue;
    if (depth == 0) m_FoundRoot = true;
    if (m_Open.size() == wanted.path.size()) {
      m_Current = &wanted;
      return StreamChoice::Node;
    }
    choice = StreamChoice::Enter;
  }
  return choice;
}

void PathReader::Node(const XmlNode& node) {
  if (m_Current != nullptr) Guard([&] { m_Current->call(node); });
}

void PathReader::End(std::wstring_view baseName, int depth) {
  static_cast<void>(baseName);
  m_Open.resize(static_cast<std::size_t>(depth));
}

Failure TakeXmlFailureAt(std::string where, const std::string& otherwise) {
  const auto state = xml::TakeXmlFailure();
  return FailureAt(std::move(where), state ? FailureOf(otherwise) : state.Error());
}

std::string AttributeNamed(const XmlNode& node, std::wstring_view localName) {
  for (const auto& [name, value] : AttributeList(node))
    if (name == localName) return os::Utf8FromWide(value);
  return {};
}

std::optional<std::uint64_t> WholeNumber(std::string_view text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

bool IsYes(std::string_view text) { return text == "1" || text == "true"; }

}  // namespace rastrel::spreadsheet
