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

constexpr int Places = 4;  // a point's ten-thousandth is far below any cutter's step

std::string Number(double value) { return os::ShortDecimal(value, Places); }

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

// Turns segments in pixels from the top left into lines in points from the bottom left.
class SegmentWriter {
 public:
  explicit SegmentWriter(const pages::PageInfo& info)
      : m_XScale(PointsPerInch / info.xResolution),
        m_YScale(PointsPerInch / info.yResolution),
        m_Height(info.height) {}

  // Calls line(letter, points) for each line of the path's. A move that nothing follows draws
  // nothing, so moves wait for the first segment, and a part without one begins where the part
  // before it began.
  template <typename Line>
  static void Visit(const SegmentView& path, Line&& line) {
    PixelPoint start;
    bool drawing = false;
    auto points = path.points;
    for (const char letter : path.letters) {
      if (letter == 'h') {
        if (drawing) line('h', points.first(0));
        drawing = false;
        continue;
      }
      const auto own = points.first(letter == 'c' ? 3 : 1);
      points = points.subspan(own.size());
      if (letter == 'm') {
        start = own.front();
        drawing = false;
        continue;
      }
      if (!drawing) line('m', std::span<const PixelPoint>(&start, 1));
      drawing = true;
      line(letter, own);
    }
  }

  // Appends the lines of a path.
  void Write(const SegmentView& path, std::string& text) const {
    Visit(path, [&](char letter, std::span<const PixelPoint> points) {
      text += letter;
      for (const PixelPoint& point : points) {
        text += ' ';
        os::AppendShortDecimal(text, point.x * m_XScale, Places);
        text += ' ';
        os::AppendShortDecimal(text, (m_Height - point.y) * m_YScale, Places);
      }
      text += '\n';
    });
  }

 private:
  double m_XScale;
  double m_YScale;
  double m_Height;
};

// "1 0": whether each part of the path is closed; empty if it draws nothing. The judge gets all
// points that lines are made of.
void FindClosed(const SegmentView& path, ClipJudge& judge, std::string& closed) {
  closed.clear();
  SegmentWriter::Visit(path, [&](char letter, std::span<const PixelPoint> points) {
    if (letter == 'm') closed += closed.empty() ? "0" : " 0";
    if (letter == 'h') closed.back() = '1';
    for (const PixelPoint& point : points) judge.Add(point);
  });
}

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
    SegmentList segments;
    static_cast<void>(segments.Append(*m_Texts[index]));
    m_Numbers[index] = ++m_Count;
    m_Blocks += "clip\n";
    SegmentWriter(m_Info).Write(segments.All(), m_Blocks);
    m_Blocks += "end-clip\n";
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
  m_ClipIndex.reset();
  m_Kind = 0;
  m_Text.clear();
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
    m_ClipIndex.reset();
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

std::size_t CutPaths::PresentClip() {
  if (!m_ClipIndex) {
    const auto [clip, isNew] = m_Present.clips.try_emplace(m_Clip, m_Present.clips.size());
    if (isNew) Grow(m_Clip.size() + sizeof(Path));
    m_ClipIndex = clip->second;
  }
  return *m_ClipIndex;
}

// A clip comes after the first path that has it, so a path's clip is known when the next one
// begins. Its text is read then and not with the page's end, for which a user waits.
void CutPaths::Settle() {
  const char kind = std::exchange(m_Kind, 0);
  if (kind == 0) return;
  std::string_view text = m_Text;
  const auto head = ReadHead(text);
  const SegmentList::Mark start = m_Present.segments.End();
  if (head && m_Present.segments.Append(text)) {
    const SegmentList::Mark end = m_Present.segments.End();
    m_Present.paths.push_back({kind, head->width, head->color, PresentClip(), end});
    Grow(sizeof(Path) + end.letters - start.letters +
         (end.points - start.points) * sizeof(PixelPoint));
  }
  m_Text.clear();
}

// A path, clip or mark of a failure begins.
void CutPaths::Begin(char letter) {
  m_Open = 0;
  if (letter == 'K') {
    m_Clip.clear();
    m_ClipIndex.reset();
    m_Open = 'K';
  } else if (letter == 'X') {
    m_Lost = true;
    m_Kind = 0;
    m_Text.clear();
  } else {
    Settle();
    m_Kind = letter;
    m_Open = 'P';
  }
}

void CutPaths::Append(std::string_view text) {
  if (m_Open == 'K') m_Clip += text;
  if (m_Open == 'P') m_Text += text;
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
  return m_Bytes + m_Text.size() <= Limit && m_Clip.size() <= Limit;
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
  const SegmentWriter writer(info);
  std::vector<std::string> colors(m_Colors.size());  // as they are written, once they are met
  std::string blocks;
  std::string layers;
  std::string closed;
  bool hasLayer = false;
  unsigned count = 0;
  SegmentList::Mark start;
  for (const Path& path : page.paths) {
    const SegmentView segments = page.segments.Between(std::exchange(start, path.end), path.end);
    if (path.color >= m_Colors.size()) continue;
    std::string& color = colors[path.color];
    if (color.empty()) {
      m_Met.insert(m_Colors[path.color]);
      color = "\ncolour: " + Escape(m_Colors[path.color]) + "\nline-width: ";
    }
    ClipJudge judge(clips.Shape(path.clip));
    FindClosed(segments, judge, closed);
    if (closed.empty()) continue;
    for (const std::string_view part :
         {std::string_view("path\nkind: "), CutKindWord(path.kind), std::string_view(color)})
      blocks += part;
    os::AppendShortDecimal(blocks, path.width * scale, Places);
    blocks += "\nclip: ";
    blocks += clips.Word(judge.Position(), path.clip);
    blocks += "\nclosed: ";
    blocks += closed;
    blocks += '\n';
    writer.Write(segments, blocks);
    blocks += "end-path\n";
    ++count;
    if (m_Layers.empty()) continue;
    const std::string layer =
        path.color < m_Layers.size() ? Escape(m_Layers[path.color]) : std::string();
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
