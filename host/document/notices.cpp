#include "host/document/notices.h"

namespace rastrel::document {

void Notices::Add(const std::wstring& text) {
  if (m_Told.insert(text).second) m_Texts.push_back(text);
}

void Notices::AddLoss(const std::wstring& text) {
  if (m_Told.insert(text).second) m_Losses.push_back(text);
}

}  // namespace rastrel::document
