// The importers of templates held against another way to read the same files.

#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/platform/os/text.h"
#include "tests/imports/literal_templates.h"
#include "tests/imports/template_fixture.h"

namespace {

using namespace rastrel::test;
using Format = TemplateDocuments::Format;

std::string Line(std::string_view name, const std::wstring& value) {
  return std::string(name) + "=[" + rastrel::os::Utf8FromWide(value) + "]\n";
}
std::string Line(std::string_view name, double value) {
  return std::string(name) + "=[" + TextOf(value) + "]\n";
}

// CRO

std::string Place(const CROGraphic& graphic) {
  return Line("origin", graphic.origin) + Line("x", graphic.x) + Line("y", graphic.y) +
         Line("width", graphic.width) + Line("height", graphic.height);
}

std::string Override(const CROTextOverride& text) {
  return Line("line", text.line) + Line("height", text.height) + Line("font", text.font);
}

std::string Tilt(const CCROFileImport& importer) {
  return Line("HORIZONTAL", importer.m_TiltHorizontal) + Line("GROOVE", importer.m_TiltGroove) +
         Line("RELATIVE", importer.m_TiltRelative) + Line("LBVALUE", importer.m_TiltLeftBottom) +
         Line("TRVALUE", importer.m_TiltTopRight);
}

std::string Graphics(const CCROFileImport& importer) {
  CROGraphic common;
  common.origin = importer.m_GraphicsOrigin;
  common.x = importer.m_GraphicsX;
  common.y = importer.m_GraphicsY;
  common.width = importer.m_GraphicsWidth;
  common.height = importer.m_GraphicsHeight;
  std::string text = Place(common);
  for (const auto& graphic : importer.m_Graphics)
    text += Line("name", graphic->name) + Line("file", graphic->file) + Place(*graphic);
  return text;
}

/// The plates by the walks, each with the overrides that name its index.
std::string Plates(CCROFileImport& importer) {
  std::string text;
  const CStringArray* graphics = importer.GetFirstPlateGraphics();
  int number = 0;
  for (const CStringArray* plate = importer.GetFirstPlate(); plate != nullptr;
       plate = importer.GetNextPlate(), graphics = importer.GetNextPlateGraphics()) {
    text += "plate\n";
    for (int index = 0; index < plate->GetSize(); ++index) text += Line("text", (*plate)[index]);
    for (int index = 0; index < graphics->GetSize(); ++index)
      text += Line("graphic", (*graphics)[index]);
    for (const CROPlateOverride& own : importer.m_PlateOverrides)
      if (own.plate == number) text += Line("override", number) + Override(*own.text);
    ++number;
  }
  return text;
}

std::string DumpOf(CCROFileImport& importer) {
  std::string text = Line("metric", importer.UseMetric()) +
                     Line("direct", importer.IsPrintDirect()) +
                     Line("dialog", importer.IsShowPrintDialog()) +
                     Line("name", importer.m_TemplateName) + Line("driver", importer.m_DriverName);
  for (const CRODriverSetting& setting : importer.m_DriverSettings)
    text += Line("setting", setting.header + L"," + setting.name + L"," + setting.value);
  text += Line("width", importer.m_Width) + Line("height", importer.m_Height) +
          Line("uses", importer.m_bUseTemplateBlankSize) + Line("origin", importer.m_Origin) +
          Line("spacing", importer.m_HasVerticalSpacing) + Line("margins", importer.m_Margins) +
          Line("rotation", importer.m_Rotation) + Tilt(importer) + Graphics(importer);
  for (const CROTextOverride* own = importer.GetFirstTextLineOverride(); own != nullptr;
       own = importer.GetNextTextLineOverride())
    text += Override(*own);
  return text + Plates(importer);
}

// LLX

std::string DumpOf(const CLLXFileImport& importer) {
  std::string text = Line("WIDTH", importer.m_Width) + Line("HEIGHT", importer.m_Height) +
                     Line("origin", importer.m_Origin);
  for (const auto& graphic : importer.m_Graphics)
    text += Line("file", graphic->file) + Line("origin", graphic->origin) + Line("X", graphic->x) +
            Line("Y", graphic->y) + Line("WIDTH", graphic->width) +
            Line("HEIGHT", graphic->height) + Line("ROTATION", graphic->rotation);
  for (const auto& arc : importer.m_ArcTexts)
    text += Line("CENTERX", arc->centerX) + Line("CENTERY", arc->centerY) +
            Line("RADIUS", arc->radius) + Line("ROTATION", arc->rotation) +
            Line("HEIGHT", arc->height) + Line("justify", arc->justify) + Line("font", arc->font) +
            Line("text", arc->text);
  return text;
}

// BrightStar

std::string DumpOf(CBrightStarXMLImport& importer) {
  std::string text;
  for (void* plate = importer.GetFirstPlate(); plate != nullptr; plate = importer.GetNextPlate()) {
    const auto& record = *static_cast<const tagBRIGHT_STAR_DATA*>(plate);
    text += "record\n" + Line("width", record.width) + Line("height", record.height) +
            Line("origin", record.origin);
    for (const auto& frame : record.textFrames) {
      text += "frame\n" + Line("compression", frame->compression) +
              Line("UPPERXLOC", frame->upperX) + Line("UPPERYLOC", frame->upperY) +
              Line("LOWERXLOC", frame->lowerX) + Line("LOWERYLOC", frame->lowerY) +
              Line("font", frame->fontName) + Line("size", frame->size) +
              Line("justification", frame->justification);
      for (const std::wstring& line : frame->lines) text += Line("line", line);
    }
  }
  return text;
}

class TemplateOracle : public TemplateTest {
 protected:
  static constexpr int Rounds = 500;
  static constexpr const char* Refused = "refused";

  /// Reads random documents of a format both ways. `read` returns the dump of a path.
  template <typename Read, typename Literal>
  void Compare(Format format, const char* name, Read read, Literal literal) {
    TemplateDocuments documents(format, 20261);
    int taken = 0;
    for (int round = 0; round < Rounds; ++round) {
      const std::string document = documents.Next();
      const std::string expected = literal(document).value_or(Refused);
      taken += expected == Refused ? 0 : 1;
      ASSERT_EQ(read(Write(document, name)), expected) << document;
    }
    EXPECT_GT(taken, Rounds / 2);  // else the documents would show little
    EXPECT_LT(taken, Rounds);
  }
};

TEST_F(TemplateOracle, random_cro_files_have_the_same_records_by_another_way) {
  const auto read = [](const std::wstring& path) {
    CCROFileImport importer(path.c_str(), nullptr);
    return importer.m_bParsed ? DumpOf(importer) : Refused;
  };
  Compare(Format::Cro, "random.cro", read, LiteralCro);
}

TEST_F(TemplateOracle, random_llx_files_have_the_same_records_by_another_way) {
  const auto read = [](const std::wstring& path) {
    const CLLXFileImport importer(path.c_str(), nullptr);
    return importer.m_bParsed ? DumpOf(importer) : Refused;
  };
  Compare(Format::Llx, "random.llx", read, LiteralLlx);
}

TEST_F(TemplateOracle, random_bright_star_files_have_the_same_records_by_another_way) {
  const auto read = [](const std::wstring& path) {
    static_cast<void>(rastrel::xml::TakeXmlFailure());
    CBrightStarXMLImport importer(path.c_str());
    return rastrel::xml::TakeXmlFailure() ? DumpOf(importer) : Refused;
  };
  Compare(Format::BrightStar, "random.xml", read, LiteralBrightStar);
}

}  // namespace
