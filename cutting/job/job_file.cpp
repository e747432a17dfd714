#include "cutting/job/job_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>

#include "cutting/job/json_reader.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cutting {
namespace {

constexpr std::string_view Format = "rastrel-cut-job";
constexpr int Version = 1;
constexpr std::array<std::string_view, 4> Kinds{"stroke", "fill", "eofill", "text"};
constexpr std::array<std::string_view, 4> Models{"gray", "rgb", "cmyk", "spot"};
constexpr std::array<std::size_t, 4> ComponentCounts{1, 3, 4, 0};
constexpr std::array<std::string_view, 3> Shapes{"corner", "cross", "circle"};
constexpr int MaximumPasses = 99;
constexpr int MaximumOrder = 1'000'000;
constexpr int MaximumBridges = 1000;

// ---- Writing ----

void Append(std::string& text, double value) {
  std::array<char, 32> digits{};
  // No format of ours has a number that is none.
  if (!std::isfinite(value)) value = 0;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text.append(digits.data(), end.ptr);
}

void AppendQuoted(std::string& text, std::string_view value) {
  text += '"';
  for (const char one : os::Utf8FromWide(os::WideFromUtf8(value))) {
    if (one == '"' || one == '\\') text += '\\';
    text += static_cast<unsigned char>(one) < ' ' ? ' ' : one;
  }
  text += '"';
}

// {"key": value, ...}, of which only what is set is written.
class ObjectWriter {
 public:
  explicit ObjectWriter(std::string& text) : m_Text(text) { m_Text += '{'; }
  void End() { m_Text += '}'; }

  std::string& Key(std::string_view key) {
    if (!std::exchange(m_First, false)) m_Text += ", ";
    m_Text += '"';
    m_Text += key;
    m_Text += "\": ";
    return m_Text;
  }
  void Number(std::string_view key, double value) { Append(Key(key), value); }
  void Text(std::string_view key, std::string_view value) { AppendQuoted(Key(key), value); }
  void NumberUnless(std::string_view key, double value, double usual) {
    if (value != usual) Number(key, value);
  }
  void TextIfAny(std::string_view key, std::string_view value) {
    if (!value.empty()) Text(key, value);
  }

 private:
  std::string& m_Text;
  bool m_First = true;
};

void AppendPoint(std::string& text, Point point) {
  Append(text, point.x);
  text += ',';
  Append(text, point.y);
}

void AppendContour(std::string& text, const Contour& contour) {
  ObjectWriter object(text);
  if (contour.closed) object.Key("closed") += "true";
  object.Key("start") += '[';
  AppendPoint(text, contour.start);
  text += ']';
  object.Key("segments") += '[';
  for (std::size_t i = 0; i < contour.segments.size(); ++i) {
    const Segment& segment = contour.segments[i];
    text += i > 0 ? ",[" : "[";
    if (segment.isCurve) {
      AppendPoint(text, segment.first);
      text += ',';
      AppendPoint(text, segment.second);
      text += ',';
    }
    AppendPoint(text, segment.end);
    text += ']';
  }
  text += ']';
  object.End();
}

void AppendSettings(std::string& text, const ToolSettings& settings) {
  ObjectWriter object(text);
  object.TextIfAny("tool", settings.tool);
  if (settings.speed) object.Number("speed", *settings.speed);
  if (settings.force) object.Number("force", *settings.force);
  object.NumberUnless("passes", settings.passes, 1);
  object.NumberUnless("order", settings.order, 0);
  object.NumberUnless("kerf", settings.kerf, 0);
  object.NumberUnless("overcut", settings.overcut, 0);
  object.NumberUnless("lead_in", settings.leadIn, 0);
  object.NumberUnless("bridges", settings.bridges, 0);
  object.NumberUnless("bridge_width", settings.bridgeWidth, 0);
  object.End();
}

void AppendColor(std::string& text, const PaintColor& color) {
  ObjectWriter object(text);
  object.Text("model", Models[static_cast<std::size_t>(color.model)]);
  if (color.model == ColorModel::Spot) {
    object.Text("name", color.name);
  } else {
    object.Key("components") += '[';
    for (std::size_t i = 0; i < color.components.size(); ++i) {
      if (i > 0) text += ',';
      Append(text, color.components[i]);
    }
    text += ']';
  }
  object.End();
}

void AppendPaint(std::string& text, const Paint& paint) {
  ObjectWriter object(text);
  object.Text("kind", Kinds[static_cast<std::size_t>(paint.kind)]);
  object.NumberUnless("line_width", paint.lineWidth, 0);
  if (paint.color.model == ColorModel::Spot || !paint.color.components.empty())
    AppendColor(object.Key("colour"), paint.color);
  object.TextIfAny("layer", paint.layer);
  object.End();
}

void AppendPath(std::string& text, const CutPath& path) {
  ObjectWriter object(text);
  object.Text("operation", NameOf(path.operation));
  object.TextIfAny("rule", path.rule);
  if (path.settings != ToolSettings{}) AppendSettings(object.Key("settings"), path.settings);
  AppendPaint(object.Key("paint"), path.paint);
  object.Key("contours") += '[';
  for (std::size_t i = 0; i < path.contours.size(); ++i) {
    if (i > 0) text += ", ";
    AppendContour(text, path.contours[i]);
  }
  text += ']';
  object.End();
}

void AppendMark(std::string& text, const RegistrationMark& mark) {
  ObjectWriter object(text);
  object.Text("shape", Shapes[static_cast<std::size_t>(mark.shape)]);
  object.Key("center") += '[';
  AppendPoint(text, mark.center);
  text += ']';
  object.Number("size", mark.size);
  object.NumberUnless("rotation", mark.rotation, 0);
  object.End();
}

// ---- Reading ----

class JobReader {
 public:
  JobReader(std::string_view text, const std::string& name) : m_Json(text, name) {}

