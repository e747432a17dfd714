#include "rastrel/readers/trimmed_text.h"

namespace rastrel::readers {

void TrimmedText::Append(std::string_view bytes) {
  const std::size_t end = bytes.find_last_not_of(Whitespace);
  const std::string_view content = bytes.substr(0, end == std::string_view::npos ? 0 : end + 1);
  if (!content.empty()) Write(content);
  if (m_File) m_HeldBack.Append(bytes.substr(content.size()));
}

void TrimmedText::AppendWhitespace(std::size_t count, char byte) {
  if (m_File) m_HeldBack.Append(count, byte);
}

bool TrimmedText::Close() { return m_File && m_File->Close(); }

void TrimmedText::Write(std::string_view bytes) {
  if (m_Name.empty()) return;
  if (!m_File) {
    m_File.emplace(m_Name);
    bytes.remove_prefix(bytes.find_first_not_of(Whitespace));
  }
  m_HeldBack.ForEachPiece(0, m_HeldBack.Size(),
                          [this](std::string_view piece) { return m_File->Write(piece); });
  m_HeldBack.Truncate(0);
  m_File->Write(bytes);
}

}  // namespace rastrel::readers
