#include "rastrel/readers/shared_strings.h"

#include <algorithm>
#include <cstring>

#include "rastrel/readers/cell_value.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/walk.h"

namespace rastrel::readers {
namespace {

constexpr std::size_t LengthSize = sizeof(std::uint32_t);

}  // namespace

class SharedStrings::Reader : public xml::XmlStreamHandler {
 public:
  explicit Reader(SharedStrings& table) : m_Table(table) {}

  xml::StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int depth) override {
    if (depth == 0 && baseName != L"sst") {
      Refuse("the document element of shared strings is \"sst\", so none are read here");
      return xml::StreamChoice::Skip;
    }
    if (depth == 0) return xml::StreamChoice::Enter;
    return baseName == L"si" ? xml::StreamChoice::Node : xml::StreamChoice::Skip;
  }

  void Node(const XmlNode& si) override {
    for (XmlNode child = xml::FirstChild(si); child; child = xml::NextSibling(child)) {
      if (!xml::IsNamed(child, L"t")) continue;
      const std::string_view text = xml::TextBytes(child, m_Joined);
      if (!text.empty()) Add(CleanedValue(text, m_Cleaned));
    }
  }

  void End(std::wstring_view, int) override {}

  [[nodiscard]] bool IsOverLimit() const { return m_IsOverLimit; }
  [[nodiscard]] const std::vector<std::uint32_t>& Places() const { return m_Places; }

 private:
  void Add(std::string_view value) {
    if (m_IsOverLimit) return;
    m_IsOverLimit = !m_Table.HasRoomFor(value, m_Places.size());
    if (m_IsOverLimit)
      Refuse("more than " + std::to_string(m_Table.m_Limits.sharedStrings) +
             " shared strings, or more than " + std::to_string(m_Table.m_Limits.sharedText) +
             " bytes of them");
    else
      m_Places.push_back(m_Table.Store(value));
  }

  SharedStrings& m_Table;
  std::vector<std::uint32_t> m_Places;
  std::string m_Joined;
  std::string m_Cleaned;
  bool m_IsOverLimit = false;
};

bool SharedStrings::Read(std::wstring_view path) {
  const std::size_t before = m_Texts.size();
  Reader reader(*this);
  if (!xml::StreamXmlFile(path, reader)) {
    m_Texts.resize(before);
    return !reader.IsOverLimit();
  }
  const std::vector<std::uint32_t>& places = reader.Places();
  if (m_Places.size() < places.size()) m_Places.resize(places.size());
  std::copy(places.begin(), places.end(), m_Places.begin());
  return true;
}

std::string_view SharedStrings::Find(std::int32_t index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= m_Places.size()) return {};
  const char* place = m_Texts.data() + m_Places[static_cast<std::size_t>(index)];
  std::uint32_t length = 0;
  std::memcpy(&length, place, LengthSize);
  return {place + LengthSize, length};
}

void SharedStrings::Clear() {
  m_Texts = std::string();
  m_Places = std::vector<std::uint32_t>();
}

// Texts of an earlier table count on even where they were replaced.
bool SharedStrings::HasRoomFor(std::string_view value, std::size_t count) const {
  return count < m_Limits.sharedStrings && m_Texts.size() <= m_Limits.sharedText &&
         value.size() + LengthSize <= m_Limits.sharedText - m_Texts.size();
}

std::uint32_t SharedStrings::Store(std::string_view value) {
  const std::size_t place = m_Texts.size();
  const std::size_t size = place + LengthSize + value.size();
  if (size > m_Texts.capacity())
    m_Texts.reserve(std::max(size, std::min(size * 2, m_Limits.sharedText)));
  const auto length = static_cast<std::uint32_t>(value.size());
  m_Texts.resize(place + LengthSize);
  std::memcpy(m_Texts.data() + place, &length, LengthSize);
  m_Texts.append(value);
  return static_cast<std::uint32_t>(place);
}

}  // namespace rastrel::readers
