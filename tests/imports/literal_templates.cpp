#include "tests/imports/literal_templates.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <regex>
#include <span>
#include <vector>

#include "tests/support/host_calls.h"

namespace rastrel::test {
namespace {

using Node = const xmlNode*;
using Path = std::vector<std::string_view>;

std::string Bytes(const xmlChar* text) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string Trimmed(const std::string& text) {
  static const std::regex ends("^[ \t\r\n]+|[ \t\r\n]+$");
  return std::regex_replace(text, ends, "");
}

std::string Joined(Node node) {
  if (node->type == XML_CDATA_SECTION_NODE) return Bytes(node->content);
  if (node->type == XML_TEXT_NODE) {
    std::string text = Bytes(node->content);
    if (Trimmed(text).empty()) text.clear();
    return text;
  }
  std::string text;
  if (node->type == XML_ELEMENT_NODE)
    for (Node child = node->children; child != nullptr; child = child->next) text += Joined(child);
  return text;
}

std::string Text(Node node) { return Trimmed(Joined(node)); }

std::string Attribute(Node node, std::string_view name) {
  for (const xmlAttr* attribute = node->properties; attribute != nullptr;
       attribute = attribute->next) {
    if (attribute->ns != nullptr || Bytes(attribute->name) != name) continue;
    xmlChar* const value = xmlNodeListGetString(node->doc, attribute->children, 1);
    std::string text = Bytes(value);
    xmlFree(value);
    return text;
  }
  return {};
}

/// All elements at the end of a path below a node, in the document's order.
std::vector<Node> All(Node node, std::span<const std::string_view> path) {
  if (path.empty()) return {node};
  std::vector<Node> found;
  for (Node child = node->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE || Bytes(child->name) != path.front()) continue;
    const std::vector<Node> below = All(child, path.subspan(1));
    found.insert(found.end(), below.begin(), below.end());
  }
  return found;
}

/// The text of the last of these nodes that has one.
std::string LastText(const std::vector<Node>& nodes) {
  std::string last;
  for (Node node : nodes)
    if (const std::string text = Text(node); !text.empty()) last = text;
  return last;
}

std::string LastText(Node node, const Path& path) { return LastText(All(node, path)); }

double Number(const std::string& text) {
  static const std::regex form(
      "^[ \t\n\v\f\r]*([+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?)");
  std::smatch found;
  return std::regex_search(text, found, form) ? std::strtod(found[1].str().c_str(), nullptr) : 0;
}

float Single(const std::string& text) { return static_cast<float>(Number(text)); }

int Whole(const std::string& text) {
  static const std::regex form("^[ \t\n\v\f\r]*([+-]?[0-9]+)");
  std::smatch found;
  if (!std::regex_search(text, found, form)) return 0;
  const double value = std::strtod(found[1].str().c_str(), nullptr);
  return static_cast<int>(std::clamp(value, -2147483648.0, 2147483647.0));
}

std::string Line(std::string_view name, const std::string& value) {
  return std::string(name) + "=[" + value + "]\n";
}
std::string Line(std::string_view name, double value) { return Line(name, TextOf(value)); }

/// A code of a format's texts by trying each; 0 for none of them.
int OriginOf(const std::string& text) {
  int code = 0;
  for (const char* row : {"top ", "mid ", "bottom "})
    for (const char* column : {"left", "center", "right"})
      if (++code; text == std::string(row) + column) return code;
  return 0;
}

class Document {
 public:
  explicit Document(std::string_view document)
      : m_Document(xmlReadMemory(document.data(), static_cast<int>(document.size()), "", nullptr,
                                 XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
                   xmlFreeDoc) {}
  [[nodiscard]] Node Root() const {
    return m_Document == nullptr ? nullptr : xmlDocGetRootElement(m_Document.get());
  }

 private:
  std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> m_Document;
};

// CRO

int CroOrigin(const std::vector<Node>& nodes) {
  int last = 0;
  for (Node node : nodes)
    if (const int code = OriginOf(Text(node)); code != 0) last = code;
  return last;
}

std::string CroTexts(std::string_view name, Node plate, std::string_view element) {
  std::string text;
  for (Node node : All(plate, Path{element})) text += Line(name, Text(node));
  return text;
}

std::string CroOverride(Node node, float factor) {
  return Line("line", Whole(Attribute(node, "line"))) +
         Line("height", Single(LastText(node, {"HEIGHT"})) / factor) +
         Line("font", LastText(node, {"FONT"}));
}

std::string CroTilt(Node root) {
  const std::vector<Node> all = All(root, Path{"TILTTOOLPATH"});
  const auto value = [&](std::string_view name, const std::string& otherwise) {
    if (all.empty()) return Line(name, std::string("0"));
    const std::string text = LastText(all.back(), {name});
    const bool isWhole = name != "LBVALUE" && name != "TRVALUE";
    const std::string& source = text.empty() ? otherwise : text;
    return isWhole ? Line(name, Whole(source)) : Line(name, Number(source));
  };
  return value("HORIZONTAL", "1") + value("GROOVE", "0") + value("RELATIVE", "0") +
         value("LBVALUE", "0.254") + value("TRVALUE", "0.762");
}

/// A place of the elements of these parents alone.
std::string CroPlace(const std::vector<Node>& parents) {
  const auto below = [&](std::string_view name) {
    std::vector<Node> nodes;
    for (Node parent : parents)
      for (Node node : All(parent, Path{name})) nodes.push_back(node);
    return nodes;
  };
  return Line("origin", CroOrigin(below("ORIGIN"))) + Line("x", Number(LastText(below("XLOC")))) +
         Line("y", Number(LastText(below("YLOC")))) +
         Line("width", Number(LastText(below("WIDTH")))) +
         Line("height", Number(LastText(below("HEIGHT"))));
}

std::string CroGraphics(Node root) {
  std::string text = CroPlace(All(root, Path{"TEMPLATEGRAPHICS"}));
  for (Node graphic : All(root, Path{"TEMPLATEGRAPHIC"})) {
    std::vector<Node> parents;
    for (Node other = root->children; other != graphic; other = other->next)
      if (other->type == XML_ELEMENT_NODE && Bytes(other->name) == "TEMPLATEGRAPHICS")
        parents.push_back(other);
    parents.push_back(graphic);
    const std::string name = LastText(graphic, {"name"});
    text += Line("name", name.empty() ? Attribute(graphic, "name") : name) +
            Line("file", LastText(graphic, {"FILE"})) + CroPlace(parents);
  }
  return text;
}

std::string CroPlates(Node root) {
  std::string text;
  int number = 0;
  for (Node plate : All(root, Path{"PLATES", "PLATE"})) {
    text += "plate\n" + CroTexts("text", plate, "TEXT") + CroTexts("graphic", plate, "GRAPHIC");
    for (Node node : All(plate, Path{"TEMPLATETEXT"}))
      text += Line("override", number) + CroOverride(node, 1);
    ++number;
  }
  return text;
}

bool LastFlag(Node root, std::string_view name) {
  const std::vector<Node> all = All(root, Path{name});
  return !all.empty() && Whole(Attribute(all.back(), "yes")) != 0;
}

std::string CroDriver(Node root) {
  std::string text = Line("driver", LastText(root, {"DRIVER"}));
  for (Node setting : All(root, Path{"DRIVER", "Setting"})) {
    const std::string header = Attribute(setting, "Header");
    const std::string name = Attribute(setting, "Name");
    const std::string value = Attribute(setting, "Value");
    if (!header.empty() && !name.empty() && !value.empty())
      text += Line("setting", header + "," + name + "," + value);
  }
  return text;
}

}  // namespace

std::optional<std::string> LiteralCro(std::string_view document) {
  const Document parsed(document);
  Node root = parsed.Root();
  if (root == nullptr || Bytes(root->name) != "ENGRAVINGTEMPLATE") return std::nullopt;
  const bool isMetric = LastFlag(root, "METRIC");
  const std::vector<Node> uses = All(root, Path{"TEMPLATESIZE", "USETEMPLATEBLANKSIZE"});
  std::string text = Line("metric", isMetric) + Line("direct", LastFlag(root, "PRINTDIRECT")) +
                     Line("dialog", LastFlag(root, "SHOWPRINTDIALOG")) +
                     Line("name", LastText(root, {"TEMPLATENAME"})) + CroDriver(root);
  text += Line("width", Number(LastText(root, {"TEMPLATESIZE", "WIDTH"}))) +
          Line("height", Number(LastText(root, {"TEMPLATESIZE", "HEIGHT"}))) +
          Line("uses", !uses.empty() && Text(uses.back()) == "TRUE") +
          Line("origin", CroOrigin(All(root, Path{"TEMPLATEORIGIN"})));
  text += Line("spacing", All(root, Path{"VERTICALSPACING"}).empty() ? 0 : 1) +
          Line("margins", Single(LastText(root, {"VERTICALSPACING", "MARGINS"}))) +
          Line("rotation", Number(LastText(root, {"ROTATION"}))) + CroTilt(root) +
          CroGraphics(root);
  for (Node node : All(root, Path{"TEMPLATETEXT"})) text += CroOverride(node, isMetric ? 2.54F : 1);
  return text + CroPlates(root);
}

// LLX

namespace {

int LlxOrigin(Node node, int otherwise) {
  const std::string text = LastText(node, {"ORIGIN"});
  if (text.empty()) return 0;
  if (text == "center") return 5;
  return OriginOf(text) != 0 ? OriginOf(text) : otherwise;
}

int LlxJustify(Node node) {
  const std::string text = LastText(node, {"JUSTIFY"});
  if (text.empty() || text == "left") return 0;
  return text == "right" ? 1 : 2;
}

std::string Singles(Node node, std::initializer_list<std::string_view> names) {
  std::string text;
  for (const std::string_view name : names) text += Line(name, Single(LastText(node, {name})));
  return text;
}

}  // namespace

std::optional<std::string> LiteralLlx(std::string_view document) {
  const Document parsed(document);
  if (parsed.Root() == nullptr) return std::nullopt;
  const std::vector<Node> templates = All(parsed.Root(), Path{"ENGRAVINGTEMPLATE"});
  if (templates.empty()) return std::nullopt;
  const std::vector<Node> plates = All(templates.front(), Path{"PLATE"});
  if (plates.empty()) return std::nullopt;
  Node plate = plates.front();
  std::string text = Line("WIDTH", Number(LastText(plate, {"WIDTH"}))) +
                     Line("HEIGHT", Number(LastText(plate, {"HEIGHT"}))) +
                     Line("origin", LlxOrigin(plate, 7));
  for (Node graphic : All(plate, Path{"GRAPHIC"}))
    text += Line("file", LastText(graphic, {"FILE"})) + Line("origin", LlxOrigin(graphic, 5)) +
            Singles(graphic, {"X", "Y", "WIDTH", "HEIGHT", "ROTATION"});
  for (Node arc : All(plate, Path{"ARCTEXT"}))
    text += Singles(arc, {"CENTERX", "CENTERY", "RADIUS", "ROTATION", "HEIGHT"}) +
            Line("justify", LlxJustify(arc)) + Line("font", LastText(arc, {"FONT"})) +
            Line("text", LastText(arc, {"TEXT"}));
  return text;
}

// BrightStar

namespace {

std::string LastAttribute(const std::vector<Node>& nodes, std::string_view name) {
  std::string last;
  for (Node node : nodes)
    if (const std::string value = Attribute(node, name); !value.empty()) last = value;
  return last;
}

/// Characters of UTF-8.
std::size_t Length(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

/// Whether an origin of the record is longer than its field, also one that is overwritten later.
/// (The texts that random documents have in attributes are all short.)
bool HasLongOrigin(Node record) {
  return std::ranges::any_of(All(record, Path{"ORIGIN"}),
                             [](Node node) { return Length(Text(node)) > 255; });
}

std::string BrightStarFrame(Node frame) {
  const std::vector<Node> fonts = All(frame, Path{"FONT"});
  std::string text = "frame\n" + Line("compression", Attribute(frame, "compression"));
  for (const char* name : {"UPPERXLOC", "UPPERYLOC", "LOWERXLOC", "LOWERYLOC"})
    text += Line(name, Number(Attribute(frame, name)));
  text += Line("font", LastAttribute(fonts, "name")) +
          Line("size", Number(LastAttribute(fonts, "size"))) +
          Line("justification", LastAttribute(fonts, "justification"));
  for (Node line : All(frame, Path{"LINE"})) text += Line("line", Text(line));
  return text;
}

}  // namespace

std::optional<std::string> LiteralBrightStar(std::string_view document) {
  const Document parsed(document);
  if (parsed.Root() == nullptr) return std::nullopt;
  std::string text;
  for (Node record : All(parsed.Root(), Path{"ENGRAVINGTEMPLATE"})) {
    if (HasLongOrigin(record)) return std::nullopt;
    text += "record\n" + Line("width", Number(LastText(record, {"WIDTH"}))) +
            Line("height", Number(LastText(record, {"HEIGHT"}))) +
            Line("origin", LastText(record, {"ORIGIN"}));
    for (Node frame : All(record, Path{"TEXTFRAME"})) text += BrightStarFrame(frame);
  }
  return text;
}

// Documents

namespace {

using Names = std::vector<std::string_view>;
using Grammar = std::map<std::string_view, Names>;

const Grammar& GrammarOf(TemplateDocuments::Format format) {
  static const Grammar cro{
      {"ENGRAVINGTEMPLATE",
       {"TEMPLATENAME", "DRIVER", "TEMPLATESIZE", "ROTATION", "TILTTOOLPATH", "TEMPLATEORIGIN",
        "TEMPLATEGRAPHICS", "TEMPLATEGRAPHIC", "TEMPLATETEXT", "VERTICALSPACING", "PLATES",
        "SHOWPRINTDIALOG", "PRINTDIRECT", "METRIC", "PLATE"}},
      {"DRIVER", {"Setting"}},
      {"TEMPLATESIZE", {"WIDTH", "HEIGHT", "USETEMPLATEBLANKSIZE"}},
      {"TILTTOOLPATH", {"HORIZONTAL", "GROOVE", "RELATIVE", "LBVALUE", "TRVALUE"}},
      {"TEMPLATEGRAPHICS", {"WIDTH", "HEIGHT", "ORIGIN", "XLOC", "YLOC"}},
      {"TEMPLATEGRAPHIC", {"name", "FILE", "WIDTH", "HEIGHT", "ORIGIN", "XLOC", "YLOC"}},
      {"TEMPLATETEXT", {"FONT", "HEIGHT"}},
      {"VERTICALSPACING", {"MARGINS"}},
      {"PLATES", {"PLATE"}},
      {"PLATE", {"TEXT", "TEMPLATETEXT", "GRAPHIC"}}};
  static const Grammar llx{
      {"LLX", {"ENGRAVINGTEMPLATE"}},
      {"ENGRAVINGTEMPLATE", {"PLATE"}},
      {"PLATE", {"WIDTH", "HEIGHT", "ORIGIN", "GRAPHIC", "ARCTEXT"}},
      {"GRAPHIC", {"FILE", "ORIGIN", "X", "Y", "WIDTH", "HEIGHT", "ROTATION"}},
      {"ARCTEXT",
       {"CENTERX", "CENTERY", "RADIUS", "ROTATION", "HEIGHT", "FONT", "JUSTIFY", "TEXT"}}};
  static const Grammar brightStar{{"BRIGHTSTAR", {"ENGRAVINGTEMPLATE"}},
                                  {"ENGRAVINGTEMPLATE", {"WIDTH", "HEIGHT", "ORIGIN", "TEXTFRAME"}},
                                  {"TEXTFRAME", {"FONT", "LINE"}}};
  if (format == TemplateDocuments::Format::Cro) return cro;
  return format == TemplateDocuments::Format::Llx ? llx : brightStar;
}

constexpr std::array<std::string_view, 24> AttributeNames{
    "yes",       "name",      "line",      "Header",    "Name",          "Value",
    "UPPERXLOC", "UPPERYLOC", "LOWERXLOC", "LOWERYLOC", "compression",   "size",
    "font",      "NAME",      "Line",      "xml:space", "justification", "yes ",
    "v:name",    "v:yes",     "HEADER",    "Yes",       "size2",         "x"};

constexpr std::array<std::string_view, 41> Values{"1.5",
                                                  "2",
                                                  "0",
                                                  "-3",
                                                  "4e1",
                                                  "1e999",
                                                  "-1e999",
                                                  "nan",
                                                  "inf",
                                                  "0x10",
                                                  ".5",
                                                  "7.",
                                                  "+8",
                                                  "- 9",
                                                  " 10 ",
                                                  "11 inches",
                                                  "1,5",
                                                  "99999999999",
                                                  "top left",
                                                  "mid left",
                                                  "center",
                                                  "mid center",
                                                  "TOP LEFT",
                                                  "bottom right",
                                                  "Top Left",
                                                  "left",
                                                  "right",
                                                  "Left",
                                                  "Center",
                                                  "LOWER RIGHT",
                                                  "TRUE",
                                                  "true",
                                                  "yes",
                                                  "",
                                                  " ",
                                                  "\xC3\xA9t\xC3\xA9",
                                                  "a &amp; b",
                                                  "&lt;TEXT&gt;",
                                                  "&#9731; snow",
                                                  "\n  two\n  lines\n",
                                                  "Each Line Individually"};

}  // namespace

std::string TemplateDocuments::Value() { return std::string(Values.at(Pick(Values.size()))); }

void TemplateDocuments::Attributes(std::string& text) {
  Names used;
  for (std::size_t count = Pick(4); count > 0; --count) {
    const std::string_view name = AttributeNames.at(Pick(AttributeNames.size()));
    if (name.back() == ' ' || std::ranges::find(used, name) != used.end()) continue;
    used.push_back(name);
    text += " " + std::string(name) + "=\"" + Value() + "\"";
  }
}

void TemplateDocuments::Content(std::string& text, std::string_view name, int depth) {
  const Grammar& grammar = GrammarOf(m_Format);
  const auto known = grammar.find(name);
  for (std::size_t count = Pick(known == grammar.end() ? 3 : 9); count > 0; --count) {
    const std::size_t kind = Pick(20);
    if (kind == 0) text += "<!-- " + std::to_string(count) + " -->";
    if (kind == 1) text += "<![CDATA[" + std::string(Pick(2) == 0 ? " " : "<b>") + "]]>";
    if (kind == 2) text += "<?pi data?>";
    if (kind >= 3 && kind < 6) text += "\n  ";
    if (depth > 6) continue;
    if (known != grammar.end() && kind >= 5)
      Element(text, known->second.at(Pick(known->second.size())), depth + 1);
    else if (kind == 4)
      Element(text, std::next(grammar.begin(), static_cast<long>(Pick(grammar.size())))->first,
              depth + 1);
  }
  if (known == grammar.end() || Pick(10) == 0) text += Value();
}

void TemplateDocuments::Element(std::string& text, std::string_view name, int depth) {
  std::string written(name);
  if (Pick(40) == 0) written.back() = 'q';
  if (Pick(20) == 0) written.insert(0, "v:");
  text += "<" + written;
  Attributes(text);
  if (Pick(12) == 0) {
    text += "/>";
    return;
  }
  text += ">";
  Content(text, name, depth);
  text += "</" + written + ">";
}

std::string TemplateDocuments::Root() {
  if (Pick(50) == 0) return "OTHER";
  if (m_Format == Format::Llx) return "LLX";
  return m_Format == Format::Cro ? "ENGRAVINGTEMPLATE" : "BRIGHTSTAR";
}

std::string TemplateDocuments::Next() {
  std::string text = Pick(2) == 0 ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" : "";
  const std::string root = Root();
  text += "<" + root + " xmlns:v=\"urn:v\">";
  Content(text,
          m_Format == Format::Cro   ? "ENGRAVINGTEMPLATE"
          : m_Format == Format::Llx ? "LLX"
                                    : "BRIGHTSTAR",
          0);
  text += Pick(50) == 0 ? "</wrong>" : "</" + root + ">";
  return text;
}

}  // namespace rastrel::test
