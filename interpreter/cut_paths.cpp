#include "interpreter/cut_paths.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "interpreter/clip_shape.h"
#include "interpreter/segment_text.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

constexpr double PointsPerInch = 72;
constexpr std::string_view SeparationWord = "separation ";
constexpr std::size_t MaximumColors = 1000000;  // of a run; a prefix sets one, rules take many

// A point's ten-thousandth is far below any cutter's step.
std::string Number(double value) { return os::ShortDecimal(value, 4); }

// Control characters, '%' and bytes that are no UTF-8 as %XX, so that a text keeps to its line.
std::string Escape(std::string_view text) {
  const bool wellFormed = os::Utf8FromWide(os::WideFromUtf8(text)) == text;
  std::string escaped;
  for (const char character : text) {
    const auto value = static_cast<unsigned char>(character);
    if (value >= ' ' && value != 0x7F && value != '%' && (value < 0x80 || wellFormed)) {
      escaped += character;
    } else {
      escaped += '%';
      os::AppendHex(escaped, value, os::HexCase::Upper);
    }
  }
  return escaped;
}

// Turns segments in pixels from the top left into lines in points from the bottom left. A page may
// have hundreds of thousands of paths, so one writer serves them all and keeps its memory.
class SegmentWriter {
 public:
  explicit SegmentWriter(const pages::PageInfo& info)
      : m_XScale(PointsPerInch / info.xResolution),
        m_YScale(PointsPerInch / info.yResolution),
        m_Height(info.height) {}

  // Writes one path. False if the text is none of the prolog's making. The judge, if there is one,
  // gets all points that lines are made of.
  bool Write(std::string_view text, ClipJudge* judge) {
    m_Lines.clear();
    m_Closed.clear();
    m_Start = {};
    m_Drawing = false;
    SegmentReader reader(text);
    while (const auto segment = reader.Next()) Take(*segment, judge);
    return reader.AtEnd();
  }

  [[nodiscard]] const std::string& Lines() const { return m_Lines; }
  // "1 0": whether each part of the path is closed.
  [[nodiscard]] const std::string& Closed() const { return m_Closed; }

 private:
  void Take(const Segment& segment, ClipJudge* judge) {
    if (segment.letter == 'm') {
      m_Start = segment.storage[0];
      m_Drawing = false;
      return;
    }
    if (segment.letter == 'h') {
      if (!m_Drawing) return;
      m_Lines += "h\n";
      m_Closed.back() = '1';
      m_Drawing = false;  // a part without a move begins where this one began
      return;
    }
    if (!m_Drawing) Begin(judge);
    WriteLine(segment.letter, segment.Points(), judge);
  }

  // A move that nothing follows draws nothing, so moves wait for the first segment.
  void Begin(ClipJudge* judge) {
    WriteLine('m', std::span(&m_Start, 1), judge);
    m_Closed += m_Closed.empty() ? "0" : " 0";
    m_Drawing = true;
  }

  void WriteLine(char letter, std::span<const PixelPoint> points, ClipJudge* judge) {
    m_Lines += letter;
    for (const PixelPoint& point : points) {
      if (judge != nullptr) judge->Add(point);
      m_Lines += ' ';
      m_Lines += Number(point.x * m_XScale);
      m_Lines += ' ';
      m_Lines += Number((m_Height - point.y) * m_YScale);
    }
    m_Lines += '\n';
  }

  double m_XScale;
  double m_YScale;
  double m_Height;
  PixelPoint m_Start;
  bool m_Drawing = false;
  std::string m_Lines;
  std::string m_Closed;
};

// The clips of a page, which are written ahead of its paths if one of these crosses them.
class PageClips {
 public:
  PageClips(const pages::PageInfo& info, const std::map<std::string, std::size_t>& clips)
      : m_Info(info), m_Texts(clips.size()), m_Shapes(clips.size()), m_Numbers(clips.size()) {
    for (const auto& [text, index] : clips) m_Texts[index] = &text;
  }

  [[nodiscard]] const ClipShape& Shape(std::size_t index) {
    auto& shape = m_Shapes[index];
    if (!shape) shape.emplace(*m_Texts[index]);
    return *shape;
  }
  // The word of a path that lies so to that clip.
  [[nodiscard]] std::string Word(ClipPosition position, std::size_t index) {
    if (position == ClipPosition::Inside) return "inside";
    if (position == ClipPosition::Outside) return "outside";
    if (m_Numbers[index] == 0) Write(index);
    return "crosses " + std::to_string(m_Numbers[index]);
  }
  [[nodiscard]] std::string Blocks() const {
    return "clips: " + std::to_string(m_Count) + "\n" + m_Blocks;
  }

