#include "host/document/notices.h"

#include <algorithm>

namespace rastrel::document {

void Notices::Add(const std::wstring& text) {
  if (std::ranges::find(m_Texts, text) == m_Texts.end()) m_Texts.push_back(text);
}

}  // namespace rastrel::document
