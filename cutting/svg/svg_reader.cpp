#include "cutting/svg/svg_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cutting/drawing/maps.h"
#include "cutting/job/job_file.h"
#include "cutting/svg/svg_document.h"
#include "cutting/svg/svg_shapes.h"
#include "cutting/svg/svg_style.h"
#include "cutting/svg/svg_text.h"
#include "cutting/svg/svg_view.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::cutting {
namespace {

constexpr double MillimetersPerPixel = 25.4 / 96;
constexpr int MaximumDepth = 1000;   // of elements in each other, used ones included
constexpr int MaximumUseDepth = 16;  // of uses in each other
constexpr std::size_t WorkPerElement = 64;

struct NamedFinding {
  std::wstring_view element;
  std::string_view text;
};

// Elements that are drawn elsewhere. All others but shapes and groups draw nothing.
constexpr std::array Undrawn{NamedFinding{L"text", "text is not read; make it paths first"},
                             NamedFinding{L"image", "images are not read"},
                             NamedFinding{L"foreignObject", "foreign objects are not read"},
                             NamedFinding{L"video", "videos are not read"},
                             NamedFinding{L"animate", "animations are not read"},
                             NamedFinding{L"animateMotion", "animations are not read"},
                             NamedFinding{L"animateTransform", "animations are not read"},
                             NamedFinding{L"set", "animations are not read"}};

struct Context {
  Transform map;  // to millimetres
  SvgStyle style{};
  SvgViewport viewport{};
  std::string_view layer{};
  bool isEditorLayer = false;  // the layer is one of the drawing program, not just a group
  int depth = 0;
  int useDepth = 0;
};

class Reader {
 public:
  Reader(std::size_t bytes, const std::string& name) : m_Limits(bytes), m_Name(name) {}

  Expected<Drawing> Read(std::string_view text);

 private:
  bool Fail(const XmlNode& element, const Failure& reason);
  bool Fail(const XmlNode& element, std::string why) {
    return Fail(element, FailureOf(std::move(why)));
  }
  bool Prepare(const XmlNode& element);
  bool Draw(const XmlNode& element, const Context& parent);
  bool DrawChildren(const XmlNode& element, const Context& context);
  bool DrawInside(const XmlNode& element, Context& context);
  bool DrawShape(const XmlNode& element, const Context& context);
  bool DrawUse(const XmlNode& element, Context& context);
  bool DrawSwitch(const XmlNode& element, const Context& context);
  bool Enter(const XmlNode& element, Context& context, bool& isDrawn);
  bool EnterView(const XmlNode& element, Context& context, const SvgViewport& size);
  void EnterLayer(const XmlNode& element, Context& context) const;
  void Tell(const XmlNode& element, const SvgDeclarations& declarations);
  void AddPath(std::vector<Contour> contours, Paint paint);
  [[nodiscard]] SvgDeclarations DeclarationsOf(const XmlNode& element) const;

