// From a BrightStar template to its records.

#include <cmath>

#include "tests/imports/bright_star_fixture.h"

namespace {

using Lines = std::vector<std::wstring>;

class BrightStarParse : public rastrel::test::BrightStarTest {
 protected:
  /// The first record of a template of these children.
  const tagBRIGHT_STAR_DATA& First(std::string_view children) {
    const tagBRIGHT_STAR_DATA* record = Record(Parse(children).GetFirstPlate());
    static const tagBRIGHT_STAR_DATA none;
    EXPECT_NE(record, nullptr);
    return record != nullptr ? *record : none;
  }
  const tagTEXTFRAME& Frame(const std::string& attributes, const std::string& children = {}) {
    return *First("<TEXTFRAME " + attributes + ">" + children + "</TEXTFRAME>").textFrames.at(0);
  }
  void ExpectRefused(std::string_view document, std::string_view name = "template.xml") {
    CBrightStarXMLImport& importer = Read(document, name);
    EXPECT_EQ(importer.GetFirstPlate(), nullptr) << document;
    EXPECT_EQ(importer.ImportXMLFile(), 0);
    EXPECT_EQ(Calls().Text(), "");
  }
};

TEST_F(BrightStarParse, a_template_has_the_values_of_its_elements) {
  const tagBRIGHT_STAR_DATA& record = First(
      "<WIDTH>6.5</WIDTH><HEIGHT>4</HEIGHT><ORIGIN> LOWER RIGHT </ORIGIN>"
      "<TEXTFRAME UPPERXLOC='0.5' UPPERYLOC='1.5' LOWERXLOC='2.5' LOWERYLOC='-3.5'"
      " compression='Equal Height Lines'><FONT name='Arial.ttf' size='0.25'"
      " justification='Center'/><LINE> ONE </LINE><LINE>TWO</LINE></TEXTFRAME>");
  EXPECT_EQ(record.width, 6.5);
  EXPECT_EQ(record.height, 4);
  EXPECT_EQ(record.origin, L"LOWER RIGHT");
  ASSERT_EQ(record.textFrames.size(), 1U);
  const tagTEXTFRAME& frame = *record.textFrames[0];
  EXPECT_EQ(frame.upperX, 0.5);
  EXPECT_EQ(frame.upperY, 1.5);
  EXPECT_EQ(frame.lowerX, 2.5);
  EXPECT_EQ(frame.lowerY, -3.5);
  EXPECT_EQ(frame.compression, L"Equal Height Lines");
  EXPECT_EQ(frame.fontName, L"Arial.ttf");
  EXPECT_EQ(frame.size, 0.25);
  EXPECT_EQ(frame.justification, L"Center");
  EXPECT_EQ(frame.lines, (Lines{L"ONE", L"TWO"}));
  EXPECT_TRUE(record.graphics.empty());
}

TEST_F(BrightStarParse, values_that_the_file_does_not_give_are_zero_or_empty) {
  const tagBRIGHT_STAR_DATA& record = First("<TEXTFRAME/>");
  EXPECT_EQ(record.width + record.height, 0);
  EXPECT_EQ(record.origin, L"");
  const tagTEXTFRAME& frame = *record.textFrames.at(0);
  EXPECT_EQ(frame.upperX + frame.upperY + frame.lowerX + frame.lowerY + frame.size, 0);
  EXPECT_EQ(frame.compression + frame.fontName + frame.justification, L"");
  EXPECT_TRUE(frame.lines.empty());
}

TEST_F(BrightStarParse, an_empty_line_is_a_line) {
  EXPECT_EQ(Frame("", "<LINE>A</LINE><LINE/><LINE> </LINE><LINE>B</LINE>").lines,
            (Lines{L"A", L"", L"", L"B"}));
}

TEST_F(BrightStarParse, a_later_font_overwrites_the_values_that_it_gives) {
  const tagTEXTFRAME& frame =
      Frame("", "<FONT name='A.ttf' size='1' justification='Left'/><FONT size='2' name=''/>");
  EXPECT_EQ(frame.fontName, L"A.ttf");
  EXPECT_EQ(frame.size, 2);
  EXPECT_EQ(frame.justification, L"Left");
}

TEST_F(BrightStarParse, names_compare_by_case_and_unknown_ones_are_passed_over) {
  const tagBRIGHT_STAR_DATA& record = First(
      "<Width>1</Width><GRAPHIC><FILE>a.svg</FILE></GRAPHIC><OTHER/>"
      "<TEXTFRAME upperxloc='1' Compression='x'><line>A</line><Font name='B'/></TEXTFRAME>");
  EXPECT_EQ(record.width, 0);
  EXPECT_TRUE(record.graphics.empty());
  EXPECT_EQ(record.textFrames.at(0)->upperX, 0);
  EXPECT_EQ(record.textFrames[0]->compression + record.textFrames[0]->fontName, L"");
  EXPECT_TRUE(record.textFrames[0]->lines.empty());
}

TEST_F(BrightStarParse, an_empty_element_or_attribute_keeps_the_earlier_value) {
  const tagBRIGHT_STAR_DATA& record =
      First("<WIDTH>3</WIDTH><WIDTH/><ORIGIN>CENTER</ORIGIN><ORIGIN> </ORIGIN>");
  EXPECT_EQ(record.width, 3);
  EXPECT_EQ(record.origin, L"CENTER");
}

TEST_F(BrightStarParse, attributes_keep_their_spaces_and_elements_do_not) {
  EXPECT_EQ(Frame("compression=' All '").compression, L" All ");
}

TEST_F(BrightStarParse, each_template_below_the_root_is_a_record) {
  CBrightStarXMLImport& importer = Read(
      "<A><ENGRAVINGTEMPLATE><WIDTH>1</WIDTH></ENGRAVINGTEMPLATE><B/>"
      "<ENGRAVINGTEMPLATE><WIDTH>2</WIDTH></ENGRAVINGTEMPLATE></A>");
  const tagBRIGHT_STAR_DATA* first = Record(importer.GetFirstPlate());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->width, 1);
  const tagBRIGHT_STAR_DATA* second = Record(importer.GetNextPlate());
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->width, 2);
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(importer.GetFirstPlate(), first);
}

