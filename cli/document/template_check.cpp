#include "cli/document/template_check.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "cli/document/schema_check.h"
#include "cli/document/template_schema.h"
#include "cli/document/text_findings.h"
#include "host/document/document.h"
#include "host/text/font_catalog.h"
#include "rastrel/imports/cr2/character_references.h"
#include "rastrel/imports/cr2/plotter_choice.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

std::string Quoted(std::wstring_view text) { return "\"" + os::Utf8FromWide(text) + "\""; }

// Adds the findings that no schema shows. One class for the formats, since they share their parts;
// each has an operation for its own.
class ContentChecker {
 public:
  explicit ContentChecker(document::DocumentHost& host) : m_Host(host) {}

  Findings Cro(const XmlNode& root) {
    std::set<std::wstring> known;
    for (const XmlNode& graphic : ChildrenNamed(root, L"TEMPLATEGRAPHIC")) {
      std::wstring name;
      AttributeString(graphic, L"name", name);
      for (const XmlNode& child : ChildrenNamed(graphic, L"name")) NodeText(child, name);
      known.insert(name);
      File(graphic, ChildText(graphic, L"FILE"));
    }
    for (const XmlNode& text : ChildrenNamed(root, L"TEMPLATETEXT"))
      FontFile(text, ChildText(text, L"FONT"));
    for (const XmlNode& plates : ChildrenNamed(root, L"PLATES")) {
      for (const XmlNode& plate : ChildrenNamed(plates, L"PLATE")) CroPlate(plate, known);
    }
    return std::move(m_Findings);
  }

  Findings Llx(const XmlNode& root) {
    OnlyFirst(root, L"ENGRAVINGTEMPLATE");
    const XmlNode part = FirstChildNamed(root, L"ENGRAVINGTEMPLATE");
    OnlyFirst(part, L"PLATE");
    const XmlNode plate = FirstChildNamed(part, L"PLATE");
    for (const XmlNode& graphic : ChildrenNamed(plate, L"GRAPHIC"))
      File(graphic, ChildText(graphic, L"FILE"));
    for (const XmlNode& text : ChildrenNamed(plate, L"ARCTEXT"))
      FontFile(text, ChildText(text, L"FONT"));
    return std::move(m_Findings);
  }

  Findings BrightStar(const XmlNode& root) {
    OnlyFirst(root, L"ENGRAVINGTEMPLATE");
    const XmlNode part = FirstChildNamed(root, L"ENGRAVINGTEMPLATE");
    for (const XmlNode& frame : ChildrenNamed(part, L"TEXTFRAME")) {
      for (const XmlNode& font : ChildrenNamed(frame, L"FONT")) {
        std::wstring name;
        if (AttributeString(font, L"name", name)) FontFile(font, name);
      }
    }
    return std::move(m_Findings);
  }

  Findings CrownTrophy(const XmlNode& root, bool zml) {
    m_Zml = zml;
    const XmlNode table = FirstChildNamed(root, L"table_size");
    std::wstring origin;
    if (!zml && table && AttributeString(table, L"origin", origin) && origin != L"top left" &&
        origin != L"bottom left")
      Add(table, "the origin of the table is " + Quoted(origin) + ", and becomes \"top left\"");
    if (zml) Driver(root);
    std::set<std::wstring> known;
    for (const XmlNode& entry :
         ChildrenNamed(FirstChildNamed(root, L"graphics"), L"graphic_location")) {
      std::wstring name;
      AttributeString(entry, L"name", name);
      known.insert(name);
      // Of the second generation no graphic is placed, whether it is found or not.
      if (!zml) File(entry, ChildText(entry, L"file"));
    }
    const XmlNode part = FirstChildNamed(root, L"template");
    Colors(part);
    Colors(FirstChildNamed(part, L"cutline"));
    Colors(FirstChildNamed(root, L"Output_Filter"));
    for (const XmlNode& plate : ChildrenNamed(FirstChildNamed(root, L"plates"), L"plate")) {
      for (const XmlNode& frame : ChildrenNamed(plate, L"graphic_frame"))
        GraphicFrame(frame, known);
      for (const XmlNode& frame : ChildrenNamed(plate, L"text_frame")) {
        for (const XmlNode& font : ChildrenNamed(frame, L"font")) CrownFont(font);
      }
    }
    return std::move(m_Findings);
  }

 private:
  void Add(const XmlNode& node, std::string text) {
    m_Findings.push_back({NodeLine(node), std::move(text)});
  }

