#include <gmock/gmock.h>

#include "host/document_host.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/settings.h"
#include "tests/host/graphics/vector_file.h"
#include "tests/host/render/hostile_files.h"
#include "tests/support/environment_guard.h"

/// Letters of a PDF, and PostScript whose page is open: files that the interpreter makes ready.
namespace rastrel::graphics {
namespace {

using document::Object;
using document::PathShape;
using testing::HasSubstr;

// --- Letters of a PDF ---

constexpr LoadOptions TextAsGraphics{false, true};
constexpr double Point = 2.54 / 72;
// A distiller writes hundredths of points.
constexpr double Distilled = 0.02 * Point;

// A page of 400 by 300 points with that content, in which /F is the font.
std::string LetterPage(const std::string& font, const std::string& content,
                       const std::string& more = "") {
  return test::PdfOf({"<</Type /Catalog /Pages 2 0 R>>", "<</Type /Pages /Kids [3 0 R] /Count 1>>",
                      "<</Type /Page /Parent 2 0 R /MediaBox [0 0 400 300] " + more +
                          " /Contents 4 0 R /Resources <</Font <</F 5 0 R>>>>>>",
                      test::PdfStream("", content), font,
                      test::PdfStream("", "1000 0 100 0 700 500 d1 100 0 600 500 re f")});
}

const std::string Helvetica = "<</Type /Font /Subtype /Type1 /BaseFont /Helvetica>>";
// Its letter H is a box from 0.1, 0 to 0.7, 0.5 of its size.
const std::string BoxFont =
    "<</Type /Font /Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /FontBBox [0 0 1000 1000] "
    "/CharProcs <</H 6 0 R>> /Encoding <</Type /Encoding /Differences [72 /H]>> /FirstChar 72 "
    "/LastChar 72 /Widths [1000] /Resources <<>>>>";

TEST_F(VectorFile, letters_of_a_pdf_become_paths_where_text_is_graphics) {
  const std::string page =
      LetterPage(BoxFont, "1 0 0 rg BT /F 100 Tf 50 60 Td (H) Tj /F 10 Tf 200 0 Td (H) Tj ET");
  const auto objects = Loaded(page, TextAsGraphics);
  ASSERT_EQ(objects.size(), 2U);
  ExpectBounds(objects[0], 60 * Point, 60 * Point, 120 * Point, 110 * Point, Distilled);
  ExpectBounds(objects[1], 251 * Point, 60 * Point, 257 * Point, 65 * Point, Distilled);
  for (const Object& object : objects) {
    EXPECT_TRUE(std::holds_alternative<PathShape>(object.shape));
    EXPECT_EQ(ColorOf(object.attributes.layer), 0xFF0000);
    EXPECT_EQ(LineKind(object), LINESTYLE_NONE);
  }
}

// The font's metrics say of its H: from 83, 0 to 644, 729 of 1000.
TEST_F(VectorFile, a_letter_of_a_font_has_the_bounds_of_its_outline) {
  const auto objects =
      Loaded(LetterPage(Helvetica, "BT /F 100 Tf 50 60 Td (H) Tj ET"), TextAsGraphics);
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 58.3 * Point, 60 * Point, 114.4 * Point, 132.9 * Point, 0.05 * Point);
}

TEST_F(VectorFile, letters_of_a_pdf_stay_on_the_page_that_its_crop_box_shows) {
  const std::string content = "BT /F 100 Tf 50 60 Td (H) Tj ET";
  const auto cropped =
      Loaded(LetterPage(BoxFont, content, "/CropBox [40 50 240 250]"), TextAsGraphics);
  ASSERT_EQ(cropped.size(), 1U);
  ExpectBounds(cropped[0], 20 * Point, 10 * Point, 80 * Point, 60 * Point, Distilled);
  // Turned clockwise by a quarter: x becomes y, and y goes to the left of the 300 that the page is
  // wide then.
  const auto turned = Loaded(LetterPage(BoxFont, content, "/Rotate 90"), TextAsGraphics);
  ASSERT_EQ(turned.size(), 1U);
  ExpectBounds(turned[0], 60 * Point, (400 - 120) * Point, 110 * Point, (400 - 60) * Point,
               Distilled);
}

TEST_F(VectorFile, letters_that_lie_on_their_side_do_not_turn_the_page) {
  const auto objects =
      Loaded(LetterPage(BoxFont, "BT 0 100 -100 0 350 60 Tm /F 1 Tf (H) Tj ET"), TextAsGraphics);
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 300 * Point, 70 * Point, 350 * Point, 130 * Point, Distilled);
}

TEST_F(VectorFile, a_pdf_whose_letters_are_drawings_stays_a_picture) {
  EXPECT_EQ(KeptBecause(LetterPage(BoxFont, "BT /F 100 Tf 50 60 Td (H) Tj ET")),
            "it has letters in a font");
}

