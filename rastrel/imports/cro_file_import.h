#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"

namespace rastrel::xml {
class XmlNode;
}  // namespace rastrel::xml

// The records of a CRO template (docs/formats/cro.md), with the values as the file has them. A
// value that the file does not have is 0 or empty unless a line says otherwise. Nothing is checked:
// sizes may be negative, infinite or no number that a plate could have. Lengths are inches;
// centimetres in a metric file (CCROFileImport::UseMetric).
//
// An origin is a code from 1 to 9, rows from the top, each from the left: 1 top left, 5 the center,
// 9 bottom right. 0 is none.

/// A graphic that plates ask for by its name.
struct CROGraphic {
  std::int32_t origin = 0;  ///< the part of the plate that x and y count from
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  CString name;  ///< by which a plate asks for it
  CString file;  ///< path as the file has it, often a relative one
};

/// How one line of text differs from the others.
struct CROTextOverride {
  std::int32_t line = 0;  ///< the line's number, from the attribute `line`
  float height = 0;       ///< of the line, see CCROFileImport::m_TextOverrides for its unit
  CString font;           ///< name of a font
};

/// The same on a single plate.
struct CROPlateOverride {
  std::int32_t plate = 0;                 ///< index of the plate, from 0
  std::unique_ptr<CROTextOverride> text;  ///< never null
};

/// A setting of the driver. No field is empty.
struct CRODriverSetting {
  std::wstring value;
  std::wstring name;
  std::wstring header;
};

/// Reads a CRO template: a template's size, origin and graphics, and a list of plates with lines of
/// text and names of graphics. It builds nothing in a document: the constructor parses the file
/// into the members, and the host lays the job out. The object owns all records that its members
/// and operations point to, and changes none of them after its construction.
///
/// Thread: one at a time, the host's. Nothing throws but std::bad_alloc, nothing is shown to the
/// user, and the importer itself logs nothing; why the XML layer refused a file is in the
/// application log.
class RASTREL_API CCROFileImport {
 public:
  /// Parses the file at a library path (platform/os/path.h), and keeps the result in m_bParsed. It
  /// is false, with all other members empty or 0, if the path is null, names nothing or has another
  /// extension than "cro", "crx", "cml" or "xml" in any case, if the document is refused both as it
  /// is and after a repair of its text, or if its root is not ENGRAVINGTEMPLATE. The repair decodes
  /// the file by the code page of the setting "CodePage", section "impcml", default 1250. `log` is
  /// kept for callers that pass a stream: nothing is written to it, and it may be null.
  CCROFileImport(const wchar_t* path, FILE* log);
  CCROFileImport(const CCROFileImport&) = delete;
  CCROFileImport& operator=(const CCROFileImport&) = delete;
  virtual ~CCROFileImport();

  /// Whether lengths are centimetres. Only the heights of m_TextOverrides are converted.
  [[nodiscard]] bool UseMetric() const { return m_bMetric; }
  /// Whether the plates are to be printed without being shown first.
  [[nodiscard]] bool IsPrintDirect() const { return m_bPrintDirect; }
  /// Whether the print dialog is to be shown.
  [[nodiscard]] bool IsShowPrintDialog() const { return m_bShowPrintDialog; }

  // Walks. Each GetFirst operation begins its own walk anew, and each GetNext moves on. Both return
  // null after the last, at every call from then on; GetNext also before GetFirst was called.

  /// The first plate's lines of text, an empty array for a plate without any.
  CStringArray* GetFirstPlate();
  CStringArray* GetNextPlate();
  /// The first plate's names of graphics, an empty array for a plate without any.
  CStringArray* GetFirstPlateGraphics();
  CStringArray* GetNextPlateGraphics();
  /// The array that the two operations before returned last, without moving on. Null before
  /// GetFirstPlateGraphics was called, and after the last.
  [[nodiscard]] CStringArray* GetCurrentPlateGraphics() const;
  /// The first element of m_TextOverrides.
  CROTextOverride* GetFirstTextLineOverride();
  CROTextOverride* GetNextTextLineOverride();

  /// The first graphic of exactly that name, or null. The search takes as many steps as there are
  /// graphics.
  [[nodiscard]] CROGraphic* GetGraphicDesc(const CString& name) const;

