#include "interpreter/pdf_text.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::interpreter {
namespace {

using namespace std::string_literals;

TEST(Utf8FromPdfText, plain_text_is_in_the_documents_own_encoding) {
  EXPECT_EQ(Utf8FromPdfText(""), "");
  EXPECT_EQ(Utf8FromPdfText("Cut (1)"), "Cut (1)");
  EXPECT_EQ(Utf8FromPdfText("\x84\x85 \xA0 \x93"), "\u2014\u2013 \u20AC \uFB01");
  EXPECT_EQ(Utf8FromPdfText("\x18\x1F\xFC"), "\u02D8\u02DC\u00FC");
  EXPECT_EQ(Utf8FromPdfText("\x9F\xAD\x7F"), "\uFFFD\uFFFD\uFFFD");
}

TEST(Utf8FromPdfText, marks_say_utf_16_and_utf_8) {
  EXPECT_EQ(Utf8FromPdfText("\xFE\xFF\0S\0c\0h\0\xFC"s), "Sch\u00FC");
  EXPECT_EQ(Utf8FromPdfText("\xFE\xFF\xD8\x3D\xDE\x00"s), "\U0001F600");
  EXPECT_EQ(Utf8FromPdfText("\xFE\xFF\0S\0"s), "S") << "half a character at the end";
  EXPECT_EQ(Utf8FromPdfText("\xFE\xFF"), "");
  EXPECT_EQ(Utf8FromPdfText("\xEF\xBB\xBFSch\xC3\xBC"), "Sch\u00FC");
  EXPECT_EQ(Utf8FromPdfText("\xEF\xBB\xBF\xC3"), "\uFFFD");
}

}  // namespace
}  // namespace rastrel::interpreter
