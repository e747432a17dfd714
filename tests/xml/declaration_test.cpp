// The encoding that a document's declaration names, from its bytes.

#include "rastrel/xml/declaration.h"

#include <gtest/gtest.h>

namespace {

using rastrel::xml::DeclaredEncoding;
using rastrel::xml::XmlEncodingFamily;

std::string Utf16(std::string_view ascii, bool bigEndian) {
  std::string bytes;
  for (const char byte : ascii)
    bytes += bigEndian ? std::string{'\0', byte} : std::string{byte, '\0'};
  return bytes;
}

TEST(DeclaredEncoding, is_the_text_between_its_quotes) {
  for (const std::string_view head :
       {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>",
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone='no' ?><a n='encoding'/>",
        "<?xml\nversion='1.0'\tencoding =\r\n 'ISO-8859-1'?>",
        "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?>\xE9"})
    EXPECT_EQ(DeclaredEncoding(XmlEncodingFamily::Unknown, head), "ISO-8859-1") << head;
}

TEST(DeclaredEncoding, is_empty_where_none_is_declared) {
  for (const std::string_view head :
       {"", "<a encoding='x'/>", "<?xml version='1.0'?><a encoding='x'/>",
        "<?xml-stylesheet encoding='x'?><a/>", "<!-- <?xml encoding='x'?> --><a/>", "<?xml"})
    EXPECT_EQ(DeclaredEncoding(XmlEncodingFamily::Unknown, head), "") << head;
}

TEST(DeclaredEncoding, is_found_in_both_orders_of_utf_16_with_and_without_a_mark) {
  const std::string_view text = "<?xml version='1.0' encoding='UTF-16'?><a/>";
  for (const std::string& head : {Utf16(text, false), Utf16(text, true),
                                  "\xFF\xFE" + Utf16(text, false), "\xFE\xFF" + Utf16(text, true)})
    EXPECT_EQ(DeclaredEncoding(XmlEncodingFamily::Utf16, head), "UTF-16");
  EXPECT_EQ(DeclaredEncoding(XmlEncodingFamily::Utf16, Utf16("<a/>", true)), "");
}

}  // namespace