  bool m_bMetric = false;                          ///< see UseMetric
  bool m_bPrintDirect = false;                     ///< see IsPrintDirect
  bool m_bShowPrintDialog = false;                 ///< see IsShowPrintDialog
  CString m_TemplateName;                          ///< of the template, for people
  CString m_Reserved1;                             ///< always empty
  CString m_DriverName;                            ///< of the device that the template was made for
  std::vector<CRODriverSetting> m_DriverSettings;  ///< in the file's order
  double m_Width = 0;                              ///< of the template, which is that of a plate
  double m_Height = 0;                             ///< of the template
  bool m_bUseTemplateBlankSize = false;            ///< whether the blank has the template's size
  bool m_bParsed = false;                          ///< the result of the constructor
  std::int32_t m_Origin = 0;                       ///< of the template

  // Values of graphics that give none of their own. Those in front of the element that has these
  // values got zeros.
  std::int32_t m_GraphicsOrigin = 0;
  double m_GraphicsX = 0;
  double m_GraphicsY = 0;
  double m_GraphicsWidth = 0;
  double m_GraphicsHeight = 0;
  CString m_Reserved2;  ///< always empty
  CString m_Reserved3;  ///< always empty

  std::int32_t m_HasVerticalSpacing = 0;  ///< 1 if the file says something of vertical spacing
  float m_Margins = 0;                    ///< of the vertical spacing
  double m_Rotation = 0;                  ///< of the plates, in degrees

  // The path of a tilting tool. All are 0 in a file that has none. In one that has, the values that
  // it does not give are 1, 0, 0, 0.254 and 0.762.
  std::int32_t m_TiltHorizontal = 0;
  std::int32_t m_TiltGroove = 0;
  std::int32_t m_TiltRelative = 0;
  double m_TiltLeftBottom = 0;  ///< value at the left or the bottom
  double m_TiltTopRight = 0;    ///< value at the top or the right

  /// Lines of text, an array for each plate in the file's order.
  std::vector<std::unique_ptr<CStringArray>> m_PlateText;
  /// Lines that differ on all plates. The heights of a metric file are divided by 2.54, in single
  /// precision, and so are inches in each file.
  std::vector<std::unique_ptr<CROTextOverride>> m_TextOverrides;
  /// Lines that differ on one plate. Their heights are as the file has them: centimetres in a
  /// metric file.
  std::vector<CROPlateOverride> m_PlateOverrides;
  /// All graphics. Several may have one name, of which the first counts.
  std::vector<std::unique_ptr<CROGraphic>> m_Graphics;
  /// Names of graphics, an array for each plate in the file's order.
  std::vector<std::unique_ptr<CStringArray>> m_PlateGraphics;

 private:
  static constexpr std::size_t AtEnd = static_cast<std::size_t>(-1);

  bool ParseFile(const wchar_t* path);
  void ParseTemplateChild(const rastrel::xml::XmlNode& node);
  void ParseDriverNode(const rastrel::xml::XmlNode& node);
  void ParseTemplateSize(const rastrel::xml::XmlNode& node);
  void ParseRotationAngle(const rastrel::xml::XmlNode& node);
  void ParseTiltToolPath(const rastrel::xml::XmlNode& node);
  void ParseTemplateGraphics(const rastrel::xml::XmlNode& node);
  void ParseTemplateGraphic(const rastrel::xml::XmlNode& node, CROGraphic& graphic);
  void ParseTemplateText(const rastrel::xml::XmlNode& node, CROTextOverride& text);
  void ParseVerticalSpacingNode(const rastrel::xml::XmlNode& node);
  void ParsePlatesNode(const rastrel::xml::XmlNode& node);
  void ParsePlateNode(const rastrel::xml::XmlNode& node, std::int32_t plate);
  void ParseShowPrintDlgNodeAttribute(const rastrel::xml::XmlNode& node);
  void ParsePrintDirectNodeAttribute(const rastrel::xml::XmlNode& node);
  void ParseMetricNodeAttribute(const rastrel::xml::XmlNode& node);
  [[nodiscard]] CROGraphic DefaultGraphic() const;

  std::size_t m_Plate = AtEnd;         // of GetFirstPlate and GetNextPlate
  std::size_t m_PlateGraphic = AtEnd;  // of GetFirstPlateGraphics and GetNextPlateGraphics
  std::size_t m_TextOverride = AtEnd;  // of GetFirstTextLineOverride and GetNextTextLineOverride
};