  Expected<CutJob> Read();

 private:
  // Which keys of an object were seen, by their places in a list.
  struct Keys {
    std::uint32_t seen = 0;
    [[nodiscard]] bool Has(std::size_t index) const { return (seen >> index & 1) != 0; }
  };
  // The place in the list of the object's next key. The list's size at the object's end, and after
  // an unknown key or one that came before.
  template <std::size_t N>
  std::size_t Next(const std::array<std::string_view, N>& names, Keys& keys);
  template <std::size_t N>
  void Require(const std::array<std::string_view, N>& names, const Keys& keys, std::size_t count,
               const char* object);
  template <std::size_t N>
  std::size_t Choice(const std::array<std::string_view, N>& names);
  double Length(double least);
  Point ReadPoint();
  Segment ReadSegment();
  Contour ReadContour();
  void ReadSegments(Contour& contour);
  ToolSettings ReadSettings();
  PaintColor ReadColor();
  Paint ReadPaint();
  CutPath ReadPath();
  void ReadPaths(CutJob& job);
  RegistrationMark ReadMark();
  void Count(std::size_t& count, std::size_t maximum, const char* things);

  JsonReader m_Json;
  std::string m_Key;
  std::size_t m_Paths = 0;
  std::size_t m_Contours = 0;
  std::size_t m_Segments = 0;
  std::size_t m_Marks = 0;
};

template <std::size_t N>
std::size_t JobReader::Next(const std::array<std::string_view, N>& names, Keys& keys) {
  if (!m_Json.NextKey(m_Key)) return N;
  const auto index = static_cast<std::size_t>(std::ranges::find(names, m_Key) - names.begin());
  if (index == N) {
    m_Json.Fail("the key is unknown: '" + m_Key + "'");
  } else if (keys.Has(index)) {
    m_Json.Fail("the key comes twice: '" + m_Key + "'");
  } else {
    keys.seen |= 1U << index;
    return index;
  }
  return N;
}

// The first `count` keys of the list are required.
template <std::size_t N>
void JobReader::Require(const std::array<std::string_view, N>& names, const Keys& keys,
                        std::size_t count, const char* object) {
  for (std::size_t i = 0; i < count; ++i)
    if (!keys.Has(i)) m_Json.Fail(std::string(object) + " has no '" + std::string(names[i]) + "'");
}

template <std::size_t N>
std::size_t JobReader::Choice(const std::array<std::string_view, N>& names) {
  const std::string text = m_Json.Text(MaximumTextBytes);
  const auto found = std::ranges::find(names, text);
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  std::string list;
  for (const std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  m_Json.Fail("'" + text + "' is none of " + list);
  return 0;
}

double JobReader::Length(double least) {
  const double value = m_Json.Number();
  if (value < least || value > MaximumLength)
    m_Json.Fail("the length is not within " + std::string(least < 0 ? "-1000000" : "0") +
                " to 1000000 mm");
  return value;
}

void JobReader::Count(std::size_t& count, std::size_t maximum, const char* things) {
  if (++count > maximum)
    m_Json.Fail("there are more than " + std::to_string(maximum) + " " + things);
}

Point JobReader::ReadPoint() {
  Point point;
  if (!m_Json.BeginArray()) return point;
  for (double* const value : {&point.x, &point.y}) {
    if (!m_Json.NextItem()) m_Json.Fail("a point has two numbers");
    *value = Length(-MaximumLength);
  }
  if (m_Json.NextItem()) m_Json.Fail("a point has two numbers");
  return point;
}

Segment JobReader::ReadSegment() {
  Count(m_Segments, MaximumSegments, "segments");
  std::array<double, 6> numbers{};
  std::size_t count = 0;
  if (!m_Json.BeginArray()) return {};
  while (m_Json.NextItem()) {
    const double value = Length(-MaximumLength);
    if (count < numbers.size()) numbers[count] = value;
    ++count;
  }
  if (count == 2) return LineTo({numbers[0], numbers[1]});
  if (count == 6)
    return CurveTo({numbers[0], numbers[1]}, {numbers[2], numbers[3]}, {numbers[4], numbers[5]});
  m_Json.Fail("a segment has two numbers, or six");
  return {};
}

void JobReader::ReadSegments(Contour& contour) {
  if (!m_Json.BeginArray()) return;
  while (m_Json.NextItem()) contour.segments.push_back(ReadSegment());
}

Contour JobReader::ReadContour() {
  static constexpr std::array<std::string_view, 3> Names{"start", "segments", "closed"};
  Count(m_Contours, MaximumContours, "contours");
  Contour contour;
  Keys keys;
  if (!m_Json.BeginObject()) return contour;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    if (key == 0) contour.start = ReadPoint();
    if (key == 1) ReadSegments(contour);
    if (key == 2) contour.closed = m_Json.Flag();
  }
  Require(Names, keys, 2, "the contour");
  return contour;
}

ToolSettings JobReader::ReadSettings() {
  static constexpr std::array<std::string_view, 10> Names{
      "tool", "speed",   "force",   "passes",  "order",
      "kerf", "overcut", "lead_in", "bridges", "bridge_width"};
  ToolSettings settings;
  Keys keys;
  if (!m_Json.BeginObject()) return settings;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    switch (key) {
      case 0: settings.tool = m_Json.Text(MaximumTextBytes); break;
      case 1: settings.speed = Length(0); break;
      case 2: settings.force = Length(0); break;
      case 3: settings.passes = m_Json.Whole(1, MaximumPasses); break;
      case 4: settings.order = m_Json.Whole(-MaximumOrder, MaximumOrder); break;
      case 5: settings.kerf = Length(0); break;
      case 6: settings.overcut = Length(0); break;
      case 7: settings.leadIn = Length(0); break;
      case 8: settings.bridges = m_Json.Whole(0, MaximumBridges); break;
      default: settings.bridgeWidth = Length(0); break;
    }
  }
  return settings;
}

