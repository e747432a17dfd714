#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"

namespace rastrel::xml {
class XmlNode;
}  // namespace rastrel::xml

// The records of an LLX template (docs/formats/llx.md), with the values as the file has them. A
// value that the file does not have is 0 or empty. Nothing is checked. Lengths are inches, angles
// degrees.
//
// An origin is a code from 1 to 9, rows from the top, each from the left: 1 top left, 5 the center,
// 9 bottom right. It is 0 where the file gives none, or an empty one.

/// A graphic on the plate.
struct LLXGraphic {
  std::int32_t origin = 0;  ///< the part of the plate that x and y count from; 5 for unknown texts
  float x = 0;
  float y = 0;
  float width = 0;
  float height = 0;
  float rotation = 0;
  CString reserved;  ///< always empty
  CString file;      ///< path as the file has it, often a relative one
};

/// Values of LLXArcText::justify.
enum LLXJustification : std::int32_t {
  LLXJUSTIFY_LEFT = 0,
  LLXJUSTIFY_RIGHT = 1,
  LLXJUSTIFY_CENTER = 2
};

/// Text along a circle.
struct LLXArcText {
  float centerX = 0;
  float centerY = 0;
  float radius = 0;
  float rotation = 0;
  float height = 0;          ///< of the letters
  std::int32_t justify = 0;  ///< LLXJustification; center for unknown texts
  CString font;              ///< name of a font
  CString text;
};

/// Reads an LLX template: one plate with its size, graphics and text along circles. It builds
/// nothing in a document: the constructor parses the file into the members, and the host lays the
/// plate out. The object owns all records that its members point to, and changes none of them after
/// its construction. A copy has records of its own.
///
/// Thread: one at a time, the host's. Nothing throws but std::bad_alloc, nothing is shown to the
/// user, and the importer itself logs nothing; why the XML layer refused a file is in the
/// application log.
class RASTREL_API CLLXFileImport {
 public:
  /// Parses the file at a library path (platform/os/path.h), and keeps the result in m_bParsed. It
  /// is false, with all other members empty or 0, if the path is null, names nothing or has another
  /// extension than "llx" in any case, if the document is refused, or if its root has no child
  /// ENGRAVINGTEMPLATE with a child PLATE. The first of each counts. `log` is kept for callers that
  /// pass a stream: nothing is written to it, and it may be null.
  CLLXFileImport(const wchar_t* path, FILE* log);
  CLLXFileImport(const CLLXFileImport& other);
  CLLXFileImport& operator=(const CLLXFileImport& other);
  virtual ~CLLXFileImport();

  bool m_bParsed = false;     ///< the result of the constructor
  CString m_Reserved1;        ///< always empty
  CString m_Reserved2;        ///< always empty
  double m_Width = 0;         ///< of the plate
  double m_Height = 0;        ///< of the plate
  std::int32_t m_Origin = 0;  ///< of the plate; 7 for unknown texts

  std::vector<std::unique_ptr<LLXGraphic>> m_Graphics;  ///< in the file's order
  std::vector<std::unique_ptr<LLXArcText>> m_ArcTexts;  ///< in the file's order

 private:
  bool ParseFile(const wchar_t* path);
  void ParsePlateChild(const rastrel::xml::XmlNode& node);
  void ParseGraphicNode(const rastrel::xml::XmlNode& node, LLXGraphic& graphic);
  void ParseArcTextNode(const rastrel::xml::XmlNode& node, LLXArcText& text);
};
