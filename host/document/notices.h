#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace rastrel::document {

/// Messages to the user of the host, in order, and each text once.
class Notices {
 public:
  /// Something is there, but not as asked: a font that was replaced.
  void Add(const std::wstring& text);
  /// Something is not there: a plate that was refused.
  void AddLoss(const std::wstring& text);
  [[nodiscard]] const std::vector<std::wstring>& Texts() const { return m_Texts; }
  [[nodiscard]] const std::vector<std::wstring>& Losses() const { return m_Losses; }

 private:
  std::vector<std::wstring> m_Texts;
  std::vector<std::wstring> m_Losses;
  std::unordered_set<std::wstring> m_Told;
};

}  // namespace rastrel::document
