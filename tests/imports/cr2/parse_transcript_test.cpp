// Whole templates of both generations, call by call, as the host is asked while they are parsed.

#include <gtest/gtest.h>

#include "tests/imports/cr2/cr2_fixture.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseCr2File;
using rastrel::imports::ParseZmlFile;
using rastrel::imports::ZmlFile;

class ParseTranscript : public TemplateTest {
 protected:
  /// A color that shows by its number where it is in the file: by name, or of that much red.
  static std::string Named(int number) {
    return "<color target='fill' format='NAME'><name>C" + std::to_string(number) +
           "</name></color>";
  }
  static std::string Red(int number) {
    return "<color target='stroke' format='RGB'><rgb red='" + std::to_string(number) +
           "'/></color>";
  }
  static std::string LookedUp(int number) {
    return "FindPaletteColor(\"C" + std::to_string(number) + "\") -> 0\n";
  }
  static std::string Added(int number) {
    const std::string color = "RGB(" + std::to_string(number) + " 0 0)";
    return "IsColorInPalette(" + color + ") -> 0\nAddColorToPalette(" + color + ") -> 1\n";
  }

  /// A template with a color at each place that may have one, numbered as they are written. The
  /// cut line comes in front of the template's own color, and the plates in front of the filter.
  static std::string Template(std::string (*color)(int), const std::string& head) {
    const std::string placed = "<placement width='2' height='1'/>";
    const std::string plate = "<text_frame>" + placed + "<font>" + "<line><span>A" + color(5) +
                              "</span></line>" + color(6) +
                              "</font></text_frame><graphic_frame><graphic>logo</graphic>" +
                              placed + color(7) + "</graphic_frame>";
    return "<engraving_template><plates><plate>" + plate + "</plate></plates><Output_Filter>" +
           color(8) + color(9) + "</Output_Filter><template><cutline format='SVG'>" + color(1) +
           placed + "<svg/></cutline>" + color(2) + placed +
           "</template><table_size width='24' height='12'/>" + head + "</engraving_template>";
  }
};

TEST_F(ParseTranscript, a_template_of_the_first_generation) {
  Cr2Document document;
  EXPECT_TRUE(
      ParseCr2File(Write(Template(Named, "<Rotation>90</Rotation>"), "a.cr2").c_str(), document));
  // The order is that of the parts' meaning, whatever the file's: template, cut line, filter,
  // plates; in a plate graphics first, in a block its font before its lines.
  EXPECT_EQ(Calls().Text(), LookedUp(2) + LookedUp(1) + LookedUp(8) + LookedUp(9) + LookedUp(7) +
                                LookedUp(6) + LookedUp(5));
}

TEST_F(ParseTranscript, a_template_of_the_second_generation) {
  m_Host.m_Settings[{L"plottersetup", L"NumberDevices"}] = L"1";
  m_Host.m_Application.m_Plotters = {L"Cutter"};
  Cr2Document document;
  ZmlFile file;
  EXPECT_TRUE(ParseZmlFile(
      Write(Template(Red, "<Driver>Cutter</Driver><Rotation>90</Rotation>"), "a.zml").c_str(),
      document, file));
  EXPECT_EQ(Calls().Text(),
            "Read(\"Crown\", \"ImagePath\") -> null\n"
            "SetImportRotation(90)\n"
            "Read(\"plottersetup\", \"NumberDevices\") -> \"1\"\n"
            "GGetPathDeviceInI(0) -> \"device0\"\n"
            "GetStringDevice(\"device0\", \"setup\", \"plottername\") -> \"Cutter\"\n"
            "WriteStringDevice(\"Port Setup\", \"File Name\", \"a\")\n" +
                Added(2) + "LoadBaseDir()\n" + Added(1) +
                "Read(\"zippo\", \"NumStrings\") -> null\n" + Added(7) + Added(6) + Added(5));
}

TEST_F(ParseTranscript, a_file_that_is_refused_early_asks_no_more_than_it_must) {
  Cr2Document document;
  ZmlFile file;
  EXPECT_FALSE(ParseCr2File(Write("<a/>", "a.xml").c_str(), document));
  EXPECT_FALSE(ParseZmlFile(Write("<a/>", "a.xml").c_str(), document, file));
  EXPECT_TRUE(ParseCr2File(Write("<a/>", "a.cr2").c_str(), document));
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_TRUE(ParseCr2File(Write("<a>", "a.cr2").c_str(), document));
  EXPECT_EQ(Calls().Text(), "Read(\"impcr2\", \"CodePage\") -> null\n");
  EXPECT_FALSE(ParseZmlFile(Write("<a>", "a.zml").c_str(), document, file));
  EXPECT_EQ(Calls().Text(),
            "Read(\"impcr2\", \"CodePage\") -> null\nRead(\"Crown\", \"ImagePath\") -> null\n");
}

}  // namespace