  static std::wstring ChildText(const XmlNode& node, std::wstring_view name) {
    std::wstring text;
    for (const XmlNode& child : ChildrenNamed(node, name)) NodeText(child, text);
    return text;
  }

  void OnlyFirst(const XmlNode& parent, std::wstring_view name) {
    const auto all = ChildrenNamed(parent, name);
    for (std::size_t i = 1; i < all.size(); ++i)
      Add(all[i], "only the first <" + os::Utf8FromWide(name) + "> is imported");
  }

  void File(const XmlNode& node, const std::wstring& path) {
    if (!path.empty() && !os::IsReadable(path))
      Add(node, "the graphic " + Quoted(path) + " is not found");
  }

  // A font by the name of its file, or of a family.
  void FontFile(const XmlNode& node, std::wstring name) {
    if (name.empty()) return;
    const std::wstring asked = name;
    name.push_back(L'\0');
    const int type = imports::FontTypeOf(name.data());
    name.resize(name.find(L'\0'));
    const text::FontFace face = m_Host.GetFonts().FaceOf(type, name);
    if (face.replaced)
      Add(node,
          "the font " + Quoted(asked) + " can't be had; " + face.family + " stands in for it");
  }

  // The importer looks for the plotter by the text of Rotation.
  void Driver(const XmlNode& root) {
    const XmlNode driver = FirstChildNamed(root, L"Driver");
    if (!driver) return;
    std::wstring name;
    NodeText(FirstChildNamed(root, L"Rotation"), name);
    if (!imports::FindPlotter(*m_Host.GetApplication(), name))
      Add(driver,
          "<Driver> chooses no plotter: it goes by the text of <Rotation>, and no plotter "
          "of this installation has the name " +
              Quoted(name));
  }

  void CroPlate(const XmlNode& plate, const std::set<std::wstring>& known) {
    for (const XmlNode& graphic : ChildrenNamed(plate, L"GRAPHIC")) {
      std::wstring name;
      if (NodeText(graphic, name) && !known.contains(name))
        Add(graphic, "there is no <TEMPLATEGRAPHIC> of the name " + Quoted(name));
    }
    for (const XmlNode& text : ChildrenNamed(plate, L"TEMPLATETEXT"))
      FontFile(text, ChildText(text, L"FONT"));
  }

  void GraphicFrame(const XmlNode& frame, const std::set<std::wstring>& known) {
    if (m_Zml) {
      Add(frame, "a graphic frame of this format is checked, and never appears");
    } else {
      const std::wstring name = ChildText(frame, L"graphic");
      if (!name.empty() && !known.contains(name))
        Add(frame, "there is no <graphic_location> of the name " + Quoted(name));
    }
    Colors(frame);
  }

  // Colors that become none.
  void Colors(const XmlNode& node) {
    for (const XmlNode& color : ChildrenNamed(node, L"color")) {
      std::wstring format;
      AttributeString(color, L"format", format);
      const std::wstring name = ChildText(color, L"name");
      CVKFullColor found;
      if (!m_Zml && format == L"NAME" &&
          m_Host.GetApplication()->FindPaletteColor(name.c_str(), found) == 0)
        Add(color, "the palette has no colour " + Quoted(name) + ", and there is none");
      if (!m_Zml && FirstChildNamed(color, L"hex"))
        Add(color, "<hex> gives no colour in this format");
    }
  }

  void CrownFont(const XmlNode& font) {
    Colors(font);
    Face(font, font);
    for (const XmlNode& line : ChildrenNamed(font, L"line")) {
      const auto spans = ChildrenNamed(line, L"span");
      if (spans.empty()) References(line);
      for (const XmlNode& span : spans) Span(font, span);
    }
  }

  void Span(const XmlNode& font, const XmlNode& span) {
    Colors(span);
    for (const XmlNode& color : ChildrenNamed(span, L"color")) {
      const std::wstring name = ChildText(color, L"name");
      if (!name.empty())
        Add(color, "the name " + Quoted(name) + " of the colour is engraved as a part of the text");
    }
    std::wstring text;
    if (!m_Zml && !AttributeString(span, L"face", text))
      Add(span,
          "<span> has no face, and is set in a replacement; that of its <font> does not count");
    if (m_Zml && !AttributeString(span, L"size", text))
      Add(span, "<span> has no size, which is 0; that of its <font> does not count");
    Face(span, m_Zml ? font : span);
    References(span);
  }

