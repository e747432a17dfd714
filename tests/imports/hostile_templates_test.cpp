// Templates that nobody means well with: the importers end, with little memory, and have either all
// of a file or nothing.

#include <sys/stat.h>

#include <cmath>

#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "tests/imports/template_fixture.h"

namespace {

constexpr std::string_view Cro =
    "<?xml version='1.0'?><ENGRAVINGTEMPLATE><METRIC yes='1'/><DRIVER>D<Setting Header='a'"
    " Name='b' Value='c'/></DRIVER><TEMPLATEGRAPHIC name='L'><FILE>l.svg</FILE></TEMPLATEGRAPHIC>"
    "<TEMPLATETEXT line='1'><HEIGHT>1</HEIGHT></TEMPLATETEXT><PLATES><PLATE><TEXT>A &amp; B</TEXT>"
    "<GRAPHIC>L</GRAPHIC></PLATE></PLATES></ENGRAVINGTEMPLATE>";
constexpr std::string_view Llx =
    "<?xml version='1.0'?><LLX><ENGRAVINGTEMPLATE><PLATE><WIDTH>4</WIDTH><GRAPHIC><FILE>l.svg"
    "</FILE></GRAPHIC><ARCTEXT><TEXT>A &amp; B</TEXT></ARCTEXT></PLATE></ENGRAVINGTEMPLATE></LLX>";
constexpr std::string_view BrightStar =
    "<?xml version='1.0'?><B><ENGRAVINGTEMPLATE><WIDTH>6</WIDTH><HEIGHT>4</HEIGHT>"
    "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='A.ttf' size='1'/><LINE>A &amp; B</LINE>"
    "</TEXTFRAME></ENGRAVINGTEMPLATE></B>";

std::string Repeated(int count, std::string_view text) {
  std::string all;
  all.reserve(static_cast<std::size_t>(count) * text.size());
  for (int index = 0; index < count; ++index) all += text;
  return all;
}

class HostileTemplates : public rastrel::test::TemplateTest {
 protected:
  HostileTemplates() { Calls().Limit(0); }

