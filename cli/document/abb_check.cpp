#include "cli/document/abb_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

#include "cli/document/schema_check.h"
#include "cli/document/text_findings.h"
#include "host/document/document.h"
#include "host/document/measure_text.h"
#include "host/text/font_catalog.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

// Inches by which a hole may reach beyond its plate, since places are rounded to thousandths.
constexpr double EdgeTolerance = 0.001;
// Inches of a hole that names none.
constexpr double DefaultDiameter = 0.16;
// Steps of 255 in each of red, green and blue within which two colors look the same.
constexpr double SameColorTolerance = 8;

using Names = std::initializer_list<std::wstring_view>;

class Checker {
 public:
  explicit Checker(document::DocumentHost& host) : m_Host(host) {}

  Findings Check(const XmlNode& root) {
    Children(root, {L"ENGRAVINGTEMPLATE"});
    for (const XmlNode& part : ChildrenNamed(root, L"ENGRAVINGTEMPLATE")) Template(part);
    if (!m_HasPlates) AddFinding(root, "there is no <PLATES>, without which nothing is imported");
    return std::move(m_Findings);
  }

 private:
  void AddFinding(const XmlNode& node, std::string text) {
    m_Findings.push_back({NodeLine(node), std::move(text)});
  }

  static std::string NameOf(const XmlNode& node) {
    std::wstring name;
    NodeBaseName(node, name);
    return os::Utf8FromWide(name);
  }

  void Children(const XmlNode& node, Names known) {
    int count = 0;
    for (const XmlNode& child : NodeChildren(node, count)) {
      std::wstring name;
      if (!NodeBaseName(child, name) || NodeLine(child) == 0) continue;
      if (std::ranges::find(known, std::wstring_view(name)) == known.end())
        AddFinding(child, "<" + NameOf(child) + "> is not known in <" + NameOf(node) + ">");
    }
  }

  void Attributes(const XmlNode& node, Names known) {
    for (const auto& [name, value] : AttributeList(node)) {
      if (std::ranges::find(known, std::wstring_view(name)) == known.end())
        AddFinding(node, "<" + NameOf(node) + "> has an attribute \"" + os::Utf8FromWide(name) +
                             "\" that is not known");
    }
  }

  void Template(const XmlNode& node) {
    Children(node, {L"PLATES", L"PLATE"});
    for (const XmlNode& plates : ChildrenNamed(node, L"PLATES")) {
      m_HasPlates = true;
      if (const XmlNode inside = FirstChildNamed(plates, L"PLATE"))
        AddFinding(inside, "a <PLATE> in <PLATES> is not read; it has to stand beside it");
    }
    for (const XmlNode& plate : ChildrenNamed(node, L"PLATE")) Plate(plate);
  }

  void Plate(const XmlNode& node) {
    Children(node, {L"COLOR", L"TOOLNAME", L"WIDTH", L"HEIGHT", L"TEXTCOLOR", L"TEXTFRAME", L"TEXT",
                    L"DRILLPOINT"});
    Color(node, L"COLOR");
    Number(node, L"WIDTH", true);
    Number(node, L"HEIGHT", true);
    Number(node, L"TEXTFRAME", false);
    const auto lines = ChildrenNamed(node, L"TEXT");
    if (!lines.empty()) Color(node, L"TEXTCOLOR");
    for (const XmlNode& line : lines) Line(line);
    for (const XmlNode& drill : ChildrenNamed(node, L"DRILLPOINT")) {
      Children(drill, {L"COLOR", L"TOOLNAME", L"XLOC", L"YLOC", L"DIAMETER"});
      Color(drill, L"COLOR");
      Number(drill, L"XLOC", true);
      Number(drill, L"YLOC", true);
      Number(drill, L"DIAMETER", false);
      Hole(node, drill);
    }
  }

  // A number as the import reads it: of several the last.
  static double Value(const XmlNode& node, std::wstring_view name) {
    double value = 0;
    for (const XmlNode& child : ChildrenNamed(node, name)) NodeDouble(child, value);
    return value;
  }

  // A hole that is not wholly in its plate.
  void Hole(const XmlNode& plate, const XmlNode& drill) {
    const double width = Value(plate, L"WIDTH");
    const double height = Value(plate, L"HEIGHT");
    if (!(width > 0 && height > 0)) return;  // the plate itself is left out
    const double x = Value(drill, L"XLOC");
    const double y = Value(drill, L"YLOC");
    const double given = Value(drill, L"DIAMETER");
    const double radius = std::abs(given == 0 ? DefaultDiameter : given) / 2;
    const auto reaches = [&](double by) {
      // Written so that a measure that is no number counts as beside.
      return !(x - by >= -EdgeTolerance && y - by >= -EdgeTolerance &&
               x + by <= width + EdgeTolerance && y + by <= height + EdgeTolerance);
    };
    const std::string at =
        "the hole at " + document::MeasureText(x) + ", " + document::MeasureText(y) + " in is ";
    const std::string of = "its plate of " + document::MeasureText(width) + " by " +
                           document::MeasureText(height) + " in";
    if (reaches(0)) {
      AddFinding(drill, at + "beside " + of);
    } else if (reaches(radius)) {
      AddFinding(drill, at + "cut by the edge of " + of);
    }
  }

