#include "host/text/font_catalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "rastrel/platform/host/text_compose.h"

namespace rastrel::text {
namespace {

class FontCatalogTest : public testing::Test {
 protected:
  [[nodiscard]] FontFace Face(const std::wstring& name) {
    return m_Fonts.FaceOf(host::FONTTYPE_TRUETYPE, name);
  }
  document::Notices m_Notices;
  FontCatalog m_Fonts{m_Notices};
};

TEST_F(FontCatalogTest, a_font_is_found_by_the_name_of_its_file_in_any_case) {
  for (const wchar_t* name : {L"DejaVuSans-Bold", L"dejavusans-bold", L"DEJAVUSANS-BOLD"}) {
    const FontFace face = Face(name);
    EXPECT_FALSE(face.replaced);
    EXPECT_EQ(face.family, "DejaVu Sans");
    EXPECT_EQ(face.weight, 700);
    EXPECT_FALSE(face.italic);
    EXPECT_EQ(face.stretch, 4);
  }
}

TEST_F(FontCatalogTest, a_font_is_found_by_its_family_and_by_family_and_style) {
  EXPECT_EQ(Face(L"DejaVu Serif").family, "DejaVu Serif");
  EXPECT_EQ(Face(L"DejaVu Serif").weight, 400);
  EXPECT_EQ(Face(L"DejaVu Serif Bold").weight, 700);
  EXPECT_EQ(Face(L"dejavu sans mono").family, "DejaVu Sans Mono");
}

TEST_F(FontCatalogTest, a_family_means_its_regular_font_and_no_narrow_or_light_one) {
  const FontFace face = Face(L"DejaVu Sans");
  EXPECT_EQ(face.weight, 400);
  EXPECT_EQ(face.stretch, 4);
  EXPECT_FALSE(face.italic);
}

TEST_F(FontCatalogTest, a_narrow_font_stays_narrow) {
  const FontFace face = Face(L"DejaVuSansCondensed");
  if (face.replaced) GTEST_SKIP() << "fonts-dejavu-extra is not installed";
  EXPECT_LT(face.stretch, 4);
  EXPECT_EQ(Face(L"DejaVu Sans Condensed").stretch, face.stretch) << "its family name of its own";
}

TEST_F(FontCatalogTest, a_missing_font_is_replaced_and_reported_once) {
  const Font* first = m_Fonts.Get(host::FONTTYPE_TRUETYPE, L"No Such Font");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(m_Fonts.Get(host::FONTTYPE_TRUETYPE, L"No Such Font"), first);
  EXPECT_EQ(first->replacement, L"DejaVu Sans");
  EXPECT_EQ(first->name, L"No Such Font");
  const Font* other = m_Fonts.Get(host::FONTTYPE_CFF, L"No Such Font");
  EXPECT_NE(other, first) << "another question";
  EXPECT_EQ(m_Notices.Texts(),
            std::vector<std::wstring>{
                L"the font \"No Such Font\" can't be had; DejaVu Sans stands in for it"});
}

TEST_F(FontCatalogTest, a_font_that_is_there_is_not_reported) {
  EXPECT_EQ(m_Fonts.Get(host::FONTTYPE_TRUETYPE, L"DejaVuSans")->replacement, L"");
  EXPECT_TRUE(m_Notices.Texts().empty());
}

TEST_F(FontCatalogTest, engraving_fonts_are_replaced_whatever_their_name) {
  for (const int type : {host::FONTTYPE_WFN, host::FONTTYPE_VEF, host::FONTTYPE_FNT,
                         host::FONTTYPE_SHX, host::FONTTYPE_CHR, host::FONTTYPE_BE}) {
    EXPECT_TRUE(m_Fonts.FaceOf(type, L"DejaVuSans").replaced) << type;
  }
}

TEST_F(FontCatalogTest, a_font_that_was_chosen_replaces_a_missing_one_in_any_spelling) {
  ASSERT_TRUE(m_Fonts.Replace(L"No Such Font", L"dejavu serif bold"));
  const FontFace face = Face(L"NOSUCH-FONT");
  EXPECT_TRUE(face.replaced);
  EXPECT_EQ(face.family, "DejaVu Serif");
  EXPECT_EQ(face.weight, 700);
  EXPECT_EQ(Face(L"Another Missing Font").family, "DejaVu Sans");
  EXPECT_FALSE(Face(L"DejaVuSans").replaced);
}

TEST_F(FontCatalogTest, a_replacement_that_is_missing_too_is_refused) {
  const auto refused = m_Fonts.Replace(L"No Such Font", L"None Either");
  ASSERT_FALSE(refused);
  EXPECT_EQ(Describe(refused.Error()), "the font \"None Either\" is not on this machine");
  EXPECT_FALSE(m_Fonts.Replace(L"No Such Font", L""));
  EXPECT_FALSE(m_Fonts.IsChosen(L"No Such Font"));
}

TEST_F(FontCatalogTest, a_font_that_is_there_is_not_replaced_by_a_chosen_one) {
  ASSERT_TRUE(m_Fonts.Replace(L"DejaVu Sans Mono", L"DejaVu Serif"));
  EXPECT_EQ(Face(L"DejaVu Sans Mono").family, "DejaVu Sans Mono");
}

TEST_F(FontCatalogTest, the_replacement_that_a_document_names_comes_before_the_chosen_one) {
  ASSERT_TRUE(m_Fonts.Replace(L"No Such Font", L"DejaVu Serif"));
  const auto face = [&](const wchar_t* replacement) {
    return m_Fonts.FaceOf(host::FONTTYPE_TRUETYPE, L"No Such Font", replacement).family;
  };
  EXPECT_EQ(face(L"DejaVu Sans Mono"), "DejaVu Sans Mono");
  EXPECT_EQ(face(L"Missing As Well"), "DejaVu Serif");
  EXPECT_EQ(face(L""), "DejaVu Serif");
}

TEST_F(FontCatalogTest, families_are_sorted_and_each_is_there_once) {
  const auto families = m_Fonts.Families();
  EXPECT_NE(std::ranges::find(families, L"DejaVu Sans"), families.end());
  EXPECT_EQ(std::ranges::adjacent_find(families, std::greater_equal<>()), families.end());
}

TEST_F(FontCatalogTest, an_empty_name_is_no_font) { EXPECT_TRUE(Face(L"").replaced); }

}  // namespace
}  // namespace rastrel::text