 private:
  void Write(std::size_t index) {
    SegmentWriter writer(m_Info);
    static_cast<void>(writer.Write(*m_Texts[index], nullptr));
    m_Numbers[index] = ++m_Count;
    m_Blocks += "clip\n" + writer.Lines() + "end-clip\n";
  }

  const pages::PageInfo& m_Info;
  std::vector<const std::string*> m_Texts;
  std::vector<std::optional<ClipShape>> m_Shapes;
  std::vector<unsigned> m_Numbers;  // in the file, from 1; 0: not in it
  unsigned m_Count = 0;
  std::string m_Blocks;
};

struct PathHead {
  double width = 0;
  std::size_t color = 0;
};

// Takes line width and the color's number off a path's text.
std::optional<PathHead> ReadHead(std::string_view& text) {
  PathHead head;
  const auto width = ReadNumber(NextWord(text));
  const auto color = ReadNumber(NextWord(text));
  if (!width || !color || *color < 0 || *color > MaximumColors) return {};
  head.width = *width;
  head.color = static_cast<std::size_t>(*color);
  return head;
}

Expected<void> WritePageFile(const std::string& directory, const char* name,
                             const std::string& text, pages::PageInfo& info) {
  const std::string path = directory + "/" + name;
  const os::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.IsOpen()) return Failure{"create", path, errno};
  const auto written = os::WriteAll(file.Get(), text);
  if (!written) return FailureAt(path, written.Error());
  const auto described = pages::DescribeFile(directory, name);
  if (!described) return described.Error();
  info.files.push_back(*described);
  return {};
}

}  // namespace

std::string_view CutKindWord(char letter) {
  if (letter == 'S') return "stroke";
  if (letter == 'F') return "fill";
  return letter == 'E' ? "eofill" : "text";
}

void CutPaths::Grow(std::uint64_t bytes) {
  m_Present.bytes += bytes;
  m_Bytes += bytes;
}

void CutPaths::BeginPage() {
  m_Bytes -= m_Present.bytes;
  m_Present = {};
  m_Unsettled = false;
  m_Open = 0;
}

void CutPaths::EndPage() {
  ++m_Ended;
  Settle();
  m_Open = 0;
  if (m_Present.paths.empty()) {
    BeginPage();
  } else {
    m_Pages[m_Ended] = std::exchange(m_Present, {});
  }
}

void CutPaths::TakeColor(const std::string& text) {
  m_Set = !text.empty();
  if (m_Set && m_Colors.size() <= MaximumColors) m_Colors.push_back(text);
}

std::optional<std::size_t> CutPaths::NumberOf(const std::string& color, const std::string& layer) {
  const auto [entry, isNew] = m_Numbers.try_emplace({color, layer}, m_Colors.size());
  if (!isNew) return entry->second;
  if (m_Colors.size() < MaximumColors) {
    m_Colors.push_back(color);
    m_Layers.resize(m_Colors.size());
    m_Layers.back() = layer;
    return entry->second;
  }
  m_Numbers.erase(entry);
  return {};
}

// A clip comes after the first path that has it, so a path's clip is known when the next one
// begins.
void CutPaths::Settle() {
  if (!std::exchange(m_Unsettled, false)) return;
  const auto [clip, isNew] = m_Present.clips.try_emplace(m_Clip, m_Present.clips.size());
  if (isNew) Grow(m_Clip.size() + sizeof(Path));
  m_Present.paths.back().clip = clip->second;
}

// A path, clip or mark of a failure begins.
void CutPaths::Begin(char letter) {
  m_Open = 0;
  if (letter == 'K') {
    m_Clip.clear();
    m_Open = 'K';
  } else if (letter == 'X') {
    m_Lost = true;
    m_Unsettled = false;
    if (!m_Present.paths.empty()) m_Present.paths.pop_back();
  } else {
    Settle();
    m_Present.paths.push_back({letter, {}, 0});
    Grow(sizeof(Path));
    m_Unsettled = true;
    m_Open = 'P';
  }
}

void CutPaths::Append(std::string_view text) {
  if (m_Open == 'K') {
    m_Clip += text;
  } else if (m_Open == 'P') {
    m_Present.paths.back().text += text;
    Grow(text.size());
  }
}

