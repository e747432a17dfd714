#pragma once

#include <string>
#include <vector>

#include "tests/support/host_calls.h"

namespace rastrel::test {

// Pieces of the calls that the build of a Crown Trophy template makes, in the order in which it
// must make them. Each ends in a line feed. Page 1 is on show. The plate object is #2 on sheet
// layer 1.

using Names = std::vector<std::string>;

/// A walk through a list that ends at its end.
inline std::string Walk(const std::string& list, const Names& members) {
  std::string text;
  for (const std::string& member : members)
    text +=
        (text.empty() ? "DBGetFirstMember(" : "DBGetNextMember(") + list + ") -> " + member + "\n";
  return text + (members.empty() ? "DBGetFirstMember(" : "DBGetNextMember(") + list + ") -> none\n";
}

/// The plate object's making, after its color.
struct NewPlateText {
  std::string blank = "60.96 30.48";
  std::string measures = "10.16, 5.08, (0 0 0 0), 0, 0";
  std::string margins = "(0 0 0 0), 0, 0";
  std::string start = "P1.CreatePanesWithOriginBottomLeft((0 0), 60.96, 30.48) -> 1";
  std::string origin = "7";
  std::string color = "RGB(0 0 0)";
  bool isZml = false;
};

inline std::string NewPlate(const NewPlateText& plate = {}) {
  std::string text = "GetSignBlankSize() -> (" + plate.blank + ")\n";
  text += "GetOriginPosIndex() -> " + plate.origin + "\n";
  text += "GetDisplayPage() -> 1\n";
  text += "NewGenericPlateObject(1, " + plate.measures + ") -> P1\n";
  text += plate.start + "\n";
  text += "P1.Add(1, 1, 0) -> #2\n";
  text += "TString(\"(*v*)Create plate object\") -> \"Create plate object\"\n";
  text += "UNOpenStep(\"Create plate object\")\n";
  text += "DSAddObject(#2) -> 1\n";
  text += "UNCloseStep()\n";
  text += "DBSetLayer(#2, " + plate.color + ")\n";
  if (!plate.isZml) text += "DBSetLineColor(#2, " + plate.color + ")\n";
  text += "DBGetLineStyle(#2) -> (width 0 style 0)\n";
  text += "DBSetLineStyle(#2, (width 0 style 16))\n";
  text += "GetNextEmptyLayer() -> 1\n";
  text += "AddNewSheetLayer(1)\n";
  text += "DBSetSheetLayer(#2, 1)\n";
  text += "DBSetPageRange(#2, 1..1)\n";
  text += "UpdatePageWindow(0)\n";
  text += "DBInvalidateBounds(#2)\n";
  text += "DBValidateBounds(#2)\n";
  text += "InvalidateObject(#2, 1)\n";
  text += "WhatisMaxNumberofPages(0) -> 1\n";
  text += "SetPlateObjectParameters(" + plate.margins + ")\n";
  text += "AdjustPlateObjects(0, " + std::string(plate.isZml ? "1" : "0") + ", 1) -> #2\n";
  return text;
}

/// A setting that is read and written. The host has no value of its own until one was restored.
inline std::string Changed(const std::string& sectionAndKey, const std::string& value,
                           const std::string& before = "null") {
  return "Read(" + sectionAndKey + ") -> " + before + "\nWrite(" + sectionAndKey + ", \"" + value +
         "\")\n";
}

inline std::string Restored(const std::string& sectionAndKey, const std::string& value) {
  return "Write(" + sectionAndKey + ", \"" + value + "\")\n";
}

/// The same of the settings that a load of the first generation changes, and of the history;
/// `again` after an earlier load, which restored them.
inline std::string Cr2SettingsChanged(bool again = false) {
  const std::string one = again ? "\"1\"" : "null";
  const std::string zero = again ? "\"0\"" : "null";
  return Changed("\"Pages\", \"CollapseToZero\"", "0", one) +
         Changed("\"Sheet Layer\", \"Merge\"", "0", zero) +
         Changed("\"Grouping\", \"CollapseDatabase\"", "0", one) +
         Changed("\"IMPPDF\", \"TextAsGraphics\"", "1", zero) +
         Changed("\"IMPPDF\", \"ShowDialog\"", "0", one) +
         "GetKeepHistory() -> 1\nWriteKeepHistory(0)\n";
}

inline std::string Cr2SettingsRestored() {
  return Restored("\"Pages\", \"CollapseToZero\"", "1") +
         Restored("\"Sheet Layer\", \"Merge\"", "0") +
         Restored("\"Grouping\", \"CollapseDatabase\"", "1") +
         Restored("\"IMPPDF\", \"TextAsGraphics\"", "0") +
         Restored("\"IMPPDF\", \"ShowDialog\"", "1") + "WriteKeepHistory(1)\n";
}

/// Of the second generation.
inline std::string ZmlSettingsChanged(bool again = false) {
  const std::string one = again ? "\"1\"" : "null";
  const std::string zero = again ? "\"0\"" : "null";
  return Changed("\"Pages\", \"CollapseToZero\"", "0", one) +
         Changed("\"Sheet Layer\", \"Merge\"", "0", zero) +
         Changed("\"IMPPDF\", \"TextAsGraphics\"", "1", zero) +
         Changed("\"IMPPDF\", \"ShowDialog\"", "0", one);
}

inline std::string ZmlSettingsRestored() {
  return Restored("\"Pages\", \"CollapseToZero\"", "1") +
         Restored("\"Sheet Layer\", \"Merge\"", "0") +
         Restored("\"IMPPDF\", \"TextAsGraphics\"", "0") +
         Restored("\"IMPPDF\", \"ShowDialog\"", "1");
}

/// The load of a file with the objects before it, those that it brings, and the number of the list
/// that is made next. `load` is the call with its answer.
inline std::string LoadedObjects(const std::string& load, const Names& before, const Names& brought,
                                 int list) {
  const auto name = [&](int number) { return "L" + std::to_string(list + number); };
  const auto types = [](const Names& objects) {
    std::string text;
    for (const std::string& object : objects) text += "DBGetObjectType(" + object + ") -> 0\n";
    return text;
  };
  Names present = before;
  present.insert(present.end(), brought.begin(), brought.end());
  std::string text = "GetNextEmptyLayer() -> 2\n";
  text += "DBCreateList(1, 3, IsCurrent) -> " + name(0) + "\n" + Walk(name(0), before);
  text += types(before) + "DBDestroyList(" + name(0) + ")\n";
  text += load + "\n";
  text += "DBCreateList(1, 3, IsCurrent) -> " + name(1) + "\n";
  text += "DBCreateEmptyList() -> " + name(2) + "\n" + Walk(name(1), present) + types(before);
  for (const std::string& object : brought)
    text += types({object}) + "DBAddToList(" + name(2) + ", " + object + ")\n";
  text += "DBSetSelectedList(" + name(2) + ")\nDBNotifySelectionChanged()\n";
  text += "DBDestroyList(" + name(2) + ")\nDBDestroyList(" + name(1) + ")\n";
  return text;
}

/// Loaded objects, in that list, on the plate's sheet layer.
inline std::string OnPlatesLayer(const std::string& list, const Names& objects) {
  std::string text = "DBGetSheetLayer(#2) -> 1\n" + Walk(list, objects);
  for (const std::string& object : objects) text += "DBSetSheetLayer(" + object + ", 1)\n";
  return text;
}

/// Loaded objects under a matrix on a page, out of the selection.
inline std::string Placed(const std::string& list, const Names& objects, const std::string& matrix,
                          const std::string& page = "1") {
  std::string text = "DBDeselectAll()\n" + Walk(list, objects);
  for (const std::string& object : objects) {
    text += "DBApplyTM(" + object + ", (" + matrix + "))\n";
    text += "SetPageRange(" + object + ", " + page + ")\n";
    text += "InvalidateObject(" + object + ", 0)\n";
    text += "DBSetTrait(" + object + ", 1, 0)\n";
  }
  return text;
}

/// The objects of a list become a group, which is added to it.
inline std::string Grouped(const std::string& list, const std::string& first,
                           const std::string& group) {
  return "DBGetFirstMember(" + list + ") -> " + first +
         "\nUNOpenStep(\"Group Graphic Components\")\nDSGroupObjects(" + list + ", 2, " + first +
         ") -> " + group + "\nUNCloseStep()\nInvalidateObject(" + group + ", 0)\nDBAddToList(" +
         list + ", " + group + ")\n";
}

/// A corner of a frame in text units, whose edges in world units went through single precision.
inline std::string Corner(double x, double y) {
  const auto edge = [](double world) {
    return TextOf(static_cast<double>(static_cast<float>(world)) / 2.54 * 1000.0);
  };
  return "(" + edge(x) + " " + edge(y) + ")";
}

/// A text frame that is opened, with its corners in text units.
inline std::string OpenedText(const std::string& first, const std::string& second) {
  return "InitNewText(null, " + first + ", " + second +
         ", 1)\nGetCurParagraph()\nSetTextLineJustifyMode(paragraph, lines, 2)\n";
}

/// The fields of an opened text that differ from those it begins with, in front of the next call.
inline std::string LaidOutText() {
  return "lines.mode = 1\nparagraph.fit = 1\nparagraph.flags = 256\n";
}

}  // namespace rastrel::test