TEST_F(BrightStarParse, a_next_without_a_first_is_the_second_record) {
  CBrightStarXMLImport& importer =
      Read("<A><ENGRAVINGTEMPLATE/><ENGRAVINGTEMPLATE><WIDTH>2</WIDTH></ENGRAVINGTEMPLATE></A>");
  EXPECT_EQ(Record(importer.GetNextPlate())->width, 2);
}

TEST_F(BrightStarParse, the_roots_name_does_not_matter_and_a_template_root_is_no_template) {
  EXPECT_EQ(Count(Read("<X><ENGRAVINGTEMPLATE/></X>")), 1);
  EXPECT_EQ(Count(Read("<ENGRAVINGTEMPLATE><WIDTH>1</WIDTH></ENGRAVINGTEMPLATE>")), 0);
}

TEST_F(BrightStarParse, freed_records_are_gone_and_the_file_still_counts_as_parsed) {
  CBrightStarXMLImport& importer = Parse("<TEXTFRAME/>");
  importer.ClearPlates();
  EXPECT_EQ(Count(importer), 0);
  EXPECT_EQ(importer.ImportXMLFile(), 0);
}

TEST_F(BrightStarParse, other_extensions_and_paths_that_name_nothing_are_refused) {
  ExpectRefused("<A><ENGRAVINGTEMPLATE/></A>", "template.cro");
  ExpectRefused("<A><ENGRAVINGTEMPLATE/></A>", "xml");
  EXPECT_EQ(CBrightStarXMLImport(nullptr).ImportXMLFile(), 0);
  EXPECT_EQ(CBrightStarXMLImport(L"").ImportXMLFile(), 0);
  EXPECT_EQ(CBrightStarXMLImport(L"absent.xml").ImportXMLFile(), 0);
  EXPECT_EQ(Count(Read("<A><ENGRAVINGTEMPLATE/></A>", "template.XML")), 1);
}

TEST_F(BrightStarParse, a_document_that_is_no_xml_is_refused_and_not_repaired) {
  ExpectRefused("<? xml version='1.0'?><A><ENGRAVINGTEMPLATE/></A>");
  ExpectRefused("<A><ENGRAVINGTEMPLATE></A>");
}

// Texts of a fixed size.

std::string Letters(std::size_t count) { return std::string(count, 'a'); }

TEST_F(BrightStarParse, texts_have_up_to_255_characters) {
  for (const std::size_t length : {254U, 255U}) {
    const tagBRIGHT_STAR_DATA& record =
        First("<ORIGIN>" + Letters(length) + "</ORIGIN><TEXTFRAME compression='" + Letters(length) +
              "'><FONT name='" + Letters(length) + "' justification='" + Letters(length) +
              "'/></TEXTFRAME>");
    EXPECT_EQ(record.origin.size(), length);
    EXPECT_EQ(record.textFrames.at(0)->compression.size(), length);
    EXPECT_EQ(record.textFrames[0]->fontName.size(), length);
    EXPECT_EQ(record.textFrames[0]->justification.size(), length);
  }
}

TEST_F(BrightStarParse, a_longer_text_refuses_the_file_and_the_log_names_it) {
  const std::string begin = "<A><ENGRAVINGTEMPLATE/><ENGRAVINGTEMPLATE>";
  const std::string end = "</ENGRAVINGTEMPLATE></A>";
  const std::string reason = " has 256 characters, and its field has room for 255\r\n";
  ExpectRefused(begin + "<ORIGIN>" + Letters(256) + "</ORIGIN>" + end);
  EXPECT_TRUE(Log().ends_with("the value of ORIGIN" + reason)) << Log();
  ExpectRefused(begin + "<TEXTFRAME compression='" + Letters(256) + "'/>" + end);
  EXPECT_TRUE(Log().ends_with("the value of compression" + reason)) << Log();
  ExpectRefused(begin + "<TEXTFRAME><FONT name='" + Letters(256) + "'/></TEXTFRAME>" + end);
  EXPECT_TRUE(Log().ends_with("the value of name" + reason)) << Log();
  ExpectRefused(begin + "<TEXTFRAME><FONT justification='" + Letters(256) + "'/></TEXTFRAME>" +
                end);
  EXPECT_TRUE(Log().ends_with("the value of justification" + reason)) << Log();
}

TEST_F(BrightStarParse, a_line_may_have_any_length) {
  EXPECT_EQ(Frame("", "<LINE>" + Letters(100000) + "</LINE>").lines.at(0).size(), 100000U);
}

TEST_F(BrightStarParse, numbers_that_no_blank_could_have_pass) {
  const tagBRIGHT_STAR_DATA& record =
      First("<WIDTH>-1</WIDTH><HEIGHT>1e999</HEIGHT><TEXTFRAME UPPERXLOC='nan'/>");
  EXPECT_EQ(record.width, -1);
  EXPECT_TRUE(std::isinf(record.height));
  EXPECT_EQ(record.textFrames.at(0)->upperX, 0);
}

}  // namespace