// Capital letters begin an item; the text before the first one belongs to the open item. They are
// looked for in one pass: a search for a set of letters takes a call for each character.
void CutPaths::TakePiece(std::string_view piece) {
  const auto isLetter = [](char one) {
    return one == 'S' || one == 'F' || one == 'E' || one == 'T' || one == 'K' || one == 'X';
  };
  while (!piece.empty()) {
    const auto next =
        static_cast<std::size_t>(std::ranges::find_if(piece, isLetter) - piece.begin());
    Append(piece.substr(0, next));
    if (next == piece.size()) break;
    Begin(piece[next]);
    piece.remove_prefix(next + 1);
  }
}

bool CutPaths::Add(const Report& report) {
  if (report.key == "CUTTER") TakeColor(report.value);
  if (report.key == "CUT") TakePiece(report.value);
  return m_Bytes <= Limit && m_Clip.size() <= Limit;
}

bool CutPaths::TakesSeparation(std::string_view name) const {
  return std::ranges::any_of(m_Colors, [&](std::string_view color) {
    return color.starts_with(SeparationWord) && color.substr(SeparationWord.size()) == name;
  });
}

std::string CutPaths::Take(const pages::PageInfo& info) {
  Page page;
  if (const auto found = m_Pages.find(info.page); found != m_Pages.end()) {
    page = std::move(found->second);
    m_Bytes -= page.bytes;
    m_Pages.erase(found);
  }
  const double scale = PointsPerInch / std::sqrt(info.xResolution * info.yResolution);
  PageClips clips(info, page.clips);
  SegmentWriter writer(info);
  std::vector<std::string> colors(m_Colors.size());  // as they are written, once they are met
  std::string blocks;
  std::string layers;
  bool hasLayer = false;
  unsigned count = 0;
  for (const Path& path : page.paths) {
    std::string_view text = path.text;
    const auto head = ReadHead(text);
    if (!head || head->color >= m_Colors.size()) continue;
    std::string& color = colors[head->color];
    if (color.empty()) {
      m_Met.insert(m_Colors[head->color]);
      color = "\ncolour: " + Escape(m_Colors[head->color]) + "\nline-width: ";
    }
    ClipJudge judge(clips.Shape(path.clip));
    if (!writer.Write(text, &judge) || writer.Lines().empty()) continue;
    for (const std::string_view part :
         {std::string_view("path\nkind: "), CutKindWord(path.kind), std::string_view(color)})
      blocks += part;
    blocks += Number(head->width * scale);
    blocks += "\nclip: ";
    blocks += clips.Word(judge.Position(), path.clip);
    blocks += "\nclosed: ";
    for (const std::string_view part :
         {std::string_view(writer.Closed()), std::string_view("\n"),
          std::string_view(writer.Lines()), std::string_view("end-path\n")})
      blocks += part;
    ++count;
    if (m_Layers.empty()) continue;
    const std::string layer =
        head->color < m_Layers.size() ? Escape(m_Layers[head->color]) : std::string();
    hasLayer = hasLayer || !layer.empty();
    layers += layer + "\n";
  }
  m_TakenLayers.clear();
  if (hasLayer)
    m_TakenLayers =
        "Rastrel cut layers 1\npaths: " + std::to_string(count) + "\n" + layers + "end\n";
  blocks += "end\n";
  blocks.insert(0, "Rastrel cut paths 1\nunit: point\nwidth: " +
                       Number(info.width * PointsPerInch / info.xResolution) +
                       "\nheight: " + Number(info.height * PointsPerInch / info.yResolution) +
                       "\n" + clips.Blocks() + "paths: " + std::to_string(count) + "\n");
  return blocks;
}

std::vector<std::string> CutPaths::UnmetColors() const {
  std::vector<std::string> unmet;
  for (const std::string& color : m_Colors) {
    if (m_Asked || m_Lost || unmet.size() == UnmetLimit) break;
    if (!m_Met.contains(color) && std::ranges::find(unmet, color) == unmet.end()) {
      unmet.push_back(color);
    }
  }
  return unmet;
}

Expected<void> WriteCutPaths(const RunDescription& run, const std::string& directory,
                             pages::PageInfo& info) {
  if (run.cuts == nullptr || !run.cuts->Wanted(info.page)) return {};
  const std::string paths = run.cuts->Take(info);
  if (auto written = WritePageFile(directory, pages::CutPathsName, paths, info); !written)
    return written;
  const std::string layers = run.cuts->TakeLayers();
  if (layers.empty()) return {};
  return WritePageFile(directory, pages::CutLayersName, layers, info);
}

}  // namespace rastrel::interpreter
