#include "rastrel/xml/parser_internals.h"

#include <charconv>
#include <cstring>

namespace rastrel::xml {
namespace {

int& UncheckedScopes() {
  thread_local int scopes = 0;
  return scopes;
}

}  // namespace

int XmlParserInternals::VersionNumber(const char* text) {
  int number = 0;
  if (text != nullptr) std::from_chars(text, text + std::strlen(text), number);
  return number;
}

XmlUncheckedVersion::XmlUncheckedVersion() { ++UncheckedScopes(); }
XmlUncheckedVersion::~XmlUncheckedVersion() { --UncheckedScopes(); }

bool XmlParserInternals::IsAvailable() {
  return IsChecked(LIBXML_VERSION) && IsChecked(XmlLibrary::Instance()->version) &&
         UncheckedScopes() == 0;
}

// Headers of other versions need not even have these members.
#if LIBXML_VERSION >= 20914 && LIBXML_VERSION <= 20914
static_assert(XmlParserInternals::IsChecked(20914));

bool XmlParserInternals::IsUnconverted() const {
  const xmlParserInput* const input = m_Context.input;
  return input != nullptr && input->buf != nullptr && input->buf->encoder == nullptr;
}

bool XmlParserInternals::IsBetweenElements() const {
  return IsUnconverted() && m_Context.instate == XML_PARSER_CONTENT && m_Context.inputNr == 1 &&
         m_Context.input->cur == m_Context.input->end;
}

void XmlParserInternals::SetPlace(int line, int column) {
  m_Context.input->line = line;
  m_Context.input->col = column;
}

std::string_view XmlParserInternals::HeldBack() const {
  const xmlParserInput* const input = m_Context.input;
  if (input == nullptr) return {};
  return {reinterpret_cast<const char*>(input->cur),
          static_cast<std::size_t>(input->end - input->cur)};
}

bool XmlParserInternals::IsInCdata() const {
  return IsUnconverted() && m_Context.instate == XML_PARSER_CDATA_SECTION;
}

std::string_view XmlParserInternals::BytesBefore() const {
  const xmlParserInput* const input = m_Context.input;
  if (input == nullptr) return {};
  return {reinterpret_cast<const char*>(input->base),
          static_cast<std::size_t>(input->cur - input->base)};
}

std::uint64_t XmlParserInternals::CountBefore() const {
  const xmlParserInput* const input = m_Context.input;
  return input == nullptr ? 0 : input->consumed + BytesBefore().size();
}

bool XmlParserInternals::EndsWithinCharacter() const {
  const xmlParserInput* const input = m_Context.input;
  return input != nullptr && input->buf != nullptr && input->buf->raw != nullptr &&
         XmlLibrary::Instance()->BufUse(input->buf->raw) > 0;
}

#else

bool XmlParserInternals::IsUnconverted() const { return false; }
bool XmlParserInternals::IsBetweenElements() const { return false; }
void XmlParserInternals::SetPlace(int, int) {}
std::string_view XmlParserInternals::HeldBack() const { return {}; }
bool XmlParserInternals::IsInCdata() const { return false; }
std::string_view XmlParserInternals::BytesBefore() const { return {}; }
std::uint64_t XmlParserInternals::CountBefore() const { return 0; }
bool XmlParserInternals::EndsWithinCharacter() const { return false; }

#endif

}  // namespace rastrel::xml
