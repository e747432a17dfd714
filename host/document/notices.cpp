#include "host/document/notices.h"

#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::document {

std::wstring CleanMessage(std::wstring text) {
  if (text.size() > MaximumMessage) {
    text.resize(MaximumMessage);
    text += L"...";
  }
  text.resize(text.find_last_not_of(L" \t\r\n") + 1);
  return os::WideFromUtf8(os::CleanLine(os::Utf8FromWide(text)));
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
