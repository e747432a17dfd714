#include "rastrel/xml/names.h"

#include <algorithm>
#include <new>

#include "rastrel/platform/os/text.h"

namespace rastrel::xml {
namespace {

std::wstring_view CopyWide(XmlArena& arena, const std::wstring& text) {
  auto* const place = static_cast<wchar_t*>(arena.Allocate(text.size() * sizeof(wchar_t)));
  std::copy(text.begin(), text.end(), place);
  return {place, text.size()};
}

}  // namespace

const XmlName* XmlNames::Find(const char* prefix, const char* local) {
  m_Bytes.clear();
  if (prefix != nullptr) m_Bytes += prefix;
  const std::size_t prefixLength = m_Bytes.size();
  if (prefixLength > 0) m_Bytes += ':';
  const std::size_t localAt = m_Bytes.size();
  m_Bytes += local;
  const auto found = m_Names.find(m_Bytes);
  if (found != m_Names.end()) return found->second;

  auto* const name = new (m_Arena.Allocate(sizeof(XmlName))) XmlName;
  name->bytes = m_Arena.Copy(m_Bytes);
  name->prefix = prefixLength;
  name->qualified = CopyWide(m_Arena, os::WideFromUtf8(m_Bytes));
  const std::size_t localLength = os::WideFromUtf8(name->bytes.substr(localAt)).size();
  name->local = name->qualified.substr(name->qualified.size() - localLength);
  m_Names.emplace(name->bytes, name);
  return name;
}

}  // namespace rastrel::xml