PaintColor JobReader::ReadColor() {
  static constexpr std::array<std::string_view, 3> Names{"model", "components", "name"};
  PaintColor color;
  Keys keys;
  if (!m_Json.BeginObject()) return color;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    if (key == 0) color.model = static_cast<ColorModel>(Choice(Models));
    if (key == 2) color.name = m_Json.Text(MaximumTextBytes);
    if (key != 1 || !m_Json.BeginArray()) continue;
    while (m_Json.NextItem()) {
      color.components.push_back(m_Json.Number());
      if (color.components.back() < 0 || color.components.back() > 1 || color.components.size() > 4)
        m_Json.Fail("a color has four components at most, from 0 to 1");
    }
  }
  Require(Names, keys, 1, "the color");
  if (color.components.size() != ComponentCounts[static_cast<std::size_t>(color.model)])
    m_Json.Fail("the color's model has another number of components");
  if (keys.Has(2) != (color.model == ColorModel::Spot))
    m_Json.Fail("a spot color has a name, and no other has one");
  return color;
}

Paint JobReader::ReadPaint() {
  static constexpr std::array<std::string_view, 4> Names{"kind", "line_width", "colour", "layer"};
  Paint paint;
  Keys keys;
  if (!m_Json.BeginObject()) return paint;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    if (key == 0) paint.kind = static_cast<Paint::Kind>(Choice(Kinds));
    if (key == 1) paint.lineWidth = Length(0);
    if (key == 2) paint.color = ReadColor();
    if (key == 3) paint.layer = m_Json.Text(MaximumTextBytes);
  }
  Require(Names, keys, 1, "the paint");
  return paint;
}

