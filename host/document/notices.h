#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

namespace rastrel::document {

/// A message that holds foreign text, for a person: cleaned (os::CleanLine), without whitespace at
/// its end, and cut after MaximumMessage characters.
[[nodiscard]] std::wstring CleanMessage(std::wstring text);
inline constexpr std::size_t MaximumMessage = 2000;

/// Messages to the user of the host, in order, and each text once. Texts are cleaned
/// (CleanMessage).
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
