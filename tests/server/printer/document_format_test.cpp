#include "server/printer/document_format.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::server {
namespace {

using std::string_literals::operator""s;

TEST(DocumentFormatTest, IsFoundByTheFirstBytes) {
  EXPECT_EQ(FormatOfDocument("%!PS-Adobe-3.0\n"), DocumentFormat::PostScript);
  EXPECT_EQ(FormatOfDocument("\x04%!PS\n"), DocumentFormat::PostScript);
  EXPECT_EQ(FormatOfDocument("\xEF\xBB\xBF%!PS\n"), DocumentFormat::PostScript);
  EXPECT_EQ(FormatOfDocument("\xC5\xD0\xD3\xC6\x20\0\0\0"s), DocumentFormat::PostScript);
  EXPECT_EQ(FormatOfDocument("%PDF-1.7\n"), DocumentFormat::Pdf);
  EXPECT_EQ(FormatOfDocument("\xFF\xD8\xFF\xE0"), DocumentFormat::Jpeg);
  EXPECT_EQ(FormatOfDocument("\x89PNG\r\n\x1A\n"), DocumentFormat::Png);
  EXPECT_EQ(FormatOfDocument(""), DocumentFormat::Unknown);
  EXPECT_EQ(FormatOfDocument("PK\x03\x04"), DocumentFormat::Unknown);
  EXPECT_EQ(FormatOfDocument("<html>"), DocumentFormat::Unknown);
}

TEST(DocumentFormatTest, ThePdfMarkMayBeAnywhereInTheHead) {
  const std::string mark = "%PDF-";
  EXPECT_EQ(FormatOfDocument(std::string(DocumentHeadSize - mark.size(), ' ') + mark),
            DocumentFormat::Pdf);
  EXPECT_EQ(FormatOfDocument(std::string(DocumentHeadSize - mark.size() + 1, ' ') + mark),
            DocumentFormat::Unknown);
}

TEST(DocumentFormatTest, HasAnExtensionForTheQueue) {
  EXPECT_STREQ(ExtensionOfDocument("%!PS"), "ps");
  EXPECT_STREQ(ExtensionOfDocument("\xC5\xD0\xD3\xC6"), "eps");
  EXPECT_STREQ(ExtensionOfDocument("%PDF-1.4"), "pdf");
  EXPECT_STREQ(ExtensionOfDocument("\xFF\xD8\xFF"), "jpg");
  EXPECT_STREQ(ExtensionOfDocument("\x89PNG\r\n\x1A\n"), "png");
  EXPECT_STREQ(ExtensionOfDocument("?"), "");
}

}  // namespace
}  // namespace rastrel::server
