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

/// What the comments of a PostScript or EPS file tell: where the PostScript begins, whether it is
/// an EPS, its bounds, and its spot colors. The program text is never interpreted.
///
/// It holds the path alone (library text, see platform/os/path.h). Every operation opens the file
/// anew, in any order and any number of times, from any thread. None reports a message or throws. A
/// file that does not exist, can't be read, is no regular file or holds no PostScript start gives
/// false, and so does one that can't be read to where its scan leads.
class RASTREL_API CPSParser {
 public:
  /// Keeps a copy of the path; null is an empty one.
  CPSParser(const wchar_t* path);  // NOLINT(google-explicit-constructor): hosts pass a path
  CPSParser(const CPSParser&);
  CPSParser(CPSParser&&) noexcept;
  CPSParser& operator=(const CPSParser&);
  CPSParser& operator=(CPSParser&&) noexcept;
  ~CPSParser();

  /// Where the PostScript begins and how long it is, in bytes. It begins at "%!" at the file's
  /// start, where a DOS EPS header says, or at the first "%!PS" found. The length is the header's,
  /// or reaches from the start to the file's last ASCII letter; it may be 0 or negative for a file
  /// cut short. Both are 0 with false.
  bool FindEPSStart(long long& start, long long& length);

  /// True if the first line of the PostScript holds "epsf", in either case.
  bool IsEpsFile();
  /// True if it holds "%!ps-adobe", in either case.
  bool IsPostscriptFile();

  /// The first "%%BoundingBox:" that has its numbers with it, in points, y upward: `top` is the
  /// upper value. Fractions are cut off, a missing number is 0. Empty and false if there is none;
  /// one on the file's last line doesn't count.
  bool GetBounds(CRect& rect);
  /// The bounds as above (the last one that was passed, empty if none), and the names of
  /// "%%DocumentCustomColors:" appended to `names`, in one pass, which ends as soon as it has both,
  /// or where the image data of a bitmap program begins. True for any file with a PostScript start.
  bool GetBoundsAndStrings(CRect& rect, std::vector<CString>& names);

  /// Appends to `list` the spot colors that the document names and defines: first those defined by
  /// CMYK, then those by RGB, each in file order, one item a definition. Names that are deferred to
  /// the trailer are looked for in the last MiB only. True for any file with a PostScript start.
  /// The caller owns the list; no other thread may use it meanwhile.
  bool LoadSpotMatchItems(CSpotMatchList* list);
  /// The same, and the bounding box in centimetres, rounded to single precision. True only if there
  /// was a box; the items are appended either way. `bounds` is untouched without one.
  bool LoadSpotItemsAndBounds(CSpotMatchList* list, BOUNDS& bounds);

 protected:
  /// Reads a line into `line`, of 4,097 bytes, and ends it there with a zero. See
  /// psscan/line_reader.h.
  void EPSGetLine(rastrel::psscan::LineReader& in, char* line);
  /// Reads an integer from the start of `text`; returns the bytes consumed, or 0. See
  /// psscan/tokens.h.
  int GetEPSint(char* text, int& value);
  /// Reads a word or a string in parentheses; returns the bytes consumed. The text ends at its
  /// first CR or LF. See psscan/tokens.h.
  int GetEPStext(char* text, CString& out);

  /// These three read a comment, from `offset` of its line on, and the "%%+" lines behind it, and
  /// append what they find. They leave the first other line in `line`, and the reader before it.
  /// Always true. `atend` is set if the names stand in the trailer, and is never cleared.
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

/// 1 if CPSParser::IsEpsFile holds of the file, or 0.
RASTREL_API int IsEPSFile(const wchar_t* path);
/// 1 if CPSParser::IsPostscriptFile holds of the file, or 0.
RASTREL_API int IsPostscriptFile(const wchar_t* path);