  void Line(const XmlNode& node) {
    Children(node, {L"TOOLNAME", L"FONT"});
    Attributes(node, {L"line", L"data"});
    std::wstring data;
    if (!AttributeString(node, L"data", data)) return;
    const XmlNode font = FirstChildNamed(node, L"FONT");
    if (!font) return AddFinding(node, "the text has no <FONT>");
    Attributes(font, {L"name", L"size"});
    std::wstring size;
    if (!AttributeString(font, L"size", size) || !IsNumber(size))
      AddFinding(font, "the font has no size that is a number");
    std::wstring name;
    if (!AttributeString(font, L"name", name)) return AddFinding(font, "the font has no name");
    Font(font, name);
  }

  void Font(const XmlNode& node, std::wstring name) {
    const std::string asked = os::Utf8FromWide(name);
    name.push_back(L'\0');
    const int type = imports::FontTypeOf(name.data());
    // The extension's dot has become a terminator.
    name.resize(name.find(L'\0'));
    const text::FontFace face = m_Host.GetFonts().FaceOf(type, name);
    if (face.replaced)
      AddFinding(node,
                 "the font \"" + asked + "\" can't be had; " + face.family + " stands in for it");
  }

  void Number(const XmlNode& node, std::wstring_view name, bool needed) {
    const XmlNode child = FirstChildNamed(node, name);
    std::wstring value;
    const bool given = child && NodeText(child, value);
    const std::string shown = "<" + os::Utf8FromWide(name) + ">";
    if (!given && needed)
      AddFinding(node, "<" + NameOf(node) + "> has no " + shown + ", which counts as 0");
    if (given && !IsNumber(value))
      AddFinding(child, shown + " is no number: \"" + os::Utf8FromWide(value) + "\"");
  }

  void Color(const XmlNode& node, std::wstring_view name) {
    const XmlNode child = FirstChildNamed(node, name);
    std::wstring value;
    if (!child || !NodeText(child, value))
      return AddFinding(node, "<" + NameOf(node) + "> has no <" + os::Utf8FromWide(name) +
                                  ">, and becomes black");
    CVKFullColor color;
    if (m_Host.GetApplication()->FindPaletteColor(value.c_str(), color) == 0)
      AddFinding(child,
                 "the palette has no colour \"" + os::Utf8FromWide(value) + "\"; it becomes black");
  }

  document::DocumentHost& m_Host;
  Findings m_Findings;
  bool m_HasPlates = false;
};

bool HasText(const XmlNode& plate) {
  std::wstring data;
  return std::ranges::any_of(ChildrenNamed(plate, L"TEXT"), [&](const XmlNode& line) {
    return AttributeString(line, L"data", data);
  });
}

// The colors of plates by their sheet layer, which only the plate and the text on it are on.
using PlateColors = std::map<int, CVKColor>;

// Whether the two are so near that nobody sees a difference.
bool LookTheSame(const CVKColor& left, const CVKColor& right) {
  std::array<double, 3> one{};
  std::array<double, 3> other{};
  left.GetColorChannels(&one[0], &one[1], &one[2], nullptr);
  right.GetColorChannels(&other[0], &other[1], &other[2], nullptr);
  return std::ranges::equal(
      one, other, [](double a, double b) { return std::abs(a - b) <= SameColorTolerance; });
}

// Adds the findings about one text.
template <typename Add>
void CheckText(const document::Object& object, const PlateColors& colors,
               const text::FontCatalog& fonts, Add add) {
  for (std::string& text : TextFindings(object, fonts)) add(std::move(text));
  const auto plate = colors.find(object.attributes.sheetLayer);
  if (plate != colors.end() && LookTheSame(plate->second, object.attributes.layer)) {
    add("the text has the colour of its plate, and can't be seen");
  }
}

// Lines of the plates that have text, in order.
std::vector<int> TextPlates(const XmlNode& root) {
  std::vector<int> lines;
  for (const XmlNode& part : ChildrenNamed(root, L"ENGRAVINGTEMPLATE")) {
    for (const XmlNode& plate : ChildrenNamed(part, L"PLATE")) {
      if (HasText(plate)) lines.push_back(NodeLine(plate));
    }
  }
  return lines;
}

}  // namespace

Findings CheckAbb(const std::wstring& path, document::DocumentHost& host) {
  const XmlNode root = LoadXmlFile(path);
  if (!root) return {};
  Findings findings = Checker(host).Check(root);
  std::ranges::stable_sort(findings, {}, &Finding::line);
  return findings;
}

Findings CheckAbbText(const std::wstring& path, const document::DocumentHost& host) {
  Findings findings;
  const std::vector<int> plates = TextPlates(LoadXmlFile(path));
  const document::Document& document = host.GetDocument();
  std::vector<const document::Object*> texts;
  PlateColors colors;
  for (const host::ObjectHandle member : document.Members(host::DocumentRoot)) {
    const document::Object* object = document.Find(member);
    const document::Attributes& attributes = object->attributes;
    if (std::holds_alternative<document::TextShape>(object->shape)) texts.push_back(object);
    if (std::holds_alternative<document::PlateShape>(object->shape)) {
      colors.try_emplace(attributes.sheetLayer, attributes.layer);
    }
  }
  // A plate that got no text, for instance because it was refused, leaves its place unknown.
  const bool placesAreKnown = plates.size() == texts.size();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    CheckText(*texts[i], colors, host.GetFonts(), [&](std::string text) {
      findings.push_back({placesAreKnown ? plates[i] : 0, std::move(text)});
    });
  }
  return findings;
}

}  // namespace rastrel::cli
