#include "interpreter/pdf_job.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "interpreter/password.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

PdfMessages Told(const std::vector<std::string>& lines) {
  PdfMessages messages;
  for (const std::string& line : lines) messages.Take(line);
  return messages;
}

std::string WhyNoPage(const std::vector<std::string>& lines) {
  const Failure failure = Told(lines).WhyNoPage();
  EXPECT_EQ(failure.code, FailureCode::BadInput);
  return Describe(failure);
}

// The lines are those of Ghostscript 10.00, of its newer PDF code and of its older one.
TEST(PdfMessages, a_password_that_is_missing_and_one_that_is_wrong_are_told_apart) {
  EXPECT_TRUE(
      WhyNoPage({"GPL Ghostscript 10.00.0: ", "   **** This file requires a password for access.",
                 "   **** Error: Couldn't initialise file."})
          .starts_with("The PDF is locked, and no password was given"));
  EXPECT_EQ(WhyNoPage({"   **** Error: Password did not work.",
                       "               Cannot decrypt PDF file."}),
            "The PDF is locked, and the password does not open it");
}

TEST(PdfMessages, damage_is_told_with_its_first_error) {
  EXPECT_EQ(WhyNoPage({"   **** Error: Couldn't initialise file.",
                       "               Output may be incorrect.",
                       "   No pages will be processed (FirstPage > LastPage)."}),
            "The PDF can't be read: it is damaged, incomplete, or no PDF (Ghostscript: Couldn't "
            "initialise file)");
  EXPECT_EQ(WhyNoPage({"   **** Error: Cannot find a 'startxref' anywhere in the file.",
                       "   **** Error:  An error occurred while reading an XREF table."}),
            "The PDF can't be read: it is damaged, incomplete, or no PDF (Ghostscript: Cannot find "
            "a 'startxref' anywhere in the file)");
}

TEST(PdfMessages, a_page_beyond_the_last_is_told_with_the_number_of_pages) {
  EXPECT_EQ(WhyNoPage({"Requested FirstPage is greater than the number of pages in the file: 2",
                       "   No pages will be processed (FirstPage > LastPage)."}),
            "The PDF has no page of the number that is asked for; it has 2");
}

TEST(PdfMessages, messages_that_are_not_known_count_as_damage) {
  EXPECT_EQ(WhyNoPage({}), "The PDF can't be read: it is damaged, incomplete, or no PDF");
  EXPECT_EQ(WhyNoPage({"something new"}),
            "The PDF can't be read: it is damaged, incomplete, or no PDF");
}

TEST(PdfMessages, a_pdf_without_pages_is_not_called_damaged) {
  EXPECT_EQ(WhyNoPage({"   **** Warning: PDF document has no pages."}), "The PDF has no page");
}

TEST(PdfMessages, a_warning_is_no_error) {
  EXPECT_EQ(Told({"   **** Warning: File has some garbage before %PDF- ."}).FirstError(), "");
  EXPECT_EQ(
      Told({"   **** Error: Page drawing error occurred.", "   **** Error: another."}).FirstError(),
      "Page drawing error occurred");
}

TEST(PdfBoxes, a_box_that_is_missing_falls_back_to_the_crop_box) {
  using Options = std::vector<std::string>;
  EXPECT_EQ(BoxOptions(PdfBox::Media), Options());
  EXPECT_EQ(BoxOptions(PdfBox::Crop), Options{"-dUseCropBox"});
  EXPECT_EQ(BoxOptions(PdfBox::Trim), (Options{"-dUseTrimBox", "-dUseCropBox"}));
  EXPECT_EQ(BoxOptions(PdfBox::Bleed), (Options{"-dUseBleedBox", "-dUseCropBox"}));
}

class Password : public ::testing::Test {
 protected:
  [[nodiscard]] std::string File(const std::string& content) const {
    const std::string path = m_Scratch.Path("password");
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  test::ScratchDirectory m_Scratch;
};

TEST_F(Password, is_the_first_line) {
  for (const char* const content : {"a word", "a word\n", "a word\r\n", "a word\nanother\n"}) {
    const auto password = ReadPassword(File(content));
    ASSERT_TRUE(password) << content;
    EXPECT_EQ(*password, "a word") << content;
  }
}

TEST_F(Password, that_is_empty_or_too_long_is_refused) {
  const std::string longest(MaximumPassword, 'x');
  EXPECT_TRUE(ReadPassword(File(longest + "\n")));
  for (const std::string& content : {std::string(), std::string("\nword\n"), longest + "x"}) {
    const auto password = ReadPassword(File(content));
    ASSERT_FALSE(password) << content;
    EXPECT_EQ(password.Error().code, FailureCode::BadInput);
  }
  EXPECT_FALSE(ReadPassword(m_Scratch.Path("none")));
}

// No byte of it can end the PostScript string: it is written in hexadecimal digits.
TEST_F(Password, of_any_bytes_is_one_postscript_string) {
  EXPECT_EQ(PasswordText(std::string_view(")\\\0\n\xFF", 5)),
            "userdict /PDFPassword <295c000aff> put\n");
  EXPECT_EQ(PasswordText(""), "");
}

TEST_F(Password, that_is_shared_can_be_read_again_and_again_while_it_lives) {
  std::string path;
  {
    const auto shared = SharedPassword::Read(File("a word\nmore\n"));
    ASSERT_TRUE(shared);
    path = shared->Path();
    EXPECT_EQ(ReadPassword(path).ValueOr(""), "a word");
    EXPECT_EQ(ReadPassword(path).ValueOr(""), "a word");
  }
  EXPECT_FALSE(ReadPassword(path));
}

}  // namespace
}  // namespace rastrel::interpreter
