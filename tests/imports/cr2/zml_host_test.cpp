// Requests of a template of the second generation to the host while it is parsed: rotation,
// plotter, and the file of a cut line.

#include <gtest/gtest.h>

#include "rastrel/imports/cr2/plotter_choice.h"
#include "tests/imports/cr2/cr2_fixture.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseZmlFile;
using rastrel::imports::ZmlFile;

const std::string ImagePath = "Read(\"Crown\", \"ImagePath\") -> null\n";
const std::string FileName =
    "WriteStringDevice(\"Port Setup\", \"File Name\", \"Valve tags.v2\")\n";
const std::string Placed = "<placement width='3' height='2'/>";

class ZmlHost : public TemplateTest {
 protected:
  ZmlHost() {
    m_Host.m_Application.m_LoadBaseDir = m_ImportDirectory.Wide();
    m_Host.MayStay(L"plottersetup", L"DeviceUsed");
  }

  bool Parse(const TemplateParts& parts) {
    m_Document = {};
    m_File = {};
    const std::string text = TemplateText(parts, "engraving_template");
    return ParseZmlFile(Write(text, "Valve tags.v2.zml").c_str(), m_Document, m_File);
  }
  bool ParseHead(const std::string& head) {
    TemplateParts parts;
    parts.head = head;
    return Parse(parts);
  }
  bool ParseCutLine(const std::string& cutLine) { return Parse(WithContent(cutLine)); }
  void HavePlotters(std::vector<std::wstring> names) {
    m_Host.m_Settings[{L"plottersetup", L"NumberDevices"}] = std::to_wstring(names.size());
    m_Host.m_Application.m_Plotters = std::move(names);
  }

  Cr2Document m_Document;
  ZmlFile m_File;
  ScratchDirectory m_ImportDirectory;
};

TEST_F(ZmlHost, the_rotation_goes_to_the_import) {
  EXPECT_TRUE(ParseHead("<Rotation> -90.5 deg</Rotation>"));
  EXPECT_EQ(m_File.rotation, -90.5);
  EXPECT_EQ(Calls().Text(), ImagePath + "SetImportRotation(-90.5)\n");
}

TEST_F(ZmlHost, without_a_rotation_it_is_0) {
  EXPECT_TRUE(ParseHead(""));
  EXPECT_TRUE(ParseHead("<Rotation/>"));
  EXPECT_EQ(Calls().Text(),
            ImagePath + "SetImportRotation(0)\n" + ImagePath + "SetImportRotation(0)\n");
}

TEST_F(ZmlHost, a_rotation_that_is_a_plotter_s_name_selects_that_plotter) {
  HavePlotters({L"Cutter", L"Engraver", L"Engraver"});
  EXPECT_TRUE(ParseHead("<Rotation>Engraver</Rotation><Driver>Cutter</Driver>"));
  EXPECT_EQ(Calls().Text(), ImagePath +
                                "SetImportRotation(0)\n"
                                "Read(\"plottersetup\", \"NumberDevices\") -> \"3\"\n"
                                "GGetPathDeviceInI(0) -> \"device0\"\n"
                                "GetStringDevice(\"device0\", \"setup\", \"plottername\") -> "
                                "\"Cutter\"\n"
                                "GGetPathDeviceInI(1) -> \"device1\"\n"
                                "GetStringDevice(\"device1\", \"setup\", \"plottername\") -> "
                                "\"Engraver\"\n"
                                "Write(\"plottersetup\", \"DeviceUsed\", \"1\")\n" +
                                FileName);
}

TEST_F(ZmlHost, a_driver_without_a_rotation_matches_no_plotter_that_has_a_name) {
  HavePlotters({L"Cutter"});
  EXPECT_TRUE(ParseHead("<Driver>Cutter</Driver>"));
  EXPECT_EQ(Calls().Text(), ImagePath +
                                "SetImportRotation(0)\n"
                                "Read(\"plottersetup\", \"NumberDevices\") -> \"1\"\n"
                                "GGetPathDeviceInI(0) -> \"device0\"\n"
                                "GetStringDevice(\"device0\", \"setup\", \"plottername\") -> "
                                "\"Cutter\"\n" +
                                FileName);
}