  bool CroTakes(std::string_view document) {
    return CCROFileImport(Write(document, "a.cro").c_str(), nullptr).m_bParsed;
  }
  bool LlxTakes(std::string_view document) {
    return CLLXFileImport(Write(document, "a.llx").c_str(), nullptr).m_bParsed;
  }
  bool BrightStarTakes(std::string_view document) {
    return CBrightStarXMLImport(Write(document, "a.xml").c_str()).ImportXMLFile() != 0;
  }
  void ExpectRefusedByAll(const std::string& inside) {
    EXPECT_FALSE(CroTakes("<ENGRAVINGTEMPLATE>" + inside + "</ENGRAVINGTEMPLATE>"));
    EXPECT_FALSE(
        LlxTakes("<A><ENGRAVINGTEMPLATE><PLATE>" + inside + "</PLATE></ENGRAVINGTEMPLATE></A>"));
    EXPECT_FALSE(BrightStarTakes("<A><ENGRAVINGTEMPLATE>" + inside + "</ENGRAVINGTEMPLATE></A>"));
  }
};

TEST_F(HostileTemplates, a_file_that_is_cut_anywhere_is_refused_whole) {
  ASSERT_TRUE(CroTakes(Cro) && LlxTakes(Llx) && BrightStarTakes(BrightStar));
  for (std::size_t length = 0; length < Cro.size(); ++length) {
    const CCROFileImport importer(Write(Cro.substr(0, length), "a.cro").c_str(), nullptr);
    ASSERT_FALSE(importer.m_bParsed) << length;
    ASSERT_TRUE(importer.m_PlateText.empty() && importer.m_Graphics.empty());
  }
  for (std::size_t length = 0; length < Llx.size(); ++length)
    ASSERT_FALSE(LlxTakes(Llx.substr(0, length))) << length;
  for (std::size_t length = 0; length < BrightStar.size(); ++length)
    ASSERT_FALSE(BrightStarTakes(BrightStar.substr(0, length))) << length;
}

TEST_F(HostileTemplates, a_byte_of_another_value_anywhere_ends_in_one_way_or_the_other) {
  for (std::size_t place = 0; place < Cro.size(); ++place) {
    for (const char byte : {'\0', '<', '&', '\xFF'}) {
      std::string document(Cro);
      document[place] = byte;
      CCROFileImport importer(Write(document, "a.cro").c_str(), nullptr);
      ASSERT_TRUE(importer.m_bParsed || importer.m_PlateText.empty());
      ASSERT_EQ(importer.m_PlateText.size(), importer.m_PlateGraphics.size());
    }
  }
}

TEST_F(HostileTemplates, a_hundred_thousand_plates_are_read_each_once) {
  const std::string plate =
      "<PLATE><TEXT>A</TEXT><TEXT>B</TEXT><GRAPHIC>L</GRAPHIC><TEMPLATETEXT line='1'/></PLATE>";
  CCROFileImport importer(Write("<ENGRAVINGTEMPLATE><PLATES>" + Repeated(100'000, plate) +
                                    "</PLATES></ENGRAVINGTEMPLATE>",
                                "a.cro")
                              .c_str(),
                          nullptr);
  int plates = 0;
  for (const CStringArray* lines = importer.GetFirstPlate(); lines != nullptr;
       lines = importer.GetNextPlate())
    plates += lines->GetSize() == 2 ? 1 : 0;
  EXPECT_EQ(plates, 100'000);
  EXPECT_EQ(importer.m_PlateOverrides.back().plate, 99'999);
}

TEST_F(HostileTemplates, a_hundred_thousand_records_of_the_other_formats_are_read_each_once) {
  const CLLXFileImport llx(Write("<A><ENGRAVINGTEMPLATE><PLATE>" +
                                     Repeated(100'000, "<GRAPHIC><X>1</X></GRAPHIC><ARCTEXT/>") +
                                     "</PLATE></ENGRAVINGTEMPLATE></A>",
                                 "a.llx")
                               .c_str(),
                           nullptr);
  EXPECT_EQ(llx.m_Graphics.size(), 100'000U);
  EXPECT_EQ(llx.m_ArcTexts.size(), 100'000U);
  EXPECT_TRUE(BrightStarTakes(
      "<A><ENGRAVINGTEMPLATE>" +
      Repeated(100'000, "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><LINE>A</LINE></TEXTFRAME>") +
      "</ENGRAVINGTEMPLATE></A>"));
}

TEST_F(HostileTemplates, texts_of_ten_megabytes_are_read_where_no_field_limits_them) {
  const std::string text(10 << 20, 'x');
  CCROFileImport cro(Write("<ENGRAVINGTEMPLATE><PLATES><PLATE><TEXT>" + text +
                               "</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>",
                           "a.cro")
                         .c_str(),
                     nullptr);
  ASSERT_TRUE(cro.m_bParsed);
  EXPECT_EQ(cro.GetFirstPlate()->GetAt(0).size(), text.size());
  EXPECT_TRUE(LlxTakes("<A><ENGRAVINGTEMPLATE><PLATE><ARCTEXT><TEXT>" + text +
                       "</TEXT></ARCTEXT></PLATE></ENGRAVINGTEMPLATE></A>"));
  EXPECT_TRUE(
      BrightStarTakes("<A><ENGRAVINGTEMPLATE><TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><LINE>" + text +
                      "</LINE></TEXTFRAME></ENGRAVINGTEMPLATE></A>"));
  EXPECT_FALSE(BrightStarTakes("<A><ENGRAVINGTEMPLATE><ORIGIN>" + text +
                               "</ORIGIN></ENGRAVINGTEMPLATE></A>"));
}

TEST_F(HostileTemplates, ten_megabytes_in_one_attribute_are_refused) {
  ExpectRefusedByAll("<TEMPLATEGRAPHIC name='" + std::string(10 << 20, 'x') + "'/>");
}

TEST_F(HostileTemplates, deep_nesting_is_refused) {
  ExpectRefusedByAll(Repeated(100'000, "<a>"));
  ExpectRefusedByAll(Repeated(1000, "<a>") + Repeated(1000, "</a>"));
}

TEST_F(HostileTemplates, entities_and_document_types_are_refused) {
  const std::string bomb =
      "<!DOCTYPE a [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>]>";
  EXPECT_FALSE(CroTakes(bomb + "<ENGRAVINGTEMPLATE>&b;</ENGRAVINGTEMPLATE>"));
  EXPECT_FALSE(LlxTakes(bomb + "<A>&b;</A>"));
  EXPECT_FALSE(BrightStarTakes(bomb + "<A>&b;</A>"));
}

TEST_F(HostileTemplates, a_file_that_only_repairs_can_read_takes_time_in_proportion) {
  // Each reference and each letter is of no use to the repair, and the text is read twice.
  const std::string text = Repeated(1'000'000, "&amp;\xE9");
  CCROFileImport importer(Write("<? xml version='1.0'?><ENGRAVINGTEMPLATE><PLATES><PLATE><TEXT>" +
                                    text + "</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>",
                                "a.cro")
                              .c_str(),
                          nullptr);
  ASSERT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.GetFirstPlate()->GetAt(0).size(), 2'000'000U);
}

TEST_F(HostileTemplates, files_of_other_kinds_are_refused_and_never_waited_for) {
  std::filesystem::create_directory(m_Scratch.Path("folder.cro"));
  ASSERT_EQ(::mkfifo(m_Scratch.Path("pipe.cro").c_str(), 0600), 0);
  ASSERT_EQ(::mkfifo(m_Scratch.Path("pipe.llx").c_str(), 0600), 0);
  ASSERT_EQ(::mkfifo(m_Scratch.Path("pipe.xml").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", m_Scratch.Path("device.cro"));
  std::filesystem::create_symlink("loop.cro", m_Scratch.Path("loop.cro"));
  for (const char* name : {"folder.cro", "pipe.cro", "device.cro", "loop.cro"})
    EXPECT_FALSE(CCROFileImport(m_Scratch.Wide(name).c_str(), nullptr).m_bParsed) << name;
  EXPECT_FALSE(CLLXFileImport(m_Scratch.Wide("pipe.llx").c_str(), nullptr).m_bParsed);
  EXPECT_EQ(CBrightStarXMLImport(m_Scratch.Wide("pipe.xml").c_str()).ImportXMLFile(), 0);
}

TEST_F(HostileTemplates, numbers_beyond_all_measure_reach_the_host_as_they_are) {
  EXPECT_TRUE(BrightStarTakes(
      "<A><ENGRAVINGTEMPLATE><WIDTH>1e999</WIDTH><HEIGHT>-1e999</HEIGHT>"
      "<TEXTFRAME UPPERXLOC='1e999' UPPERYLOC='-1e308' LOWERXLOC='-1e999' LOWERYLOC='1e-999'>"
      "<FONT name='A' size='1e999'/><LINE>A</LINE></TEXTFRAME></ENGRAVINGTEMPLATE></A>"));
}

}  // namespace
