#include "rastrel/xml/declaration.h"

namespace rastrel::xml {

using namespace std::string_view_literals;

namespace {

constexpr std::string_view Blanks = " \t\r\n";

// The declaration in ASCII, which all of it is:
//
//     <?xml version="1.0" encoding="ISO-8859-1" standalone="yes"?>
//
// The result has no byte-order mark and ends before "?>".
std::string DeclarationOf(XmlEncodingFamily family, std::string_view head) {
  std::string text;
  if (family == XmlEncodingFamily::Utf16) {
    for (std::size_t at = IsBigEndian(head) ? 1 : 0; at < head.size(); at += 2) text += head[at];
    if (head.starts_with("\xFF\xFE"sv) || head.starts_with("\xFE\xFF"sv)) text.erase(0, 1);
  } else {
    text = head.substr(head.starts_with("\xEF\xBB\xBF"sv) ? 3 : 0);
  }
  constexpr std::string_view mark = "<?xml";
  const bool isDeclared = text.starts_with(mark) && text.size() > mark.size() &&
                          Blanks.find(text[mark.size()]) != Blanks.npos;
  return isDeclared ? text.substr(0, text.find("?>")) : std::string();
}

}  // namespace

bool IsBigEndian(std::string_view head) {
  return head.starts_with("\xFE\xFF"sv) || head.starts_with("\0<"sv);
}

std::string DeclaredEncoding(XmlEncodingFamily family, std::string_view head) {
  const std::string declaration = DeclarationOf(family, head);
  // No version has this word in it.
  const std::size_t name = declaration.find("encoding");
  if (name == declaration.npos) return {};
  const std::size_t quote = declaration.find_first_of("\"'", name);
  if (quote == declaration.npos) return {};
  const std::size_t close = declaration.find(declaration[quote], quote + 1);
  return declaration.substr(quote + 1, close == declaration.npos ? close : close - quote - 1);
}

}  // namespace rastrel::xml
