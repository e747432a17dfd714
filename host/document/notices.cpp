#include "host/document/notices.h"

#include <algorithm>

namespace rastrel::document {

namespace {

// Control characters, the ends of lines and paragraphs, and those that turn the direction of the
// text after them.
bool IsControl(wchar_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
         (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

}  // namespace

std::wstring CleanMessage(std::wstring text) {
  if (text.size() > MaximumMessage) text = text.substr(0, MaximumMessage) + L"...";
  std::ranges::replace_if(text, IsControl, L' ');
  while (text.ends_with(L' ')) text.pop_back();
  return text;
}

void Notices::Add(const std::wstring& text) {
  const std::wstring clean = CleanMessage(text);
  if (m_Told.insert(clean).second) m_Texts.push_back(clean);
}

void Notices::AddLoss(const std::wstring& text) {
  const std::wstring clean = CleanMessage(text);
  if (m_Told.insert(clean).second) m_Losses.push_back(clean);
}

}  // namespace rastrel::document
