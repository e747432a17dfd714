#pragma once

#include <string>

#include "rastrel/imports/cr2/template_build.h"
#include "tests/imports/cr2/build_transcript.h"
#include "tests/imports/template_fixture.h"

namespace rastrel::test {

inline const CVKColor Red(0x0000FF, COLORSPACE_RGB, 0, 0);
inline const CVKColor Green(0x00FF00, COLORSPACE_RGB, 0, 0);
inline const CVKColor Invisible(-1, COLORSPACE_RGB, 0, 0);
inline const std::string RedText = "RGB(255 0 0)";
inline const std::string GreenText = "RGB(0 255 0)";

/// A blank of 40 by 20 cm with its origin at the bottom left, and plates of 8 by 4 with the same.
class ZmlBuild : public TemplateTest {
 protected:
  ZmlBuild() {
    m_Records.tableSize.placement = Place(7, 0, 0, 40, 20);
    m_Records.plateTemplate.placement = Place(7, 0, 0, 8, 4);
    m_Records.plates.resize(1);
  }

  static CR2_PLACEMENT Place(int origin, double x, double y, double width, double height) {
    return {
        .origin = origin, .x = x, .y = y, .width = width, .height = height, .constrained = false};
  }
  imports::TemplateImport Begin() {
    return imports::BeginTemplateImport({m_Host.m_Store, m_Host.m_Text, m_Host.m_Application},
                                        L"ZML FILE");
  }
  void Build() {
    imports::TemplateImport import = Begin();
    imports::BuildZml(import, m_Records, L"");
  }

  /// The calls up to the list of plate objects, the plate's color read by the setting.
  static std::string PlateMade(const std::string& color = "invisible",
                               const std::string& furtherPanes = "0") {
    return std::string(
               "NewFontReplacement(\"cr2\")\nOnNew()\nSetSignBlankSize(40, 20, 1)\n"
               "SetSignBlankOriginPos(7)\n") +
           (color == "invisible" ? "Read(\"ZML IMPORT\", \"Invisible Plate\") -> null\n"
                                   "FindPaletteColor(-1) -> 1\n"
                                 : "") +
           NewPlate({.blank = "40 20",
                     .measures = "8, 4, (0 0 0 0), 0, 0",
                     .start = "P1.CreatePanesWithOriginBottomLeft((0 0), 40, 20) -> 1",
                     .color = color,
                     .isZml = true}) +
           "AddPanesToPlateObject(#2, " + furtherPanes + ")\n";
  }
  /// The list of the one plate object, with the calls for its panes.
  static std::string Panes(const std::string& panes) {
    return "DBCreateList(1, 9, IsGenericPlate) -> L1\n" + Walk("L1", {"#2"}) +
           "DBGetObjectElement(#2)\n" + panes + "DBDestroyList(L1)\n";
  }
  static std::string LayerRead() {
    return "DBGetPageRange(#2) -> 1..1\nDBGetSheetLayer(#2) -> 1\n";
  }

  imports::Cr2Document m_Records;
};

}  // namespace rastrel::test
