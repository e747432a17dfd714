#include "interpreter/pdf_job.h"

#include <utility>

#include "interpreter/short_run.h"

namespace rastrel::interpreter {
namespace {

constexpr std::string_view ErrorMark = "**** Error";

bool Has(std::string_view line, std::string_view part) { return line.find(part) != line.npos; }

Failure Refused(std::string sentence) {
  return FailureOf(std::move(sentence), FailureCode::BadInput);
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(": \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(". \t") + 1 - first);
}

}  // namespace

std::vector<std::string> BoxOptions(PdfBox box) {
  switch (box) {
    case PdfBox::Media: return {};
    case PdfBox::Crop: return {"-dUseCropBox"};
    case PdfBox::Trim: return {"-dUseTrimBox", "-dUseCropBox"};
    case PdfBox::Bleed: return {"-dUseBleedBox", "-dUseCropBox"};
  }
  return {};
}

void PdfMessages::Take(std::string_view line) {
  if (Has(line, "requires a password")) m_Lock = Lock::NeedsPassword;
  if (Has(line, "Password did not work")) m_Lock = Lock::WrongPassword;
  if (Has(line, "has no pages")) m_IsEmpty = true;
  constexpr std::string_view countMark = "greater than the number of pages in the file:";
  if (const std::size_t count = line.find(countMark); count != line.npos)
    m_PageCount = PlainLine(Trimmed(line.substr(count + countMark.size())));
  const std::size_t mark = line.find(ErrorMark);
  if (mark != line.npos && m_Error.empty())
    m_Error = PlainLine(Trimmed(line.substr(mark + ErrorMark.size())));
}

Failure PdfMessages::WhyNoPage() const {
  switch (m_Lock) {
    case Lock::NeedsPassword:
      return Refused(
          "The PDF is locked, and no password was given (--password-file, or "
          "RASTREL_RIP_PASSWORD_FILE)");
    case Lock::WrongPassword:
      return Refused("The PDF is locked, and the password does not open it");
    case Lock::None: break;
  }
  if (m_IsEmpty) return Refused("The PDF has no page");
  // Of a file that it can't read the interpreter counts none.
  if (!m_PageCount.empty() && m_PageCount != "0")
    return Refused("The PDF has no page of the number that is asked for; it has " + m_PageCount);
  return Refused("The PDF can't be read: it is damaged, incomplete, or no PDF" +
                 (m_Error.empty() ? std::string() : " (Ghostscript: " + m_Error + ")"));
}

}  // namespace rastrel::interpreter
