// The looks of spot colors in the descriptions of separated pages.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/children/rip_effects.h"

namespace rastrel::corerast::testing {
namespace {

// The look of that color on the page; "none" if the page does not have it, or no look of it.
std::string InkOf(const std::string& page, const std::string& name) {
  for (const pages::PagePlane& plane : CheckedInfo(page).planes) {
    if (plane.name != name || !plane.ink) continue;
    std::string text;
    for (const double part : *plane.ink) text += std::to_string(part).substr(0, 6) + " ";
    return text.substr(0, text.size() - 1);
  }
  return "none";
}

// Sets a separation at half its strength, and paints with it.
std::string Painted(const std::string& name, const std::string& space,
                    const std::string& function) {
  return "[/Separation " + name + " " + space + " {" + function +
         "}] setcolorspace 0.5 setcolor 0 0 50 50 rectfill\n";
}

class SpotInk : public ::testing::Test {
 protected:
  // The pages that the job makes as separations.
  [[nodiscard]] Names Separated(const std::string& name, const std::string& job,
                                std::size_t count) {
    return Pages(m_Bench.Run({m_Bench.Prefix("CMYK/300 dpi.ps"), m_Bench.File(name, job)}), count);
  }

  RipFixture m_Bench;
};

TEST_F(SpotInk, is_what_the_function_of_its_color_gives_at_full_strength) {
  REQUIRE_GHOSTSCRIPT();
  const std::string page =
      Separated(
          "job.ps",
          Page(72, 72,
               Painted("(Gold Ink)", "/DeviceCMYK", "dup 0.2 mul exch dup 0.3 mul exch 0.9 mul 0") +
                   Painted("(Night)", "/DeviceGray", "1 exch sub") +
                   Painted("(Leaf)", "/DeviceRGB", "1 exch sub dup 1 exch") +
                   "[/DeviceN [/One (Two) /Cyan] /DeviceCMYK {pop 0 0}] setcolorspace "
                   "0.5 0.2 0.1 setcolor 60 60 9 9 rectfill\n"),
          1)
          .front();
  EXPECT_EQ(InkOf(page, "Gold Ink"), "0.2000 0.3000 0.9000 0.0000");
  EXPECT_EQ(InkOf(page, "Night"), "0.0000 0.0000 0.0000 1.0000") << "no light is full black";
  EXPECT_EQ(InkOf(page, "One"), "1.0000 0.0000 0.0000 0.0000");
  EXPECT_EQ(InkOf(page, "Two"), "0.0000 1.0000 0.0000 0.0000");
  EXPECT_EQ(InkOf(page, "Cyan"), "none") << "a process color has no look of its own";
  // Green of RGB by the interpreter's own profiles: cyan and yellow, no magenta, no black.
  const std::string leaf = InkOf(page, "Leaf");
  EXPECT_GT(leaf, "0.4");
  EXPECT_EQ(leaf.substr(7), "0.0000 1.0000 0.0000");
}

TEST_F(SpotInk, is_each_page_s_own) {
  REQUIRE_GHOSTSCRIPT();
  const Names pages =
      Separated("job.ps",
                Page(72, 72, Painted("/Ink", "/DeviceCMYK", "0 0 0")) +
                    Page(72, 72, Painted("/Ink", "/DeviceCMYK", "0 exch 0 0")) + Page(72, 72, "") +
                    Page(72, 72, Painted("/Other", "/DeviceCMYK", "0 0 3 -1 roll 0")),
                4);
  EXPECT_EQ(InkOf(pages[0], "Ink"), "1.0000 0.0000 0.0000 0.0000");
  EXPECT_EQ(InkOf(pages[1], "Ink"), "0.0000 1.0000 0.0000 0.0000");
  EXPECT_EQ(InkOf(pages[2], "Ink"), "none");
  EXPECT_EQ(InkOf(pages[3], "Other"), "0.0000 0.0000 1.0000 0.0000");
}

// Separations by themselves, as parts of a set, and as parts of one that describes its colorants.
TEST_F(SpotInk, of_a_pdf_is_there_too) {
  REQUIRE_GHOSTSCRIPT();
  const std::string content =
      "/A cs 0.5 scn 0 0 50 50 re f /B cs 0.5 0.5 scn 60 60 9 9 re f /C cs 0.5 0.5 scn 90 90 9 9 "
      "re f";
  const std::string set = "<< /FunctionType 4 /Domain [0 1 0 1] /Range [0 1 0 1 0 1 0 1] /Length ";
  const std::string program = "{0 0}";
  const std::string pdf = PdfOf(
      {"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
       "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 100 100] /Contents 4 0 R /Resources << "
       "/ColorSpace << /A [/Separation /Gold#20Ink /DeviceCMYK 5 0 R] "
       "/B [/DeviceN [/One /Two] /DeviceCMYK 6 0 R] "
       "/C [/DeviceN [/Three /Four] /DeviceCMYK 6 0 R << /Subtype /NChannel /Colorants << "
       "/Three [/Separation /Three /DeviceCMYK 5 0 R] /Four [/Separation /Four /DeviceCMYK 5 0 R] "
       ">> >>] >> >> >>",
       PdfStream(content),
       "<< /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0.2 0.3 0.9 0] /N 1 >>",
       set + std::to_string(program.size()) + " >>\nstream\n" + program + "\nendstream"});
  const std::string page = Separated("job.pdf", pdf, 1).front();
  EXPECT_EQ(InkOf(page, "Gold Ink"), "0.2000 0.3000 0.9000 0.0000");
  EXPECT_EQ(InkOf(page, "One"), "1.0000 0.0000 0.0000 0.0000");
  EXPECT_EQ(InkOf(page, "Two"), "0.0000 1.0000 0.0000 0.0000");
  EXPECT_NE(InkOf(page, "Three"), "none");
  EXPECT_NE(InkOf(page, "Four"), "none");
}

TEST_F(SpotInk, comes_with_a_name_of_odd_bytes) {
  REQUIRE_GHOSTSCRIPT();
  const std::string page =
      Separated("job.ps",
                Page(72, 72,
                     Painted("(Gr\\374n)", "/DeviceCMYK", "0 0 0") +
                         Painted("(Gr\\303\\274n \\(UTF-8\\))", "/DeviceCMYK", "0 0 0") +
                         Painted("(a\" 100% ink = 1 2 3 4 CMYK)", "/DeviceCMYK", "0 0 0") +
                         Painted("(50 %s%n%%SeparationColor: \")", "/DeviceCMYK", "0 0 0")),
                1)
          .front();
  for (const char* name : {"Gr\xC3\xBCn", "Gr\xC3\xBCn (UTF-8)", "a\" 100% ink = 1 2 3 4 CMYK",
                           "50 %s%n%%SeparationColor: \""})
    EXPECT_EQ(InkOf(page, name), "1.0000 0.0000 0.0000 0.0000") << name;
}

TEST_F(SpotInk, without_any_ink_is_not_kept) {
  REQUIRE_GHOSTSCRIPT();
  const std::string job = Page(72, 72, Painted("/White", "/DeviceCMYK", "0 mul 0 0 0"));
  EXPECT_EQ(InkOf(Separated("job.ps", job, 1).front(), "White"), "none");
  // Reserved by the mode, and not painted in.
  const std::string reserved =
      Pages(m_Bench.Run({m_Bench.Prefix("Hexachrome/300 dpi.ps"), m_Bench.File("job.ps", job)}), 1)
          .front();
  EXPECT_EQ(InkOf(reserved, "Hexachrome Orange"), "none");
}

TEST_F(SpotInk, is_found_behind_a_line_that_the_job_has_left_open) {
  REQUIRE_GHOSTSCRIPT();
  const ProgramRun run =
      m_Bench.Run({m_Bench.Prefix("CMYK/300 dpi.ps"),
                   m_Bench.File("job.ps", "%!PS\n" + Painted("/Ink", "/DeviceCMYK", "0 0 0") +
                                              "(a line) print flush showpage\n")});
  const std::string page = Pages(run, 1).front();
  EXPECT_EQ(InkOf(page, "Ink"), "1.0000 0.0000 0.0000 0.0000");
  EXPECT_NE(run.reports.find("gs: a line\n"), std::string::npos) << run.reports;
  EXPECT_EQ(run.reports.find("SeparationColor"), std::string::npos) << run.reports;
}

// A job may print the same lines as the device. It spoils its own pages' colors at most.
TEST_F(SpotInk, that_a_job_invents_harms_no_page) {
  REQUIRE_GHOSTSCRIPT();
  std::string lines;
  for (int i = 0; i < 1000; ++i)
    lines += "(%%SeparationColor: \"" + std::to_string(i) + std::string(500, 'x') +
             "\" 100% ink = 1 2 3 4 CMYK) =\n";
  for (const char* ink : {"32761 0 0 0", "-1 0 0 0", "99999999999999999999 0 0 0", "1 2 3",
                          "1 2 3 4 5", "nan 0 0 0", "0x1 0 0 0", ""})
    lines += "(%%SeparationColor: \"Ink\" 100% ink = " + std::string(ink) + " CMYK) =\n";
  const std::string page =
      Separated("job.ps",
                "%!PS\n" + Painted("/Ink", "/DeviceCMYK", "0 0 0") + lines + "flush showpage\n", 1)
          .front();
  const std::string ink = InkOf(page, "Ink");
  EXPECT_TRUE(ink == "none" || ink == "1.0000 0.0000 0.0000 0.0000") << ink;
  const auto planes = CheckedInfo(page).planes;
  EXPECT_EQ(std::ranges::count_if(
                planes, [](const auto& plane) { return plane.name != "Ink" && plane.ink; }),
            0);
}

}  // namespace
}  // namespace rastrel::corerast::testing