CutPath JobReader::ReadPath() {
  static constexpr std::array<std::string_view, 5> Names{"operation", "contours", "paint", "rule",
                                                         "settings"};
  Count(m_Paths, MaximumPaths, "paths");
  CutPath path;
  Keys keys;
  if (!m_Json.BeginObject()) return path;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    if (key == 0) {
      const std::string name = m_Json.Text(MaximumTextBytes);
      const auto operation = OperationOf(name);
      if (!operation) m_Json.Fail("the operation is unknown: '" + name + "'");
      path.operation = operation.value_or(Operation::Cut);
    }
    if (key == 1 && m_Json.BeginArray())
      while (m_Json.NextItem()) path.contours.push_back(ReadContour());
    if (key == 2) path.paint = ReadPaint();
    if (key == 3) path.rule = m_Json.Text(MaximumTextBytes);
    if (key == 4) path.settings = ReadSettings();
  }
  Require(Names, keys, 2, "the path");
  return path;
}

RegistrationMark JobReader::ReadMark() {
  static constexpr std::array<std::string_view, 4> Names{"shape", "center", "size", "rotation"};
  Count(m_Marks, MaximumMarks, "marks");
  RegistrationMark mark;
  Keys keys;
  if (!m_Json.BeginObject()) return mark;
  for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
    if (key == 0) mark.shape = static_cast<RegistrationMark::Shape>(Choice(Shapes));
    if (key == 1) mark.center = ReadPoint();
    if (key == 2) mark.size = Length(0);
    if (key == 3) mark.rotation = Length(-MaximumLength);
  }
  Require(Names, keys, 3, "the mark");
  return mark;
}

void JobReader::ReadPaths(CutJob& job) {
  if (!m_Json.BeginArray()) return;
  while (m_Json.NextItem()) job.paths.push_back(ReadPath());
}

Expected<CutJob> JobReader::Read() {
  static constexpr std::array<std::string_view, 7> Names{"format", "version", "unit", "width",
                                                         "height", "paths",   "marks"};
  CutJob job;
  Keys keys;
  if (m_Json.BeginObject()) {
    for (std::size_t key = 0; (key = Next(Names, keys)) < Names.size();) {
      if (key == 0 && m_Json.Text(MaximumTextBytes) != Format) m_Json.Fail("this is no cut job");
      if (key == 1 && m_Json.Whole(0, 1'000'000) != Version)
        m_Json.Fail("the version is unknown; version 1 is read");
      if (key == 2 && m_Json.Text(MaximumTextBytes) != "mm") m_Json.Fail("the unit is not mm");
      if (key == 3) job.width = Length(0);
      if (key == 4) job.height = Length(0);
      if (key == 5) ReadPaths(job);
      if (key == 6 && m_Json.BeginArray())
        while (m_Json.NextItem()) job.marks.push_back(ReadMark());
    }
    Require(Names, keys, 6, "the job");
  }
  m_Json.End();
  if (auto result = m_Json.Result(); !result) return result.Error();
  return job;
}

}  // namespace

std::string JobFileText(const CutJob& job) {
  std::string text = "{\"format\": \"";
  text += Format;
  text += "\", \"version\": 1, \"unit\": \"mm\",\n\"width\": ";
  Append(text, job.width);
  text += ", \"height\": ";
  Append(text, job.height);
  text += ",\n\"paths\": [";
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    text += i > 0 ? ",\n" : "\n";
    AppendPath(text, job.paths[i]);
  }
  text += "]";
  if (!job.marks.empty()) text += ",\n\"marks\": [";
  for (std::size_t i = 0; i < job.marks.size(); ++i) {
    text += i > 0 ? ",\n" : "\n";
    AppendMark(text, job.marks[i]);
  }
  text += job.marks.empty() ? "}\n" : "]}\n";
  return text;
}

Expected<CutJob> ReadJobFile(std::string_view text, const std::string& name) {
  if (text.size() > MaximumJobBytes) {
    Failure failure = FailureOf("the cut job has more than 1 GiB", FailureCode::BadInput);
    failure.where = name;
    return failure;
  }
  return JobReader(text, name).Read();
}

}  // namespace rastrel::cutting
