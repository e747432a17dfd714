#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace rastrel::document {

/// What the user of the host should hear of: a refused plate, a font that was replaced. In order,
/// and each text once.
class Notices {
 public:
  void Add(const std::wstring& text);
  [[nodiscard]] const std::vector<std::wstring>& Texts() const { return m_Texts; }

 private:
  std::vector<std::wstring> m_Texts;
  std::unordered_set<std::wstring> m_Told;
};

}  // namespace rastrel::document
