#include "cli/input/input_file.h"

#include <gtest/gtest.h>

#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

TEST(SafeJobName, keeps_an_ordinary_name_without_its_extension) {
  EXPECT_EQ(SafeJobName("shopfront.ps"), "shopfront");
  EXPECT_EQ(SafeJobName("two words.v2.eps"), "two words.v2");
  EXPECT_EQ(SafeJobName("noextension"), "noextension");
  EXPECT_EQ(SafeJobName("Schild \xC3\xA4.ps"), "Schild \xC3\xA4");
}

TEST(SafeJobName, replaces_characters_that_a_prefix_a_command_line_or_a_path_can_not_hold) {
  EXPECT_EQ(SafeJobName("a\\b(c)\"d'e\nf\x1bg.ps"), "a_b_c__d_e_f_g");
  EXPECT_EQ(SafeJobName("bad\xFFutf8.ps"), "bad_utf8");
  EXPECT_EQ(SafeJobName("job (1).ps"), "job _1_");
  EXPECT_EQ(SafeJobName("a\u202Esp.b\u2028c\u200B.ps"), "a_sp.b_c_");
}

TEST(SafeJobName, strips_dots_dashes_and_blanks_at_the_front_and_at_the_end) {
  EXPECT_EQ(SafeJobName("..hidden.ps"), "hidden");
  EXPECT_EQ(SafeJobName("--option.ps"), "option");
  EXPECT_EQ(SafeJobName(".ps"), "ps");
  EXPECT_EQ(SafeJobName("name . .ps"), "name");
}

TEST(SafeJobName, is_never_empty) {
  for (const char* name : {"", ".", "..", "---", " . "}) EXPECT_EQ(SafeJobName(name), "job");
}

TEST(SafeJobName, cuts_a_long_name_between_two_characters) {
  EXPECT_EQ(SafeJobName(std::string(300, 'x')), std::string(150, 'x'));
  std::string umlauts = "x";
  for (int count = 0; count < 100; ++count) umlauts += "\xC3\xA4";
  const std::string cut = SafeJobName(umlauts);
  EXPECT_EQ(cut.size(), 149U);
  EXPECT_EQ(cut, umlauts.substr(0, 149));
}

class InspectInputTest : public ::testing::Test {
 protected:
  std::string ExtensionOf(std::string_view content) const {
    m_Place.Write("file", content);
    const auto input = InspectInput(m_Place.Path("file"));
    return input ? input->extension : Describe(input.Error());
  }
  void ExpectRefused(const std::string& path) const {
    const auto input = InspectInput(path);
    ASSERT_FALSE(input) << path << " was taken";
    EXPECT_NE(Describe(input.Error()).find(path), std::string::npos) << Describe(input.Error());
  }
  test::ScratchDirectory m_Place;
};

TEST_F(InspectInputTest, knows_the_kinds_by_their_content) {
  EXPECT_EQ(ExtensionOf("%!PS-Adobe-3.0\nshowpage\n"), ".ps");
  EXPECT_EQ(ExtensionOf("%!PS-Adobe-3.0 EPSF-3.0\n"), ".eps");
  EXPECT_EQ(ExtensionOf("%PDF-1.7\n"), ".pdf");
  EXPECT_EQ(ExtensionOf("\x04%!PS\n"), ".ps");
  EXPECT_EQ(ExtensionOf("\x1b%-12345X@PJL ENTER LANGUAGE=POSTSCRIPT\n%!PS\n"), ".ps");
}

TEST_F(InspectInputTest, takes_the_eps_form_with_a_binary_header) {
  std::string file("\xC5\xD0\xD3\xC6\x20\0\0\0\x06\0\0\0", 12);
  file.resize(32, '\0');
  EXPECT_EQ(ExtensionOf(file + "%!PS\n\n"), ".eps");
}

TEST_F(InspectInputTest, refuses_missing_empty_and_other_files) {
  ExpectRefused(m_Place.Path("missing"));
  ExpectRefused(m_Place.Path());
  ExpectRefused("/dev/null");
  m_Place.Write("empty", "");
  ExpectRefused(m_Place.Path("empty"));
  m_Place.Write("text", "Dear customer,\n");
  ExpectRefused(m_Place.Path("text"));
  m_Place.Write("file", "%!PS");
  ExpectRefused(m_Place.Path("file/below"));
}

}  // namespace
}  // namespace rastrel::cli
