#include "cli/document/template_format.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "cli/console/options.h"
#include "rastrel/xml/layer.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

Expected<TemplateFormat> OfContent(const std::wstring& content) {
  return FormatOfRoot(LoadXmlString(content));
}

TEST(TemplateFormat, plate_xml_and_bright_star_differ_by_the_children_of_the_template) {
  EXPECT_EQ(*OfContent(L"<A><ENGRAVINGTEMPLATE><PLATES/></ENGRAVINGTEMPLATE></A>"),
            TemplateFormat::Abb);
  EXPECT_EQ(*OfContent(L"<A><ENGRAVINGTEMPLATE><TEXTFRAME/></ENGRAVINGTEMPLATE></A>"),
            TemplateFormat::BrightStar);
}

TEST(TemplateFormat, the_choices_of_the_option_are_all_formats) {
  std::istringstream words(OptionOf(OptionId::Format).choices);
  std::set<TemplateFormat> formats;
  for (std::string word; words >> word;) {
    const auto format = FormatNamed(word);
    ASSERT_TRUE(format) << word;
    formats.insert(*format);
  }
  EXPECT_EQ(formats.size(), 7U);
}

TEST(TemplateFormat, a_template_with_plates_and_text_frames_needs_a_format) {
  const auto both =
      OfContent(L"<A><ENGRAVINGTEMPLATE><PLATES/><TEXTFRAME/></ENGRAVINGTEMPLATE></A>");
  ASSERT_FALSE(both);
  EXPECT_NE(Describe(both.Error()).find("`--format` says which it is"), std::string::npos);
}

TEST(TemplateFormat, a_template_with_neither_needs_a_format) {
  const auto neither = OfContent(L"<A><ENGRAVINGTEMPLATE><WIDTH/></ENGRAVINGTEMPLATE></A>");
  ASSERT_FALSE(neither);
  EXPECT_NE(Describe(neither.Error()).find("`--format` reads it all the same"), std::string::npos);
}

TEST(TemplateFormat, one_plate_with_graphics_or_arc_text_is_llx) {
  for (const wchar_t* inside : {L"<GRAPHIC/>", L"<ARCTEXT/>", L"<ORIGIN/>"}) {
    EXPECT_EQ(*OfContent(L"<A><ENGRAVINGTEMPLATE><PLATE>" + std::wstring(inside) +
                         L"</PLATE></ENGRAVINGTEMPLATE></A>"),
              TemplateFormat::Llx);
  }
  EXPECT_EQ(*OfContent(L"<A><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE></A>"),
            TemplateFormat::Abb);
}

TEST(TemplateFormat, a_root_that_is_the_template_is_cro) {
  EXPECT_EQ(*OfContent(L"<ENGRAVINGTEMPLATE><PLATES/></ENGRAVINGTEMPLATE>"), TemplateFormat::Cro);
}

TEST(TemplateFormat, crown_trophy_has_a_table_size_and_its_second_generation_units) {
  EXPECT_EQ(*OfContent(L"<engraving_template><table_size/></engraving_template>"),
            TemplateFormat::Cr2);
  EXPECT_EQ(*OfContent(L"<engraving_template><Units>mm</Units></engraving_template>"),
            TemplateFormat::Zml);
  EXPECT_EQ(*OfContent(L"<ENGRAVINGTEMPLATE><table_size/></ENGRAVINGTEMPLATE>"),
            TemplateFormat::Zml);
}

TEST(TemplateFormat, an_extension_of_one_format_counts_even_where_the_content_is_refused) {
  const test::ScratchDirectory place;
  const struct {
    const char* name;
    TemplateFormat format;
  } files[] = {{"a.cro", TemplateFormat::Cro},   {"a.CRX", TemplateFormat::Cro},
               {"a.cml", TemplateFormat::Cro},   {"a.llx", TemplateFormat::Llx},
               {"a.cr2", TemplateFormat::Cr2},   {"a.b.ZML", TemplateFormat::Zml},
               {"a. cr2 ", TemplateFormat::Cr2}, {"a.rdoc", TemplateFormat::Document}};
  for (const auto& file : files) {
    place.Write(file.name, "\xFF<? xml version='1.0'?><a &trade;>");
    const auto format = FormatOfFile(place.Path(file.name));
    ASSERT_TRUE(format) << file.name;
    EXPECT_EQ(*format, file.format) << file.name;
  }
  place.Write("a.xml", "<a");
  EXPECT_FALSE(FormatOfFile(place.Path("a.xml")));
}

TEST(TemplateFormat, each_name_leads_to_its_format_and_back) {
  for (const char* name : {"document", "abb", "bright-star", "cro", "llx", "cr2", "zml"})
    EXPECT_EQ(NameOf(*FormatNamed(name)), name);
  const auto unknown = FormatNamed("plates");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(Describe(unknown.Error()),
            "there is no format 'plates'; there are document, abb, bright-star, cro, llx, cr2, "
            "zml");
}

TEST(TemplateFormat, readers_take_their_extensions_alone) {
  EXPECT_TRUE(HasReaderExtension(TemplateFormat::Cro, "a/b.xml"));
  EXPECT_FALSE(HasReaderExtension(TemplateFormat::Cr2, "a/b.xml"));
  EXPECT_TRUE(HasReaderExtension(TemplateFormat::Document, "a/b.xml"));
  EXPECT_FALSE(HasReaderExtension(TemplateFormat::Llx, "a.llx/b"));
}

}  // namespace
}  // namespace rastrel::cli