  DrawingLimits m_Limits;
  const std::string& m_Name;
  Findings m_Findings;
  SvgStyleSheet m_Sheet;
  std::unordered_map<std::string_view, XmlNode> m_ById;
  CutJob m_Job;
  Failure m_Failure;
};

int LineOf(const XmlNode& element) { return std::max(1, NodeLine(element)); }

bool Reader::Fail(const XmlNode& element, const Failure& reason) {
  m_Failure = FailureOf(reason.why, FailureCode::BadInput);
  m_Failure.where = m_Name;
  m_Failure.line = LineOf(element);
  m_Failure.column = 1;
  return false;
}

// Style sheets count for elements before them as well, and uses for later ones.
bool Reader::Prepare(const XmlNode& element) {
  const std::string_view id = xml::AttributeBytes(element, L"id");
  if (!id.empty()) m_ById.try_emplace(id, element);
  if (xml::IsNamed(element, L"style")) {
    std::string scratch;
    const auto added =
        m_Sheet.Add(xml::RawTextBytes(element, scratch), LineOf(element), m_Findings);
    if (!added) return Fail(element, added.Error());
  }
  for (XmlNode child = xml::FirstChild(element); child; child = xml::NextSibling(child))
    if (xml::IsElement(child) && !Prepare(child)) return false;
  return true;
}

SvgDeclarations Reader::DeclarationsOf(const XmlNode& element) const {
  static constexpr std::uint64_t OfStyle = ~std::uint64_t{0};
  SvgDeclarations declarations;
  for (std::size_t index = 0; index < SvgPropertyCount; ++index) {
    static const auto Names = [] {
      std::array<std::wstring, SvgPropertyCount> names;
      for (std::size_t at = 0; at < SvgPropertyCount; ++at)
        names.at(at) = os::WideFromUtf8(SvgPropertyNames.at(at));
      return names;
    }();
    declarations.Set(static_cast<SvgProperty>(index),
                     SvgTrimmed(xml::AttributeBytes(element, Names.at(index))), 0);
  }
  m_Sheet.Apply(os::Utf8FromWide(xml::BaseName(element)), xml::AttributeBytes(element, L"class"),
                xml::AttributeBytes(element, L"id"), declarations);
  declarations.SetAll(xml::AttributeBytes(element, L"style"), OfStyle);
  return declarations;
}

// The properties that change the picture and not the paths.
void Reader::Tell(const XmlNode& element, const SvgDeclarations& declarations) {
  const auto isSet = [&](SvgProperty property) {
    return !declarations.Of(property).empty() && declarations.Of(property) != "none";
  };
  if (isSet(SvgProperty::ClipPath) || isSet(SvgProperty::Mask))
    m_Findings.Add(LineOf(element), "clips and masks are not applied; paths are whole");
  if (isSet(SvgProperty::Filter)) m_Findings.Add(LineOf(element), "filters are not applied");
  if (isSet(SvgProperty::Dashes)) m_Findings.Add(LineOf(element), "dashes are not applied");
  if (isSet(SvgProperty::MarkerStart) || isSet(SvgProperty::MarkerMid) ||
      isSet(SvgProperty::MarkerEnd))
    m_Findings.Add(LineOf(element), "markers are not read");
}

// The drawing program's own layer counts, or else the innermost group that has a name.
void Reader::EnterLayer(const XmlNode& element, Context& context) const {
  if (!xml::IsNamed(element, L"g")) return;
  const bool isEditorLayer = xml::AttributeBytes(element, L"inkscape:groupmode") == "layer";
  if (!isEditorLayer && context.isEditorLayer) return;
  const std::string_view label = xml::AttributeBytes(element, L"inkscape:label");
  const std::string_view name = label.empty() ? xml::AttributeBytes(element, L"id") : label;
  if (name.empty()) return;
  context.layer = name;
  context.isEditorLayer = isEditorLayer;
}

bool Reader::Enter(const XmlNode& element, Context& context, bool& isDrawn) {
  const SvgDeclarations declarations = DeclarationsOf(element);
  isDrawn = declarations.Of(SvgProperty::Display) != "none";
  if (const auto opacity = SvgLength(declarations.Of(SvgProperty::Opacity), 1))
    isDrawn = isDrawn && *opacity > 0;
  if (!isDrawn) return true;
  Tell(element, declarations);
  auto style = SvgStyleOf(context.style, declarations, context.viewport.Diagonal());
  if (!style) return Fail(element, style.Error());
  context.style = *std::move(style);
  // Of the outermost element it is a matter of how the drawing is placed in another one.
  if (context.depth > 1) {
    const auto map = SvgTransform(xml::AttributeBytes(element, L"transform"));
    if (!map) return Fail(element, "the transformation can't be read");
    context.map = Then(*map, context.map);
  }
  EnterLayer(element, context);
  return true;
}

bool Reader::EnterView(const XmlNode& element, Context& context, const SvgViewport& size) {
  const auto view = SvgViewOf(element, size);
  if (!view) return Fail(element, view.Error());
  context.map = Then(view->map, context.map);
  context.viewport = view->viewport;
  return true;
}

void Reader::AddPath(std::vector<Contour> contours, Paint paint) {
  CutPath path;
  path.contours = std::move(contours);
  path.paint = std::move(paint);
  m_Job.paths.push_back(std::move(path));
}

bool Reader::DrawShape(const XmlNode& element, const Context& context) {
  const SvgStyle& style = context.style;
  auto contours = SvgShape(element, context.viewport, context.map);
  if (!contours) return Fail(element, contours.Error());
  if (contours->empty() || !style.isVisible) return true;
  if (style.fill.kind == SvgPaint::Kind::Other || style.stroke.kind == SvgPaint::Kind::Other)
    m_Findings.Add(LineOf(element), "gradients and patterns are not read");
  const bool isFilled = style.fill.kind == SvgPaint::Kind::Color && !style.hidesFill &&
                        !xml::IsNamed(element, L"line");
  const bool isStroked =
      style.stroke.kind == SvgPaint::Kind::Color && !style.hidesStroke && style.strokeWidth > 0;
  std::size_t count = 0;
  for (const Contour& contour : *contours) count += contour.segments.size() + 1;
  if (!m_Limits.TakeSegments(count * (isFilled && isStroked ? 2 : 1)) ||
      m_Job.paths.size() + 2 > MaximumPaths)
    return Fail(element, "the drawing has too many paths");
  const std::string layer = NameWithin(context.layer, MaximumTextBytes);
  if (isFilled) {
    // An area's outline is closed.
    std::vector<Contour> outline = *contours;
    for (Contour& contour : outline) contour.closed = true;
    AddPath(std::move(outline),
            {.kind = style.isEvenOdd ? Paint::Kind::EvenOddFill : Paint::Kind::Fill,
             .lineWidth = 0,
             .color = style.fill.color,
             .layer = layer});
  }
  const double scale =
      std::sqrt(std::abs(context.map.a * context.map.d - context.map.b * context.map.c));
  if (isStroked)
    AddPath(*std::move(contours), {.kind = Paint::Kind::Stroke,
                                   .lineWidth = style.strokeWidth * scale,
                                   .color = style.stroke.color,
                                   .layer = layer});
  return true;
}

bool Reader::DrawChildren(const XmlNode& element, const Context& context) {
  for (XmlNode child = xml::FirstChild(element); child; child = xml::NextSibling(child))
    if (xml::IsElement(child) && !Draw(child, context)) return false;
  return true;
}

bool Reader::DrawUse(const XmlNode& element, Context& context) {
  std::string_view target = SvgTrimmed(xml::AttributeBytes(element, L"href"));
  if (target.empty()) target = SvgTrimmed(xml::AttributeBytes(element, L"xlink:href"));
  const auto found = target.starts_with('#') ? m_ById.find(target.substr(1)) : m_ById.end();
  if (found == m_ById.end()) {
    m_Findings.Add(LineOf(element), "elements that the drawing does not have are not used");
    return true;
  }
  if (++context.useDepth > MaximumUseDepth)
    return Fail(element, "elements are used more than " + std::to_string(MaximumUseDepth) +
                             " deep within each other, or in themselves");
  const SvgViewport& viewport = context.viewport;
  const auto x = SvgLengthOf(element, L"x", viewport.width);
  const auto y = SvgLengthOf(element, L"y", viewport.height);
  const auto width = SvgLengthOf(element, L"width", viewport.width, viewport.width);
  const auto height = SvgLengthOf(element, L"height", viewport.height, viewport.height);
  for (const auto* length : {&x, &y, &width, &height})
    if (!*length) return Fail(element, length->Error());
  context.map = Then({1, 0, 0, 1, *x, *y}, context.map);
  const XmlNode& used = found->second;
  if (!xml::IsNamed(used, L"symbol")) return Draw(used, context);
  bool isDrawn = true;
  if (!Enter(used, context, isDrawn)) return false;
  return !isDrawn || (EnterView(used, context, {*width, *height}) && DrawChildren(used, context));
}

// The first child that this reader knows.
bool Reader::DrawSwitch(const XmlNode& element, const Context& context) {
  for (XmlNode child = xml::FirstChild(element); child; child = xml::NextSibling(child)) {
    const bool isChosen = xml::IsElement(child) && !xml::IsNamed(child, L"foreignObject") &&
                          xml::AttributeBytes(child, L"requiredExtensions").empty();
    if (isChosen) return Draw(child, context);
  }
  return true;
}

bool Reader::DrawInside(const XmlNode& element, Context& context) {
  if (IsSvgShape(element)) return DrawShape(element, context);
  if (xml::IsNamed(element, L"g") || xml::IsNamed(element, L"a"))
    return DrawChildren(element, context);
  if (xml::IsNamed(element, L"use")) return DrawUse(element, context);
  if (xml::IsNamed(element, L"switch")) return DrawSwitch(element, context);
  // A drawing within the drawing.
  const SvgViewport& viewport = context.viewport;
  const auto x = SvgLengthOf(element, L"x", viewport.width);
  const auto y = SvgLengthOf(element, L"y", viewport.height);
  const auto width = SvgLengthOf(element, L"width", viewport.width, viewport.width);
  const auto height = SvgLengthOf(element, L"height", viewport.height, viewport.height);
  for (const auto* length : {&x, &y, &width, &height})
    if (!*length) return Fail(element, length->Error());
  context.map = Then({1, 0, 0, 1, *x, *y}, context.map);
  return EnterView(element, context, {*width, *height}) && DrawChildren(element, context);
}

bool Reader::Draw(const XmlNode& element, const Context& parent) {
  for (const NamedFinding& undrawn : Undrawn)
    if (xml::IsNamed(element, undrawn.element)) m_Findings.Add(LineOf(element), undrawn.text);
  static constexpr std::array<std::wstring_view, 5> Groups{L"g", L"a", L"use", L"switch", L"svg"};
  const bool isKnown =
      IsSvgShape(element) || std::ranges::find(Groups, xml::BaseName(element)) != Groups.end();
  if (!isKnown) return true;
  std::size_t bytes = WorkPerElement;
  for (const xml::XmlTreeAttribute& attribute : element.Tree()->Attributes())
    bytes += attribute.Value().size();
  if (!m_Limits.TakeWork(bytes)) return Fail(element, "the drawing uses its elements too often");
  Context context = parent;
  if (++context.depth > MaximumDepth)
    return Fail(element, "elements lie too deep within each other");
  bool isDrawn = true;
  if (!Enter(element, context, isDrawn)) return false;
  return !isDrawn || DrawInside(element, context);
}

Expected<Drawing> Reader::Read(std::string_view text) {
  const auto root = LoadSvg(text, m_Name);
  if (!root) return root.Error();
  if (!xml::IsNamed(*root, L"svg")) {
    Fail(*root, "the file is no SVG drawing: its outermost element is no 'svg'");
    return m_Failure;
  }
  bool isGuess = false;
  const auto size = SvgPageSize(*root, isGuess);
  if (!size) {
    Fail(*root, size.Error());
    return m_Failure;
  }
  if (isGuess)
    m_Findings.Add(LineOf(*root),
                   "the drawing names no size; 96 of its units are taken as an inch");
  m_Job.width = size->width * MillimetersPerPixel;
  m_Job.height = size->height * MillimetersPerPixel;
  Context context{.map = {MillimetersPerPixel, 0, 0, -MillimetersPerPixel, 0, m_Job.height}};
  context.viewport = *size;
  context.depth = 1;
  bool isDrawn = true;
  const bool isRead = Prepare(*root) && Enter(*root, context, isDrawn) &&
                      EnterView(*root, context, *size) &&
                      (!isDrawn || DrawChildren(*root, context));
  if (!isRead) return m_Failure;
  if (size->width <= 0 || size->height <= 0) FitPageToPaths(m_Job);
  if (!IsWithinLengths(m_Job)) {
    Fail(*root, "the drawing is larger than 1 km");
    return m_Failure;
  }
  return Drawing{std::move(m_Job), m_Findings.Take()};
}

}  // namespace

Expected<Drawing> ReadSvg(std::string_view text, const std::string& name) {
  if (text.size() <= MaximumDrawingBytes) return Reader(text.size(), name).Read(text);
  Failure failure = FailureOf("the drawing has more than 64 MiB", FailureCode::BadInput);
  failure.where = name;
  return failure;
}

}  // namespace rastrel::cutting