TEST_F(ZmlHost, a_driver_without_a_rotation_matches_a_plotter_of_an_empty_name) {
  HavePlotters({L"Cutter", L""});
  EXPECT_TRUE(ParseHead("<Driver/>"));
  EXPECT_TRUE(Calls().Has("Write(\"plottersetup\", \"DeviceUsed\", \"1\")"));
}

TEST_F(ZmlHost, a_plotter_that_has_no_name_matches_nothing) {
  m_Host.m_Settings[{L"plottersetup", L"NumberDevices"}] = L"1";
  EXPECT_TRUE(ParseHead("<Driver/>"));
  EXPECT_TRUE(Calls().Has("GetStringDevice(\"device0\", \"setup\", \"plottername\") -> null"));
  EXPECT_EQ(Calls().Count("Write"), 0U);
}

TEST_F(ZmlHost, without_plotters_the_file_name_is_still_stored) {
  EXPECT_TRUE(ParseHead("<Rotation>Cutter</Rotation><Driver/>"));
  EXPECT_EQ(Calls().Text(), ImagePath +
                                "SetImportRotation(0)\n"
                                "Read(\"plottersetup\", \"NumberDevices\") -> null\n" +
                                FileName);
}

TEST_F(ZmlHost, without_a_driver_no_plotter_is_looked_for) {
  HavePlotters({L"Cutter"});
  EXPECT_TRUE(ParseHead("<Rotation>Cutter</Rotation>"));
  EXPECT_EQ(Calls().Text(), ImagePath + "SetImportRotation(0)\n");
}

TEST_F(ZmlHost, a_plotter_is_chosen_also_by_a_file_that_is_then_refused) {
  HavePlotters({L"Cutter"});
  TemplateParts parts;
  parts.head = "<Rotation>Cutter</Rotation><Driver/>";
  parts.table = "";
  EXPECT_FALSE(Parse(parts));
  EXPECT_TRUE(Calls().Has("Write(\"plottersetup\", \"DeviceUsed\", \"0\")"));
}

TEST_F(ZmlHost, a_name_of_200_characters_matches_nothing) {
  const auto chosen = [&](std::size_t length) {
    Calls().Clear();
    HavePlotters({std::wstring(length, L'p')});
    EXPECT_TRUE(ParseHead("<Rotation>" + std::string(length, 'p') + "</Rotation><Driver/>"));
    return Calls().Has("Write(\"plottersetup\", \"DeviceUsed\", \"0\")");
  };
  EXPECT_TRUE(chosen(198));
  EXPECT_TRUE(chosen(199));
  EXPECT_FALSE(chosen(200));
  EXPECT_FALSE(chosen(201));
}

TEST_F(ZmlHost, no_more_than_4096_plotters_are_looked_at) {
  const auto lookedAt = [&](const wchar_t* count) {
    Calls().Clear();
    m_Host.m_Settings[{L"plottersetup", L"NumberDevices"}] = count;
    EXPECT_TRUE(ParseHead("<Rotation>Cutter</Rotation><Driver/>"));
    return Calls().Count("GGetPathDeviceInI");
  };
  EXPECT_EQ(lookedAt(L"-1"), 0U);
  EXPECT_EQ(lookedAt(L"4095"), 4095U);
  EXPECT_EQ(lookedAt(L"4096"), 4096U);
  EXPECT_EQ(lookedAt(L"4097"), 4096U);
  EXPECT_EQ(lookedAt(L"2147483647"), 4096U);
}

