#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/psscan/ps_parser.h"
#include "tests/support/memory_file.h"

namespace rastrel::test {

/// Makes the protected operations public.
class OpenPsParser : public CPSParser {
 public:
  using CPSParser::CPSParser;
  using CPSParser::EPSGetLine;
  using CPSParser::GetEPSint;
  using CPSParser::GetEPStext;
  using CPSParser::ParseCMYK;
  using CPSParser::ParseDocColors;
  using CPSParser::ParseRGB;
};

/// A file with this content, and the scans of it.
class ScannedFile {
 public:
  explicit ScannedFile(std::string_view content) { m_File.Write(content); }

  [[nodiscard]] std::string Path() const { return m_File.Path(); }
  [[nodiscard]] std::wstring Wide() const { return m_File.Wide(); }
  [[nodiscard]] OpenPsParser Parser() const { return OpenPsParser(m_File.Wide().c_str()); }

  /// "start length", or "none".
  [[nodiscard]] std::string Start() const {
    long long start = 0;
    long long length = 0;
    const bool found = Parser().FindEPSStart(start, length);
    const std::string numbers = std::to_string(start) + " " + std::to_string(length);
    if (!found) {
      EXPECT_EQ(numbers, "0 0");
      return "none";
    }
    return numbers;
  }
  /// "left bottom right top", or "none".
  [[nodiscard]] std::string Bounds() const {
    CRect rect;
    return Parser().GetBounds(rect) ? TextOf(rect) : "none";
  }
  /// "left bottom right top|name|name", or "none".
  [[nodiscard]] std::string Strings() const {
    CRect rect;
    std::vector<CString> names;
    if (!Parser().GetBoundsAndStrings(rect, names)) return "none";
    std::string text = TextOf(rect);
    for (const CString& name : names) text += "|" + std::string(name.begin(), name.end());
    return text;
  }
  /// "name=c,m,y,k|name=r,g,b", "" without spots, or "none".
  [[nodiscard]] std::string Spots() const {
    CSpotMatchList list;
    return Parser().LoadSpotMatchItems(&list) ? TextOf(list) : "none";
  }
  /// The spots as above, whatever the answer about the bounds.
  [[nodiscard]] std::string SpotsWithBounds() const {
    CSpotMatchList list;
    BOUNDS bounds;
    m_HasBounds = Parser().LoadSpotItemsAndBounds(&list, bounds);
    return TextOf(list);
  }
  /// Whether the last SpotsWithBounds got bounds.
  [[nodiscard]] bool HasBounds() const {
    (void)SpotsWithBounds();
    return m_HasBounds;
  }

  static std::string TextOf(const CRect& rect) {
    return std::to_string(rect.left) + " " + std::to_string(rect.bottom) + " " +
           std::to_string(rect.right) + " " + std::to_string(rect.top);
  }
  static std::string TextOf(const CSpotMatchList& list) {
    std::string text;
    for (const CSpotMatchItem& item : list) {
      EXPECT_EQ(item.GetColor(), item.GetOriginalColor());
      const CString& name = item.GetName();
      text += (text.empty() ? "" : "|") + std::string(name.begin(), name.end()) + "=";
      const int count = item.GetColor().GetColorSpace() == COLORSPACE_CMYK ? 4 : 3;
      for (int index = 0; index < count; ++index) {
        char number[32];
        std::snprintf(number, sizeof number, "%s%g", index == 0 ? "" : ",",
                      item.GetColor().GetComponents().at(static_cast<std::size_t>(index)));
        text += number;
      }
    }
    return text;
  }

 private:
  MemoryFile m_File;
  mutable bool m_HasBounds = false;
};

}  // namespace rastrel::test