  // The font of an element; `fallback` is asked where it has no face.
  void Face(const XmlNode& node, const XmlNode& fallback) {
    std::wstring face;
    std::wstring style;
    if (!AttributeString(node, L"face", face)) return;
    if (!AttributeString(node, L"style", style)) AttributeString(fallback, L"style", style);
    const bool file = face.size() >= 5 && face[face.size() - 4] == L'.';
    FontFile(node, file || style.empty() ? face : face + L" " + style);
  }

  void References(const XmlNode& node) {
    std::wstring text;
    if (!NodeText(node, text)) return;
    const auto kind = m_Zml ? imports::ReferenceKind::Zml : imports::ReferenceKind::Cr2;
    const auto replaced = imports::ReplaceCharacterReferences(text, kind);
    if (replaced.unicodeLost)
      Add(node, "characters of " + Quoted(text) + " can't be kept, and become others");
    if (replaced.text.find(L"&#") != std::wstring::npos)
      Add(node, "a character reference of " + Quoted(text) + " is engraved as it is written");
  }

  document::DocumentHost& m_Host;
  Findings m_Findings;
  bool m_Zml = false;
};

Findings CheckContent(TemplateFormat format, const XmlNode& root, document::DocumentHost& host) {
  ContentChecker checker(host);
  switch (format) {
    case TemplateFormat::Cro: return checker.Cro(root);
    case TemplateFormat::Llx: return checker.Llx(root);
    case TemplateFormat::BrightStar: return checker.BrightStar(root);
    case TemplateFormat::Cr2: return checker.CrownTrophy(root, false);
    case TemplateFormat::Zml: return checker.CrownTrophy(root, true);
    case TemplateFormat::Document:
    case TemplateFormat::Abb: break;
  }
  return {};
}

void AppendLines(std::vector<int>& lines, const XmlNode& parent, std::wstring_view name) {
  for (const XmlNode& node : ChildrenNamed(parent, name)) lines.push_back(NodeLine(node));
}

}  // namespace

Findings CheckTemplate(TemplateFormat format, const XmlNode& root, document::DocumentHost& host) {
  const TemplateSchema* schema = SchemaOf(format);
  if (!root || schema == nullptr) return {};
  Findings findings = CheckSchema(*schema, root);
  std::ranges::move(CheckContent(format, root, host), std::back_inserter(findings));
  std::ranges::stable_sort(findings, {}, &Finding::line);
  return findings;
}

Findings CheckTexts(const document::DocumentHost& host, const std::vector<int>& plateLines) {
  const document::Document& document = host.GetDocument();
  const std::vector<PlacedPane> panes = PanesOf(document);
  PaneFinder finder(panes);
  Findings findings;
  for (const host::ObjectHandle member : document.Members(host::DocumentRoot)) {
    const document::Object& object = *document.Find(member);
    if (!IsText(object)) continue;
    const std::size_t pane = finder.Find(document, member);
    const bool known = panes.size() == plateLines.size() && pane < panes.size();
    for (std::string& text : TextFindings(object, host.GetFonts()))
      findings.push_back({known ? plateLines[pane] : 0, std::move(text)});
  }
  return findings;
}

Findings CheckSettings(const document::DocumentHost& host) {
  Findings findings;
  for (const auto& [section, key] : host.RefusedSettings())
    findings.push_back({0, "the setting " + Quoted(key) + " of " + Quoted(section) +
                               " can't be stored in settings.ini of the data root"});
  return findings;
}

std::vector<int> PlateLines(TemplateFormat format, const XmlNode& root) {
  std::vector<int> lines;
  switch (format) {
    case TemplateFormat::Cro:
      for (const XmlNode& plates : ChildrenNamed(root, L"PLATES"))
        AppendLines(lines, plates, L"PLATE");
      break;
    case TemplateFormat::Cr2:
    case TemplateFormat::Zml: AppendLines(lines, FirstChildNamed(root, L"plates"), L"plate"); break;
    case TemplateFormat::Llx: {
      // The first plate of the first template is the whole sign.
      const XmlNode plate = FirstChildNamed(FirstChildNamed(root, L"ENGRAVINGTEMPLATE"), L"PLATE");
      if (plate) lines.push_back(NodeLine(plate));
      break;
    }
    default: break;
  }
  return lines;
}

}  // namespace rastrel::cli
