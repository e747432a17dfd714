#pragma once

#include <string>

namespace rastrel::test {

// Pieces of an import of plate XML's calls to a host, in the order in which it must make them. Each
// ends in a line feed. The blank is 60 by 30 cm with its origin at the bottom left, page 1 is on
// show.

/// A new plate object of one pane after its color: `P1`, `#2`, `10.16, 5.08`, its sheet layer.
inline std::string NewPlate(const std::string& name, const std::string& object,
                            const std::string& size, int layer,
                            const std::string& color = "RGB(255 0 0)") {
  const std::string sheet = std::to_string(layer);
  std::string text = "GetSignBlankSize() -> (60 30)\n";
  text += "GetOriginPosIndex() -> 7\n";
  text += "GetDisplayPage() -> 1\n";
  text += "NewGenericPlateObject(1, " + size + ", (0 0 0 0), 0, 0) -> " + name + "\n";
  text += name + ".CreatePanesWithOriginBottomLeft((0 0), 60, 30) -> 1\n";
  text += name + ".Add(1, 1, 0) -> " + object + "\n";
  text += "TString(\"(*v*)Create plate object\") -> \"Create plate object\"\n";
  text += "UNOpenStep(\"Create plate object\")\n";
  text += "DSAddObject(" + object + ") -> 1\n";
  text += "UNCloseStep()\n";
  text += "DBSetLayer(" + object + ", " + color + ")\n";
  text += "DBSetLineColor(" + object + ", " + color + ")\n";
  text += "DBGetLineStyle(" + object + ") -> (width 0 style 0)\n";
  text += "DBSetLineStyle(" + object + ", (width 0 style 16))\n";
  text += "GetNextEmptyLayer() -> " + sheet + "\n";
  text += "AddNewSheetLayer(" + sheet + ")\n";
  text += "DBSetSheetLayer(" + object + ", " + sheet + ")\n";
  text += "DBSetPageRange(" + object + ", 1..1)\n";
  text += "UpdatePageWindow(0)\n";
  text += "DBInvalidateBounds(" + object + ")\n";
  text += "DBValidateBounds(" + object + ")\n";
  text += "InvalidateObject(" + object + ", 1)\n";
  text += "WhatisMaxNumberofPages(0) -> 1\n";
  text += "SetPlateObjectParameters((0 0 0 0), 0, 0)\n";
  text += "AdjustPlateObjects(0, 0, 1) -> " + object + "\n";
  return text;
}

/// A further pane of the object P1, #2, of 7.62 by 3.81 cm.
inline std::string FurtherPane(int panes) {
  std::string text = "DBGetObjectElement(#2)\n";
  text += "P1.GetPaneCount() -> " + std::to_string(panes - 1) + "\n";
  text += "P1.GetPaneWidth() -> 7.62\n";
  text += "P1.GetPaneHeight() -> 3.81\n";
  text += "P1.GetMargins() -> (0 0 0 0)\n";
  text += "P1.GetHorizontalGap() -> 0\n";
  text += "P1.GetVerticalGap() -> 0\n";
  text += "P1.ResetData(" + std::to_string(panes) + ", 7.62, 3.81, (0 0 0 0), 0, 0, {}, 0)\n";
  return text;
}

/// The search for the pane: `L1`, and its edges as text.
inline std::string FoundPane(const std::string& name, const std::string& object,
                             const std::string& list, const std::string& bounds, int layer) {
  std::string text = "DBCreateList(1, 9, IsGenericPlate) -> " + list + "\n";
  text += "DBGetLastMember(" + list + ") -> " + object + "\n";
  text += "DBGetObjectElement(" + object + ")\n";
  text += name + ".GetLastPaneBounds() -> " + bounds + "\n";
  text += "DBGetPageRange(" + object + ") -> 1..1\n";
  text += "DBGetSheetLayer(" + object + ") -> " + std::to_string(layer) + "\n";
  text += "DBDestroyList(" + list + ")\n";
  return text;
}

/// A paragraph opened in the frame of a pane of 4 by 2 inches at the blank's corner, with its
/// margins per mille and in thousandths of an inch.
inline std::string OpenedText(const std::string& info, const std::string& percent,
                              const std::string& margin) {
  std::string text = "SetOpenParagraphInfo(0) -> " + info + "\n";
  text += "OpenParagraph(4, " + info + ", (0 2000), (4000 0)) -> 0\n";
  text += "GetCurParagraph()\n";
  text += "lines.mode = 4\n";
  text += "SetTextLineJustifyMode(paragraph, lines, 2)\n";
  text += "SetTextLineJustification(paragraph, lines, 2)\n";
  text += "paragraph.fit = 2\n";
  text += "paragraph.frameMode = 3\n";
  text += "paragraph.leftPercent = " + percent + "\n";
  text += "GetTextFrame(paragraph) -> (0 2000 4000 0)\n";
  text += "paragraph.leftMargin = " + margin + "\n";
  text += "FitTextToFrame(paragraph, lines)\n";
  text += "paragraph.rightPercent = " + percent + "\n";
  text += "GetTextFrame(paragraph) -> (0 2000 4000 0)\n";
  text += "paragraph.rightMargin = " + margin + "\n";
  text += "FitTextToFrame(paragraph, lines)\n";
  return text;
}

/// A line in a font that the text did not have before: `2, "Arial"`, `F1`, `250`, `"A\r\n", 3`.
inline std::string PastedLine(const std::string& typeAndName, const std::string& font,
                              const std::string& size, const std::string& textAndLength) {
  return "AddFont(0, " + typeAndName + ", -1, 1) -> " + font + "\nstyle.font = " + font +
         "\nstyle.size = " + size + "\nedPasteString(" + textAndLength + ", 0, null, false)\n";
}

/// The end of a paragraph, and the attributes of its object on the first page.
inline std::string ClosedText(const std::string& info, const std::string& object,
                              const std::string& found, const std::string& color, int layer) {
  std::string text = "SetOpenParagraphInfo(0) -> " + info + "\n";
  text += "CloseParagraph(1, " + info + ")\n";
  text += "GetDefaultAttributes()\n";
  text += "DBInsertElement(attributes, 8192, paragraph " + info + ", 0, 0, 0, 1, false) -> " +
          object + "\n";
  text += "DBSetTrait(" + object + ", 128, 1)\n";
  text += "TString(\"(*v*)Adding text\") -> \"Adding text\"\n";
  text += "UNOpenStep(\"Adding text\")\n";
  text += "DSAddSourceObject(" + object + ", 2, " + object + ") -> 1\n";
  text += "UNCloseStep()\n";
  text += "FindPaletteColor(" + found + "\n";
  text += "DBSetLayer(" + object + ", " + color + ")\n";
  text += "DBSetLineColor(" + object + ", " + color + ")\n";
  text += "DBSetPageRange(" + object + ", 1..1)\n";
  text += "DBSetSheetLayer(" + object + ", " + std::to_string(layer) + ")\n";
  text += "DBInvalidateBounds(" + object + ")\n";
  text += "DBValidateBounds(" + object + ")\n";
  text += "InvalidateObject(" + object + ", 1)\n";
  return text;
}

/// A drill point on the first page and sheet layer.
inline std::string DrillPoint(const std::string& diameter, const std::string& place,
                              const std::string& list, const std::string& object,
                              const std::string& found, const std::string& color) {
  std::string text = "DBDeselectAll()\n";
  text += "SetXMLDrillPoint(1, " + diameter + ")\n";
  text += "SetDrillPointObj(" + place + ")\n";
  text += "SetXMLDrillPoint(0, 0)\n";
  text += "DSCreateSelectedList() -> " + list + "\n";
  text += "DBGetFirstMember(" + list + ") -> " + object + "\n";
  text += "DBDestroyList(" + list + ")\n";
  text += "FindPaletteColor(" + found + "\n";
  text += "DBSetLayer(" + object + ", " + color + ")\n";
  text += "DBSetLineColor(" + object + ", " + color + ")\n";
  text += "DBSetSheetLayer(" + object + ", 1)\n";
  text += "DBSetPageRange(" + object + ", 1..1)\n";
  text += "DBDeselectAll()\n";
  return text;
}

}  // namespace rastrel::test
