#pragma once

#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/spot_match.h"

namespace rastrel::psscan {
class LineReader;
}

/// Reads the comments of a PostScript or EPS file: where the PostScript begins, whether it is an
/// EPS, its bounds, and its spot colors. The program text is never interpreted.
///
/// It holds only the path, a library path (platform/os/path.h). Every operation opens the file
/// anew; they may be called in any order, any number of times, and on any thread. None logs or
/// throws. An operation returns false if the file does not exist, can't be read as far as the scan
/// needs it, is no regular file, or has no PostScript start.
class RASTREL_API CPSParser {
 public:
  /// Keeps a copy of the path; null is an empty one.
  CPSParser(const wchar_t* path);  // NOLINT(google-explicit-constructor): hosts pass a path
  CPSParser(const CPSParser&);
  CPSParser(CPSParser&&) noexcept;
  CPSParser& operator=(const CPSParser&);
  CPSParser& operator=(CPSParser&&) noexcept;
  ~CPSParser();

  /// Stores the offset of the PostScript and its length, in bytes. It begins at a "%!" at the
  /// file's first byte, at the offset in a DOS EPS header, or at the first "%!PS" found. The length
  /// is the header's, or the distance from the start to the file's last ASCII letter; it may be 0
  /// or negative for a truncated file. If the result is false, both are 0.
  bool FindEPSStart(long long& start, long long& length);

  /// True if the first line of the PostScript contains "epsf", in either case.
  bool IsEpsFile();
  /// True if that line contains "%!ps-adobe", in either case.
  bool IsPostscriptFile();

  /// Stores the first "%%BoundingBox:" that is not deferred to the trailer, in points, with y
  /// upward: `top` is the upper value. Fractions are truncated, and a missing number is 0. False,
  /// with an empty rectangle, if there is none; one on the file's last line is ignored.
  bool GetBounds(CRect& rect);
  /// Stores the bounds as above (the last box read, empty if there is none), and appends the names
  /// of "%%DocumentCustomColors:" to `names`. It is one pass, which ends when it has both, or where
  /// the image data of a bitmap program begins. True for any file with a PostScript start.
  bool GetBoundsAndStrings(CRect& rect, std::vector<CString>& names);

  /// Appends to `list` the spot colors that the document both names and defines, one item for each
  /// definition: first the definitions by CMYK, then those by RGB, each in file order. Names that
  /// are deferred to the trailer are looked for in the last MiB only. True for any file with a
  /// PostScript start. The caller owns the list; no other thread may use it during the call.
  bool LoadSpotMatchItems(CSpotMatchList* list);
  /// The same, and stores the bounding box in centimetres, rounded to single precision. True only
  /// if there is a box. Without one the items are appended all the same, and `bounds` is untouched.
  bool LoadSpotItemsAndBounds(CSpotMatchList* list, BOUNDS& bounds);

 protected:
  /// Reads a line into `line`, of 4,097 bytes, and ends it there with a zero. See
  /// psscan/line_reader.h.
  void EPSGetLine(rastrel::psscan::LineReader& in, char* line);
  /// Reads an integer from the start of `text`; returns the bytes consumed, or 0. See
  /// psscan/tokens.h.
  int GetEPSint(char* text, int& value);
  /// Reads a word or a string in parentheses; returns the bytes consumed. The text ends at its
  /// first CR or LF. See psscan/tokens.h for both.
  int GetEPStext(char* text, CString& out);

  /// These three read a comment, from `offset` of its line, and the "%%+" lines after it, and
  /// append the colors that they find. They leave the first other line in `line`, and the reader
  /// before it. Always true. `atend` is set if the names are in the trailer, and is never cleared.
  bool ParseDocColors(std::vector<CString>* names, rastrel::psscan::LineReader& in, char* line,
                      int offset, bool& atend);
  bool ParseCMYK(CSpotMatchList* list, rastrel::psscan::LineReader& in, char* line, int offset);
  bool ParseRGB(CSpotMatchList* list, rastrel::psscan::LineReader& in, char* line, int offset);

 private:
  struct SpotScan;
  bool ScanSpots(CSpotMatchList* list, SpotScan& scan);
  void FollowComments(rastrel::psscan::LineReader& in, SpotScan& scan);
  void JumpToTrailer(rastrel::psscan::LineReader& in, SpotScan& scan) const;

  std::wstring m_Path;
};

/// 1 if CPSParser::IsEpsFile is true of the file, otherwise 0. `path` is a library path or null.
RASTREL_API int IsEPSFile(const wchar_t* path);
/// 1 if CPSParser::IsPostscriptFile is true of the file, otherwise 0. `path` as above.
RASTREL_API int IsPostscriptFile(const wchar_t* path);
