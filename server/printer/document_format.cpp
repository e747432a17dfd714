#include "server/printer/document_format.h"

namespace rastrel::server {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view DosEpsMark = "\xC5\xD0\xD3\xC6"sv;

bool IsPostScript(std::string_view head) {
  if (head.starts_with("\xEF\xBB\xBF"sv)) head.remove_prefix(3);
  while (head.starts_with('\x04')) head.remove_prefix(1);
  return head.starts_with("%!"sv);
}

}  // namespace

DocumentFormat FormatOfDocument(std::string_view head) {
  head = head.substr(0, DocumentHeadSize);
  if (head.starts_with(DosEpsMark) || IsPostScript(head)) return DocumentFormat::PostScript;
  if (head.starts_with("\xFF\xD8\xFF"sv)) return DocumentFormat::Jpeg;
  if (head.starts_with("\x89PNG\r\n\x1A\n"sv)) return DocumentFormat::Png;
  if (head.find("%PDF-"sv) != head.npos) return DocumentFormat::Pdf;
  return DocumentFormat::Unknown;
}

const char* ExtensionOfDocument(std::string_view head) {
  switch (FormatOfDocument(head)) {
    case DocumentFormat::PostScript: return head.starts_with(DosEpsMark) ? "eps" : "ps";
    case DocumentFormat::Pdf: return "pdf";
    case DocumentFormat::Jpeg: return "jpg";
    case DocumentFormat::Png: return "png";
    case DocumentFormat::Unknown: break;
  }
  return "";
}

}  // namespace rastrel::server
