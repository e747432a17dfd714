#pragma once

#include <string>
#include <vector>

namespace rastrel::test {

/// Cuts lines in the plainest way: looks for the first line end, hands out the text before it,
/// removes both, and begins again. The pieces are wide text already. A line is cut at `limit`
/// characters. Takes time with the square of a piece's lines, and has nothing in common with the
/// library's way.
class LiteralLines {
 public:
  explicit LiteralLines(std::size_t limit = std::wstring::npos) : m_Limit(limit) {}

  void Add(const std::wstring& piece) {
    m_Waiting += piece;
    while (!m_Waiting.empty()) {
      std::size_t end = 0;
      while (end < m_Waiting.size() && m_Waiting[end] != L'\r' && m_Waiting[end] != L'\n') ++end;
      if (end == m_Waiting.size()) return;
      if (end > 0) m_Lines.push_back(m_Waiting.substr(0, end).substr(0, m_Limit));
      m_Waiting.erase(0, end + 1);
    }
  }

  [[nodiscard]] const std::vector<std::wstring>& All() const { return m_Lines; }

 private:
  std::size_t m_Limit;
  std::wstring m_Waiting;
  std::vector<std::wstring> m_Lines;
};

}  // namespace rastrel::test
