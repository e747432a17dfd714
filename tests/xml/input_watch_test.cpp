// The bytes that a parser must be holding back, known from the document's bytes alone.

#include "rastrel/xml/input_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using rastrel::xml::XmlEncodingFamily;
using rastrel::xml::XmlInputWatch;

// "bytes/values" that are open at the end of the text, which comes in pieces of that size.
std::string OpenAfter(std::string_view text, std::size_t piece = 1) {
  XmlInputWatch watch(XmlEncodingFamily::Unknown, false);
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
    watch.Read(text.substr(0, piece));
  return std::to_string(watch.OpenBytes()) + "/" + std::to_string(watch.OpenValues());
}

TEST(XmlInputWatch, nothing_is_open_between_tags) {
  for (const std::string_view text :
       {"", "text > text", "<a>", "<a n='>' m=\"<'\">", "<a/>", "</a>", "<!--<a n='-->",
        "<!-- - -- --->", "<![CDATA[]]>", "<![CDATA[<a ']] > ]]]>",
        "<?i <a ' ?"
        "?>",
        "<!DOCTYPE a>"})
    for (const std::size_t piece : {1, 2, 3, 100}) EXPECT_EQ(OpenAfter(text, piece), "0/0") << text;
}

TEST(XmlInputWatch, counts_the_bytes_and_the_values_of_a_tag) {
  EXPECT_EQ(OpenAfter("text<"), "1/0");
  EXPECT_EQ(OpenAfter("<a><b n='1' m=\"it's\" "), "18/2");
  EXPECT_EQ(OpenAfter("<b n='1' m=\"> "), "14/2");
  EXPECT_EQ(OpenAfter("<b \xC3\xA9"), "5/0");
}

TEST(XmlInputWatch, comments_instructions_and_sections_have_no_values) {
  EXPECT_EQ(OpenAfter("<!-- 'a' --"), "11/0");
  EXPECT_EQ(OpenAfter("<!-->"), "5/0");
  EXPECT_EQ(OpenAfter("<?i 'a' ?"), "9/0");
  EXPECT_EQ(OpenAfter("<![CDATA['a' ]]"), "15/0");
}

TEST(XmlInputWatch, counts_utf_16_as_utf_8_would_be) {
  // "<b n='", U+00E9, U+20AC, U+1F600: 6 bytes, and 2, 3 and 4.
  const std::string units("<\0b\0 \0n\0=\0'\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE", 20);
  XmlInputWatch watch(XmlEncodingFamily::Utf16, false);
  watch.Read(std::string_view(units).substr(0, 3));
  watch.Read(std::string_view(units).substr(3));
  EXPECT_EQ(watch.OpenBytes(), 15U);
  EXPECT_EQ(watch.OpenValues(), 1U);
}

TEST(XmlInputWatch, a_document_may_end_within_a_character) {
  const auto ends = [](XmlEncodingFamily family, std::string_view text) {
    XmlInputWatch watch(family, true);
    for (const char& byte : text) watch.Read({&byte, 1});
    return watch.EndsWithinCharacter();
  };
  EXPECT_FALSE(ends(XmlEncodingFamily::Unknown, "<a>\x93\xFA</a>\n"));
  EXPECT_TRUE(ends(XmlEncodingFamily::Unknown, "<a>\x93\xFA</a>\n\x93"));
  const std::string utf16("\0<\0a\0/\0>", 8);
  EXPECT_FALSE(ends(XmlEncodingFamily::Utf16, utf16));
  EXPECT_TRUE(ends(XmlEncodingFamily::Utf16, utf16 + '\0'));
  EXPECT_TRUE(ends(XmlEncodingFamily::Utf16, utf16 + "\xD8\x3D"));
}

}  // namespace
