#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rastrel::cutting {

/// A group of a DXF file: a line with its code, and a line with its value.
///
///       62        code
///     1           value
struct DxfGroup {
  int code = 0;
  std::string_view value;  ///< without whitespace at its ends
  int line = 0;            ///< of the value, from 1
};

/// Reads the groups of a text, which belongs to the caller and outlives the reader.
class DxfGroupReader {
 public:
  DxfGroupReader() = default;
  explicit DxfGroupReader(std::string_view text, int line = 1) : m_Text(text), m_Line(line) {}

  /// The next group; nothing at the end, and at a fault.
  [[nodiscard]] std::optional<DxfGroup> Next();
  /// The fault's reason, of the line `Line`; empty if there is none.
  [[nodiscard]] const std::string& Why() const { return m_Why; }
  /// Of the next group's code.
  [[nodiscard]] int Line() const { return m_Line; }
  /// The text that is not read yet.
  [[nodiscard]] std::string_view Rest() const { return m_Text.substr(m_At); }

 private:
  std::optional<std::string_view> NextLine();

  std::string_view m_Text;
  std::size_t m_At = 0;
  int m_Line = 1;
  std::string m_Why;
};

/// An object of a drawing: its groups are read when it is drawn.
struct DxfObject {
  std::string_view type;  ///< "LINE"
  std::string_view text;  ///< its groups
  int line = 0;           ///< of the text's first line
};

/// The groups of one object. A value that is no number fails the drawing.
class DxfGroups {
 public:
  explicit DxfGroups(const DxfObject& object);

  /// The first value of a code; `otherwise` without one.
  [[nodiscard]] std::string_view Text(int code, std::string_view otherwise = {}) const;
  [[nodiscard]] double Number(int code, double otherwise = 0);
  [[nodiscard]] int Whole(int code, int otherwise = 0);
  [[nodiscard]] bool Has(int code) const { return Find(code) != nullptr; }
  /// The number of any group.
  [[nodiscard]] double NumberOf(const DxfGroup& group);

  [[nodiscard]] const std::vector<DxfGroup>& All() const { return m_Groups; }
  [[nodiscard]] bool HasFailed() const { return m_FaultLine > 0; }
  [[nodiscard]] int FaultLine() const { return m_FaultLine; }
  [[nodiscard]] const std::string& Why() const { return m_Why; }

 private:
  [[nodiscard]] const DxfGroup* Find(int code) const;

  std::vector<DxfGroup> m_Groups;
  int m_FaultLine = 0;
  std::string m_Why;
};

/// A finite number below a thousand million in amount. Nothing for another text.
[[nodiscard]] std::optional<double> DxfNumber(std::string_view text);

}  // namespace rastrel::cutting