TEST_F(VectorFile, a_pdf_with_letters_and_more_stays_a_picture_for_the_rest) {
  EXPECT_EQ(KeptBecause(LetterPage(Helvetica,
                                   "BT /F 40 Tf 50 50 Td (Sign) Tj ET [9 3] 0 d 10 10 m 90 90 l S"),
                        TextAsGraphics),
            "it has dashed lines");
}

TEST_F(VectorFile, without_the_interpreter_letters_of_a_pdf_stay_a_picture_and_say_why) {
  const test::EnvironmentGuard path("PATH", "/nowhere");
  EXPECT_EQ(KeptBecause(LetterPage(Helvetica, "BT /F 40 Tf 50 50 Td (Sign) Tj ET"), TextAsGraphics),
            "it has letters in a font, which can't become paths: Ghostscript is needed for the "
            "letters of a PDF, and there is no program gs on PATH");
}

TEST_F(VectorFile, a_file_is_read_again_where_text_becomes_graphics) {
  m_Directory.Write("page.pdf", LetterPage(BoxFont, "BT /F 100 Tf 50 60 Td (H) Tj ET"));
  GraphicLoader loader(m_Document, m_Notices);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(loader.Load(m_Directory.Wide("page.pdf")), 1);
    ASSERT_EQ(loader.Load(m_Directory.Wide("page.pdf"), TextAsGraphics), 1);
  }
  EXPECT_EQ(loader.FilesRead(), 2U);
}

struct InstalledHost {
  explicit InstalledHost(host::Host& host) { host::SetHost(&host); }
  ~InstalledHost() { host::SetHost(nullptr); }
  InstalledHost(const InstalledHost&) = delete;
  InstalledHost& operator=(const InstalledHost&) = delete;
};

TEST_F(VectorFile, the_loader_obeys_the_setting_of_the_time_of_the_load) {
  const test::EnvironmentGuard root("RASTREL_HOME", m_Directory.Path());
  document::DocumentHost host;
  const InstalledHost installed(host);
  m_Directory.Write("page.pdf", LetterPage(BoxFont, "BT /F 100 Tf 50 60 Td (H) Tj ET"));
  const auto isPath = [&] {
    EXPECT_EQ(host.GetApplication()->LoadTHZ(nullptr, nullptr, m_Directory.Wide("page.pdf").c_str(),
                                             1, 0),
              1);
    const auto& selection = host.GetDocument().Selection();
    EXPECT_EQ(selection.size(), 1U);
    return std::holds_alternative<PathShape>(host.GetDocument().Find(selection.back())->shape);
  };
  EXPECT_FALSE(isPath()) << "letters stay letters by default";
  ASSERT_NE(WriteIntKorvane(L"IMPPDF", L"TextAsGraphics", 1, DS_USER, nullptr), 0);
  EXPECT_TRUE(isPath());
  ASSERT_NE(WriteIntKorvane(L"IMPPDF", L"TextAsGraphics", 0, DS_USER, nullptr), 0);
  EXPECT_FALSE(isPath());
}

// --- PostScript without showpage ---

TEST_F(VectorFile, marks_without_showpage_are_a_page_around_them) {
  for (const char* head : {"%!PS\n", "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 0 0\n"}) {
    const auto objects = Loaded(std::string(head) + "1 0 0 setrgbcolor -30 1200 50 20 rectfill\n");
    ASSERT_EQ(objects.size(), 1U);
    // The measure is that of a print: up to a dot of 2400 to the inch more.
    ExpectBounds(objects[0], 0, 0, 50 * Point, 20 * Point, 0.05 * Point);
    EXPECT_EQ(ColorOf(objects[0].attributes.layer), 0xFF0000);
  }
}

TEST_F(VectorFile, marks_without_showpage_are_where_they_lie_on_the_sheet_that_is_set) {
  const auto objects =
      Loaded("%!PS\n<< /PageSize [400 300] >> setpagedevice\n100 200 50 20 rectfill\n");
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 100 * Point, 200 * Point, 150 * Point, 220 * Point, Distilled);
}

TEST_F(VectorFile, marks_after_the_last_showpage_are_no_page) {
  const auto objects = Loaded(
      "%!PS\n<< /PageSize [400 300] >> setpagedevice\n"
      "100 200 50 20 rectfill showpage 0 0 9 9 rectfill\n");
  ASSERT_EQ(objects.size(), 1U);
  ExpectBounds(objects[0], 100 * Point, 200 * Point, 150 * Point, 220 * Point, Distilled);
}

TEST_F(VectorFile, postscript_without_marks_and_showpage_is_refused) {
  const std::string reason = "it has neither marks nor showpage, so there is no page";
  EXPECT_THAT(Refusal("%!PS\n1 2 add pop\n"), HasSubstr(reason));
  EXPECT_THAT(Refusal("%!PS\n%%BoundingBox: 0 0 10 10\n"), HasSubstr(reason));
}

}  // namespace
}  // namespace rastrel::graphics
