#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/spot_match.h"
#include "rastrel/psscan/ps_parser.h"
#include "tests/support/literal_ps_scans.h"

namespace rastrel::test {

/// All that the scans of one file answer.
struct PsScanAnswers {
  bool found = false;
  long long start = 0;
  long long length = 0;
  bool isEps = false;
  bool isPostscript = false;
  bool hasBounds = false;
  CRect bounds;
  bool hasStrings = false;
  CRect stringsBounds;
  std::vector<CString> names;
  bool hasSpots = false;
  std::vector<CSpotMatchItem> spots;
  bool hasSpotsAndBounds = false;
  std::vector<CSpotMatchItem> spotsWithBounds;
  BOUNDS spotBounds;
  bool operator==(const PsScanAnswers&) const = default;

  /// Asks a parser: CPSParser, or the literal one.
  template <typename Parser>
  static PsScanAnswers Of(Parser parser) {
    PsScanAnswers answers;
    answers.found = parser.FindEPSStart(answers.start, answers.length);
    answers.isEps = parser.IsEpsFile();
    answers.isPostscript = parser.IsPostscriptFile();
    answers.hasBounds = parser.GetBounds(answers.bounds);
    answers.hasStrings = parser.GetBoundsAndStrings(answers.stringsBounds, answers.names);
    CSpotMatchList list;
    answers.hasSpots = parser.LoadSpotMatchItems(&list);
    answers.spots.assign(list.begin(), list.end());
    list = CSpotMatchList();
    answers.hasSpotsAndBounds = parser.LoadSpotItemsAndBounds(&list, answers.spotBounds);
    answers.spotsWithBounds.assign(list.begin(), list.end());
    return answers;
  }

  /// The names of the answers that differ, each after a blank; empty if none does.
  [[nodiscard]] std::string DifferencesTo(const PsScanAnswers& other) const {
    std::string text;
    if (found != other.found || start != other.start || length != other.length)
      text += " FindEPSStart";
    if (isEps != other.isEps) text += " IsEpsFile";
    if (isPostscript != other.isPostscript) text += " IsPostscriptFile";
    if (hasBounds != other.hasBounds || bounds != other.bounds) text += " GetBounds";
    if (hasStrings != other.hasStrings || stringsBounds != other.stringsBounds ||
        names != other.names)
      text += " GetBoundsAndStrings";
    if (hasSpots != other.hasSpots || spots != other.spots) text += " LoadSpotMatchItems";
    if (hasSpotsAndBounds != other.hasSpotsAndBounds || spotsWithBounds != other.spotsWithBounds ||
        spotBounds != other.spotBounds)
      text += " LoadSpotItemsAndBounds";
    return text;
  }
};

/// Where the shipped scans and the literal ones differ on a file; empty if nowhere.
inline std::string DifferencesFromLiteral(const std::string& nativePath) {
  const std::wstring wide(nativePath.begin(), nativePath.end());
  return PsScanAnswers::Of(CPSParser(wide.c_str()))
      .DifferencesTo(PsScanAnswers::Of(LiteralPsScans(nativePath)));
}

}  // namespace rastrel::test