TEST_F(ZmlHost, a_drawing_goes_to_the_directory_of_imports) {
  EXPECT_TRUE(ParseCutLine("<cutline stroke='0.5' format='SVG' group='true'><svg><path/></svg>" +
                           Placed +
                           "<color target='stroke' format='RGB'><rgb/></color></cutline>"));
  const CR2_CUTLINE& line = m_Document.cutLine;
  EXPECT_EQ(line.file, m_ImportDirectory.Wide() + L"\\cutline.svg");
  EXPECT_EQ(m_ImportDirectory.Read("cutline.svg"), "<svg><path/></svg>");
  EXPECT_FALSE(m_Scratch.Has("cutline.svg"));
  EXPECT_EQ(line.strokeWidth, 1.27);
  EXPECT_TRUE(line.group);
  EXPECT_EQ(Placement(line.placement), "1: 0 0, 7.62 x 5.08");
  EXPECT_EQ(Colors(line.colors), "stroke RGB(0 0 0), fill none");
  EXPECT_EQ(line.present, 1.0);
  EXPECT_EQ(Calls().Text(), ImagePath +
                                "SetImportRotation(0)\n"
                                "LoadBaseDir()\n"
                                "IsColorInPalette(RGB(0 0 0)) -> 0\n"
                                "AddColorToPalette(RGB(0 0 0)) -> 1\n");
}

TEST_F(ZmlHost, a_drawing_that_can_t_be_written_is_logged_and_keeps_its_path) {
  m_Host.m_Application.m_LoadBaseDir = m_Scratch.Wide("missing");
  EXPECT_TRUE(ParseCutLine("<cutline format='SVG'><svg/>" + Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.file, m_Scratch.Wide("missing") + L"\\cutline.svg");
  EXPECT_NE(Log().find("[Import] the cut line can't be written to "), std::string::npos);
}

TEST_F(ZmlHost, a_cut_line_of_a_file_has_the_path_of_its_attribute) {
  EXPECT_TRUE(ParseCutLine("<cutline format='FILE' file='C:\\art\\a.svg'><FILE>b.svg</FILE>" +
                           Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.file, L"C:\\art\\a.svg");
  EXPECT_TRUE(ParseCutLine("<cutline format='FILE'><FILE>b.svg</FILE>" + Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.file, L"");
  EXPECT_EQ(m_Document.cutLine.present, 1.0);
}

TEST_F(ZmlHost, a_cut_line_that_is_not_valid_refuses_the_file) {
  EXPECT_FALSE(ParseCutLine("<cutline><file>a</file><FILE/><svg/>" + Placed + "</cutline>"));
  EXPECT_FALSE(ParseCutLine("<cutline format='DXF'><FILE/><svg/>" + Placed + "</cutline>"));
  EXPECT_FALSE(ParseCutLine("<cutline format='FILE' file='a'><file/>" + Placed + "</cutline>"));
  EXPECT_FALSE(ParseCutLine("<cutline format='SVG'>" + Placed + "</cutline>"));
  EXPECT_FALSE(ParseCutLine("<cutline format='FILE' file='a'><FILE/></cutline>"));
  EXPECT_EQ(m_Document.cutLine.present, 0.0);
}

TEST_F(ZmlHost, the_group_of_a_cut_line_is_true_for_exactly_that_text) {
  const auto group = [&](const std::string& value) {
    EXPECT_TRUE(ParseCutLine("<cutline format='FILE' group='" + value + "'><FILE/>" + Placed +
                             "</cutline>"));
    return m_Document.cutLine.group;
  };
  EXPECT_TRUE(group("true"));
  EXPECT_FALSE(group("True"));
  EXPECT_FALSE(group("TRUE"));
}

TEST_F(ZmlHost, a_template_without_a_cut_line_has_none_present) {
  EXPECT_TRUE(ParseHead(""));
  EXPECT_EQ(m_Document.cutLine.present, 0.0);
  EXPECT_EQ(m_Document.cutLine.file, L"");
}

}  // namespace
