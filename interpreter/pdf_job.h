#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "interpreter/settings.h"
#include "rastrel/platform/os/expected.h"

/// How a job that is PDF differs from PostScript: it may be locked or damaged, and has boxes.
namespace rastrel::interpreter {

/// The interpreter's options for a page of that box. For the media box, RIP's prolog drops the clip
/// to the crop box (pdfbox.ps).
[[nodiscard]] std::vector<std::string> BoxOptions(PdfBox box);

/// The messages that the interpreter prints about a PDF. It ends with status 0 whatever they say.
/// Their wording is that of its versions from 9.50 on; an unknown one counts as damage.
class PdfMessages {
 public:
  /// Takes one line.
  void Take(std::string_view line);
  /// Why a PDF made no page: it is locked, the password is wrong, it has no pages or fewer than the
  /// one that is asked for, or it can't be read. A sentence without its full stop, with the code
  /// BadInput.
  [[nodiscard]] Failure WhyNoPage() const;
  /// Whether a password is missing or wrong.
  [[nodiscard]] bool IsLocked() const { return m_Lock != Lock::None; }
  /// The first error, without its mark and its full stop; empty if there was none.
  [[nodiscard]] const std::string& FirstError() const { return m_Error; }

 private:
  enum class Lock { None, NeedsPassword, WrongPassword };

  Lock m_Lock = Lock::None;
  bool m_IsEmpty = false;
  std::string m_PageCount;  // of one that has fewer pages than asked for
  std::string m_Error;
};

}  // namespace rastrel::interpreter
