#include "server/web/http/multipart.h"

#include <utility>

#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

Failure Bad(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

}  // namespace

Expected<MultipartReader> MultipartReader::Create(const std::string& boundary, Sink sink) {
  if (boundary.empty() || boundary.size() > BoundaryLimit)
    return Bad("the form names no boundary of 1 to 200 characters");
  return MultipartReader(boundary, std::move(sink));
}

// The first boundary may be at the very beginning: the line end before it is thought of.
MultipartReader::MultipartReader(const std::string& boundary, Sink sink)
    : m_Delimiter("\r\n--" + boundary), m_Sink(std::move(sink)), m_Held("\r\n") {}

Expected<void> MultipartReader::Feed(std::string_view piece) {
  m_Held += piece;
  for (;;) {
    const auto stepped = Step();
    if (!stepped) return stepped.Error();
    if (!*stepped) return {};
  }
}

Expected<void> MultipartReader::Finish() const {
  if (m_State == State::End) return {};
  return Bad("the form is cut off before its last boundary");
}

Expected<bool> MultipartReader::Step() {
  switch (m_State) {
    case State::AfterBoundary: return TakeAfterBoundary();
    case State::Head: return TakeHead();
    case State::End: m_Held.clear(); return false;
    default: return TakeContent();
  }
}

Expected<bool> MultipartReader::TakeAfterBoundary() {
  if (m_Held.size() < 2) return false;
  if (m_Held.starts_with("--")) {
    m_State = State::End;
    return true;
  }
  if (!m_Held.starts_with("\r\n")) return Bad("a boundary of the form goes on after its end");
  // The line end stays: that of an empty head is its beginning, too.
  m_State = State::Head;
  return true;
}

Expected<bool> MultipartReader::TakeHead() {
  const std::size_t end = m_Held.find("\r\n\r\n");
  if (end > HeadLimit) {
    if (end != m_Held.npos || m_Held.size() > HeadLimit + 4)
      return Bad("the headers of a part are longer than 8192 bytes");
    return false;
  }
  const std::string head = m_Held.substr(0, end);
  m_Held.erase(0, end + 4);
  if (auto begun = BeginPart(head); !begun) return begun.Error();
  return true;
}

Expected<void> MultipartReader::BeginPart(std::string_view head) {
  if (++m_Parts > PartLimit) return Bad("the form has more than 100 parts");
  constexpr std::string_view Wanted = "content-disposition:";
  while (!head.empty()) {
    if (head.starts_with("\r\n")) head.remove_prefix(2);
    const std::string_view line = head.substr(0, head.find("\r\n"));
    head.remove_prefix(line.size());
    if (!LowerCase(line.substr(0, Wanted.size())).starts_with(Wanted)) continue;
    const auto value = HeaderValueOf(line.substr(Wanted.size()));
    if (!value) return value.Error();
    m_Name = value->Parameter("name");
    m_Value.clear();
    if (value->word != "form-data" || m_Name.empty() || !IsUtf8(m_Name))
      return Bad("a part of the form has no name");
    for (const auto& [name, text] : value->parameters)
      if (name == "filename") {
        m_State = State::File;
        return m_Sink.file(m_Name, text);
      }
    m_State = State::Value;
    return {};
  }
  return Bad("a part of the form has no Content-Disposition");
}

Expected<bool> MultipartReader::TakeContent() {
  const std::size_t end = m_Held.find(m_Delimiter);
  if (end != m_Held.npos) {
    if (auto given = Give(std::string_view(m_Held).substr(0, end)); !given) return given.Error();
    m_Held.erase(0, end + m_Delimiter.size());
    if (m_State == State::Value) {
      if (!IsUtf8(m_Value) || m_Value.find('\0') != m_Value.npos)
        return Bad("the field '" + m_Name + "' of the form is no UTF-8, or has a zero byte");
      if (auto done = m_Sink.field(m_Name, std::move(m_Value)); !done) return done.Error();
    }
    m_State = State::AfterBoundary;
    return true;
  }
  // A boundary may have begun.
  if (m_Held.size() < m_Delimiter.size()) return false;
  const std::size_t sure = m_Held.size() - m_Delimiter.size() + 1;
  if (auto given = Give(std::string_view(m_Held).substr(0, sure)); !given) return given.Error();
  m_Held.erase(0, sure);
  return false;
}

Expected<void> MultipartReader::Give(std::string_view content) {
  if (m_State == State::File) return content.empty() ? Expected<void>() : m_Sink.bytes(content);
  if (m_State != State::Value) return {};
  if (m_Value.size() + content.size() > ValueLimit)
    return Bad("the field '" + m_Name + "' of the form is longer than 65536 bytes");
  m_Value += content;
  return {};
}

}  // namespace rastrel::server::web
