#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The kind and extent of a job, found by the beginning of its file.
namespace rastrel::interpreter {

enum class JobKind { Unknown, PostScript, Eps, Pdf };

/// The part of a file that the interpreter is given.
struct JobLayout {
  JobKind kind = JobKind::Unknown;
  std::uint64_t offset = 0;  ///< where the part begins, in bytes
  std::uint64_t length = 0;  ///< bytes of it
  unsigned pages = 0;        ///< the number in "%%Pages:"; 0 if there is none
  bool section = false;      ///< it follows a binary header, and has its own beginning to look at
  bool wrapped = false;      ///< a printer-language wrapper comes before it, so one may follow
};

/// Bytes of a file's beginning that are looked at.
inline constexpr std::size_t JobHeadSize = 65536;

/// `head` is the file's beginning: JobHeadSize bytes, or all of a smaller file. `fileSize` is the
/// size of the whole file.
///
/// A PDF header may lie within the first 1024 bytes. PostScript begins at its first line with
/// "%!": whitespace, end-of-job bytes, a byte-order mark, comment lines and printer-language lines
/// before it are left out, since the interpreter would not see the header after them.
/// "%!PS-Adobe-" with "EPSF" on the line makes it EPS, unless its bounding box holds nothing. Of
/// the EPS form with a binary header, the PostScript section is the part; a section that is empty
/// or reaches beyond the file makes the kind Unknown.
[[nodiscard]] JobLayout FindJobLayout(std::string_view head, std::uint64_t fileSize);

/// How many bytes at the end of a wrapped job belong to the wrapper. `tail` is the job's end.
[[nodiscard]] std::uint64_t WrapperLength(std::string_view tail);

/// The text after "%%Title:" of a prefix, trimmed; empty if there is none. `head` as above.
[[nodiscard]] std::string FindTitle(std::string_view head);

}  // namespace rastrel::interpreter
