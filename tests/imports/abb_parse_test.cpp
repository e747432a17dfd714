// From a plate XML to records.

#include <gtest/gtest.h>

#include <cmath>

#include "tests/imports/abb_fixture.h"

namespace {

using rastrel::test::AbbTest;

class AbbParse : public AbbTest {
 protected:
  /// The first record of a document of these plates; the importer lives in the fixture.
  const tagABB_PLATE_DATA& First(std::string_view plates) {
    m_Importer = std::make_unique<CXMLFileImport>(Write(Template(plates)).c_str());
    const tagABB_PLATE_DATA* record = m_Importer->GetFirstPlate();
    static const tagABB_PLATE_DATA none;
    EXPECT_NE(record, nullptr);
    return record != nullptr ? *record : none;
  }
  /// How many records a document has, and whether it counts as parsed.
  static std::pair<int, bool> Parsed(const std::wstring& path) {
    CXMLFileImport importer(path.c_str());
    int records = 0;
    for (auto* record = importer.GetFirstPlate(); record != nullptr;
         record = importer.GetNextPlate())
      ++records;
    return {records, importer.ImportXMLFile() != 0};
  }

  std::unique_ptr<CXMLFileImport> m_Importer;
};

TEST_F(AbbParse, a_plate_has_the_values_of_its_elements) {
  const tagABB_PLATE_DATA& record = First(
      "<PLATE><COLOR> Red </COLOR><TOOLNAME>T1</TOOLNAME><WIDTH>4.25</WIDTH>"
      "<HEIGHT>2e0</HEIGHT><TEXTCOLOR>White</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME>"
      "<TEXT line='7' data='A b'><TOOLNAME>T2</TOOLNAME>"
      "<FONT name='Arial.ttf' size='.5'/></TEXT>"
      "<DRILLPOINT><COLOR>Green</COLOR><TOOLNAME>T3</TOOLNAME><XLOC>1</XLOC>"
      "<YLOC>-0.5</YLOC><DIAMETER>0.125</DIAMETER></DRILLPOINT></PLATE>");
  ASSERT_EQ(record.plates.size(), 1U);
  const tagABB_PLATE& plate = *record.plates.front();
  EXPECT_EQ(plate.color, L"Red");
  EXPECT_EQ(plate.toolName, L"T1");
  EXPECT_EQ(plate.width, 4.25);
  EXPECT_EQ(plate.height, 2.0);
  EXPECT_EQ(plate.textColor, L"White");
  EXPECT_EQ(plate.hasText, 1);
  EXPECT_EQ(plate.textFrame, 5);
  ASSERT_EQ(record.texts.size(), 1U);
  EXPECT_EQ(record.texts.front()->line, 7);
  EXPECT_EQ(record.texts.front()->data, L"A b");
  EXPECT_EQ(record.texts.front()->toolName, L"T2");
  EXPECT_EQ(record.texts.front()->fontName, L"Arial.ttf");
  EXPECT_EQ(record.texts.front()->size, 0.5);
  ASSERT_EQ(record.drillPoints.size(), 1U);
  EXPECT_EQ(record.drillPoints.front()->color, L"Green");
  EXPECT_EQ(record.drillPoints.front()->toolName, L"T3");
  EXPECT_EQ(record.drillPoints.front()->x, 1.0);
  EXPECT_EQ(record.drillPoints.front()->y, -0.5);
  EXPECT_EQ(record.drillPoints.front()->diameter, 0.125);
}

TEST_F(AbbParse, missing_values_are_empty_or_0) {
  const tagABB_PLATE_DATA& record = First("<PLATE><TEXT/><DRILLPOINT/></PLATE>");
  const tagABB_PLATE& plate = *record.plates.front();
  EXPECT_EQ(plate.color + plate.toolName + plate.textColor, L"");
  EXPECT_EQ(plate.width + plate.height, 0.0);
  EXPECT_EQ(plate.hasText, 0);
  EXPECT_EQ(plate.textFrame, 0);
  EXPECT_EQ(record.texts.front()->data + record.texts.front()->fontName, L"");
  EXPECT_EQ(record.texts.front()->size, 0.0);
  EXPECT_EQ(record.drillPoints.front()->diameter, 0.0);
}

TEST_F(AbbParse, texts_and_drill_points_keep_the_order_of_the_file) {
  const tagABB_PLATE_DATA& record = First(
      "<PLATE><TEXT line='2' data='b'/><DRILLPOINT><XLOC>1</XLOC></DRILLPOINT>"
      "<TEXT line='1' data='a'/><DRILLPOINT><XLOC>2</XLOC></DRILLPOINT></PLATE>");
  ASSERT_EQ(record.texts.size(), 2U);
  EXPECT_EQ(record.texts[0]->data + record.texts[1]->data, L"ba");
  ASSERT_EQ(record.drillPoints.size(), 2U);
  EXPECT_EQ(record.drillPoints[1]->x, 2.0);
}

TEST_F(AbbParse, an_element_that_comes_again_overwrites_and_an_empty_one_does_not) {
  const tagABB_PLATE_DATA& record =
      First("<PLATE><WIDTH>1</WIDTH><WIDTH>2</WIDTH><WIDTH/><COLOR>Red</COLOR><COLOR/></PLATE>");
  EXPECT_EQ(record.plates.front()->width, 2.0);
  EXPECT_EQ(record.plates.front()->color, L"Red");
}

TEST_F(AbbParse, numbers_are_read_as_far_as_they_are_numbers) {
  const tagABB_PLATE_DATA& record =
      First("<PLATE><WIDTH> 4in</WIDTH><HEIGHT>nan</HEIGHT><TEXTFRAME>5.9</TEXTFRAME></PLATE>");
  EXPECT_EQ(record.plates.front()->width, 4.0);
  EXPECT_EQ(record.plates.front()->height, 0.0);
  EXPECT_EQ(record.plates.front()->textFrame, 5);
}

TEST_F(AbbParse, elements_of_another_case_are_passed_over) {
  const tagABB_PLATE_DATA& record =
      First("<PLATE><Width>1</Width><TEXT Data='a'><font name='b'/></TEXT></PLATE>");
  EXPECT_EQ(record.plates.front()->width, 0.0);
  EXPECT_EQ(record.plates.front()->hasText, 0);
  EXPECT_EQ(record.texts.front()->fontName, L"");
}

TEST_F(AbbParse, one_line_that_is_not_empty_makes_a_plate_have_text) {
  EXPECT_EQ(First("<PLATE><TEXT data=''/><TEXT/></PLATE>").plates.front()->hasText, 0);
  EXPECT_EQ(First("<PLATE><TEXT data=''/><TEXT data=' '/></PLATE>").plates.front()->hasText, 1);
}

TEST_F(AbbParse, a_plate_inside_plates_is_not_seen) {
  const std::string plate = "<PLATE><WIDTH>1</WIDTH></PLATE>";
  EXPECT_EQ(
      Parsed(Write("<r><ENGRAVINGTEMPLATE><PLATES>" + plate + "</PLATES></ENGRAVINGTEMPLATE></r>")),
      std::pair(0, true));
}

TEST_F(AbbParse, without_plates_the_records_are_there_and_the_result_is_false) {
  EXPECT_EQ(Parsed(Write("<r><ENGRAVINGTEMPLATE><PLATE/><PLATE/></ENGRAVINGTEMPLATE></r>")),
            std::pair(2, false));
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(AbbParse, plates_may_come_after_the_plates_that_they_announce_and_in_another_template) {
  EXPECT_EQ(Parsed(Write("<r><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE>"
                         "<other/><ENGRAVINGTEMPLATE><PLATE/><PLATES/></ENGRAVINGTEMPLATE></r>")),
            std::pair(2, true));
}

TEST_F(AbbParse, a_root_without_a_template_child_gives_false) {
  EXPECT_EQ(Parsed(Write("<r><PLATES/><PLATE/></r>")), std::pair(0, false));
  EXPECT_EQ(Parsed(Write("<ENGRAVINGTEMPLATE><PLATES/><PLATE/></ENGRAVINGTEMPLATE>")),
            std::pair(0, false));
}

TEST_F(AbbParse, the_extension_is_xml_in_any_case_with_blanks_and_no_other) {
  const std::string document = Template("<PLATE/>");
  for (const char* name : {"a.xml", "a.XML", "a.b.Xml", "a. xml "})
    EXPECT_TRUE(Parsed(Write(document, name)).second) << name;
  for (const char* name : {"a.xmlx", "a.txt", "xml", "a.x.ml"})
    EXPECT_FALSE(Parsed(Write(document, name)).second) << name;
}

TEST_F(AbbParse, a_file_that_is_missing_or_is_no_document_gives_false) {
  EXPECT_FALSE(Parsed(m_Scratch.Wide("none.xml")).second);
  EXPECT_FALSE(Parsed(L"").second);
  EXPECT_EQ(CXMLFileImport(nullptr).ImportXMLFile(), 0);
  EXPECT_FALSE(Parsed(Write("")).second);
  EXPECT_FALSE(Parsed(Write(Template("<PLATE>"))).second);
  m_Scratch.Write("directory.xml/file", "");
  EXPECT_FALSE(Parsed(m_Scratch.Wide("directory.xml")).second);
  EXPECT_EQ(Calls().Text(), "");
}

// Each place of a text, with the text put in place of the @.
constexpr const char* TextPlaces[] = {
    "<PLATE><COLOR>@</COLOR></PLATE>",
    "<PLATE><TOOLNAME>@</TOOLNAME></PLATE>",
    "<PLATE><TEXTCOLOR>@</TEXTCOLOR></PLATE>",
    "<PLATE><TEXT data='@'/></PLATE>",
    "<PLATE><TEXT><TOOLNAME>@</TOOLNAME></TEXT></PLATE>",
    "<PLATE><TEXT><FONT name='@'/></TEXT></PLATE>",
    "<PLATE><DRILLPOINT><COLOR>@</COLOR></DRILLPOINT></PLATE>",
    "<PLATE><DRILLPOINT><TOOLNAME>@</TOOLNAME></DRILLPOINT></PLATE>"};

std::string WithText(std::string_view place, std::size_t characters) {
  std::string document(place);
  return document.replace(document.find('@'), 1, std::string(characters, 'x'));
}

TEST_F(AbbParse, a_text_has_at_most_255_characters) {
  for (const char* place : TextPlaces) {
    const std::string before = "<PLATE><WIDTH>1</WIDTH></PLATE>";
    for (const std::size_t characters : {254U, 255U})
      EXPECT_EQ(Parsed(Write(Template(before + WithText(place, characters)))), std::pair(2, true))
          << place << characters;
    for (const std::size_t characters : {256U, 257U, 100000U})
      EXPECT_EQ(Parsed(Write(Template(before + WithText(place, characters)))), std::pair(0, false))
          << place << characters;
  }
}

TEST_F(AbbParse, a_text_that_is_too_long_is_logged_with_its_element_and_length) {
  const std::wstring path = Write(Template(WithText(TextPlaces[3], 256)));
  EXPECT_EQ(CXMLFileImport(path.c_str()).ImportXMLFile(), 0);
  EXPECT_EQ(Log(), "[XML] " + m_Scratch.Path("plates.xml") +
                       ": the value of data has 256 characters, and its field has room for 255"
                       "\r\n");
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(AbbParse, the_walk_over_the_plates_ends_in_null_and_stays_there_until_it_begins_again) {
  const std::wstring path =
      Write(Template("<PLATE><WIDTH>1</WIDTH></PLATE><PLATE><WIDTH>2</WIDTH></PLATE>"));
  CXMLFileImport importer(path.c_str());
  const auto widthOf = [](const tagABB_PLATE_DATA* record) {
    return record == nullptr ? std::nan("") : record->plates.front()->width;
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(widthOf(importer.GetFirstPlate()), 1.0);
    EXPECT_EQ(widthOf(importer.GetNextPlate()), 2.0);
    EXPECT_EQ(importer.GetNextPlate(), nullptr);
    EXPECT_EQ(importer.GetNextPlate(), nullptr);
  }
  importer.GetFirstPlate();
  importer.ClearPlates();
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(importer.GetFirstPlate(), nullptr);
}

TEST_F(AbbParse, cleared_plates_are_not_imported_and_the_result_stays) {
  const std::wstring path = Write(Template(Plate("1", "1")));
  CXMLFileImport importer(path.c_str());
  importer.ClearPlates();
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), "BeginWaitCursor()\n");
}

TEST_F(AbbParse, a_file_that_ends_anywhere_inside_is_refused_as_a_whole) {
  const std::string document = Template(
      "<PLATE><WIDTH>1</WIDTH><TEXT data='a'><FONT name='b' size='1'/></TEXT>"
      "<DRILLPOINT><XLOC>1</XLOC></DRILLPOINT></PLATE>");
  for (std::size_t length = 0; length < document.size(); ++length)
    EXPECT_EQ(Parsed(Write(document.substr(0, length))), std::pair(0, false)) << length;
  EXPECT_EQ(Parsed(Write(document)).first, 1);
}

}  // namespace
