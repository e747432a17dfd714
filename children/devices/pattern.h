#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Texts with fields in braces, as device descriptions hold them: "{output}/{job}-{page}.tif".
namespace rastrel::devices {

/// The value that a field is replaced by.
enum class Field { Output, Job, Page, Copy, Printer, Plane, Date, File };

/// The values of one delivery. Job, printer and plane may hold any character: Expand makes them
/// safe. Output and file are native paths and taken as they are.
struct FieldValues {
  std::string output;
  std::string job;
  unsigned page = 0;
  unsigned copy = 0;
  std::string printer;
  std::string plane;
  std::string date;  ///< YYYY-MM-DD
  std::string file;
};

/// So many bytes of a value are kept in a file name. Three such values and a number fit in the
/// longest name that file systems take, which is 255 bytes.
inline constexpr std::size_t SafeNameLimit = 72;

/// The value as (part of) a file name: '/', '\', control characters, and dots, dashes and blanks at
/// the front become '_'; ill-formed UTF-8 becomes U+FFFD; cut to SafeNameLimit bytes between two
/// characters. Never empty ("untitled"), never "." or "..", and never taken for an option.
[[nodiscard]] std::string SafeName(std::string_view value);

class Pattern {
 public:
  /// Reads a pattern. "{{" and "}}" are the braces themselves. The failure names the field
  /// that is unknown, or the brace that has no other.
  [[nodiscard]] static Expected<Pattern> Read(std::string_view text);

  [[nodiscard]] std::string Expand(const FieldValues& values) const;
  [[nodiscard]] bool Has(Field field) const;
  /// True if the first piece is that field.
  [[nodiscard]] bool BeginsWith(Field field) const;

 private:
  std::vector<std::variant<std::string, Field>> m_Pieces;
};

/// Splits a command into words at blanks and tabs. Single quotes keep everything, double quotes
/// keep everything but a backslash in front of '"' or '\', which is taken away; outside quotes a
/// backslash keeps the next character. The failure names a quote without its other.
[[nodiscard]] Expected<std::vector<std::string>> SplitWords(std::string_view text);

}  // namespace rastrel::devices
