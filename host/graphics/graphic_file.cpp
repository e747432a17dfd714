#include "host/graphics/graphic_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

#include "host/document/document_file.h"
#include "host/document/document_format.h"
#include "host/graphics/picture.h"
#include "host/graphics/vector_path.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::graphics {

using document::GraphicKind;
using document::GraphicShape;

namespace {

constexpr double CentimetresPerPoint = 2.54 / 72;
constexpr double LargestSidePoints = LargestGraphicSide / CentimetresPerPoint * (1 + 1e-9);
// An object of a document besides its points.
constexpr std::size_t ObjectWeight = 400;

// Numbers with a blank between, each from 0 to the largest side.
template <std::size_t Count>
std::optional<std::array<double, Count>> NumbersOf(std::string_view text) {
  std::array<double, Count> numbers{};
  const char* place = text.data();
  const char* const end = place + text.size();
  for (std::size_t i = 0; i < Count; ++i) {
    if (i > 0 && (place == end || *place++ != ' ')) return std::nullopt;
    const auto [rest, error] = std::from_chars(place, end, numbers[i]);
    if (error != std::errc() || !(numbers[i] >= 0 && numbers[i] <= LargestSidePoints)) {
      return std::nullopt;
    }
    place = rest;
  }
  return place == end ? std::optional(numbers) : std::nullopt;
}

CVKColor ColorOf(const std::optional<VectorPath::Rgb>& rgb) {
  CVKColor color(-1, COLORSPACE_RGB, 0, 0);
  if (rgb) color.SetColor((*rgb)[0], (*rgb)[1], (*rgb)[2], COLORSPACE_RGB);
  return color;
}

// A path without a line gets black ones where somebody gives it a line and no color.
LoadedObject ObjectOf(VectorPath path) {
  LoadedObject object;
  object.layer = ColorOf(path.fill);
  object.lineColor = ColorOf(path.line.value_or(VectorPath::Rgb{}));
  if (!path.line) {
    object.lineStyle = {0, LINESTYLE_NONE};
  } else if (path.lineWidth > 0) {
    object.lineStyle = {path.lineWidth, LINESTYLE_WIDTH};
  } else {
    object.lineStyle = {LineStyleHairline, LINESTYLE_HAIRLINE};
  }
  object.shape = std::move(path.shape);
  return object;
}

// The records of one run of the drawing program, which is not believed.
class ResultReader {
 public:
  explicit ResultReader(LoadedGraphic& graphic) : m_Graphic(graphic) {}

  Expected<void> Take(DrawingRecord kind, const std::string& body) {
    switch (kind) {
      case DrawingRecord::Path: return TakePath(body);
      case DrawingRecord::Size: m_Size = NumbersOf<2>(body); break;
      case DrawingRecord::Extent: m_Extent = NumbersOf<4>(body); break;
      case DrawingRecord::Kept: m_Kept = document::CleanMessage(os::WideFromUtf8(body)); break;
      case DrawingRecord::Notice:
      case DrawingRecord::Loss: m_Graphic.losses.push_back(os::WideFromUtf8(body)); break;
      default: return FailureOf("the program that reads it writes other records");
    }
    if (m_Graphic.losses.size() > MaximumLosses) {
      return FailureOf("the program that reads it writes notes without end");
    }
    return {};
  }

  // Why the file stays a picture; nothing where it is paths.
  [[nodiscard]] const std::optional<std::wstring>& Kept() const { return m_Kept; }
  void KeepBecause(std::optional<std::wstring> reason) { m_Kept = std::move(reason); }
  void SayMore(const std::string& more) {
    m_Kept = document::CleanMessage(m_Kept.value_or(std::wstring()) + os::WideFromUtf8(more));
  }

  // Nothing where there is no size above 0.
  [[nodiscard]] std::optional<GraphicSize> Size() const {
    if (!m_Size || (*m_Size)[0] <= 0 || (*m_Size)[1] <= 0) return std::nullopt;
    return GraphicSize{(*m_Size)[0] * CentimetresPerPoint, (*m_Size)[1] * CentimetresPerPoint};
  }

  // The file as it is, where it is no paths. Fails if its size can't be had.
  Expected<void> Finish(GraphicShape picture, bool isImage) {
    if (!isImage && !m_Kept) return {};
    m_Graphic.objects.clear();
    const auto size = Size();
    if (!size) return FailureOf("its size can't be had");
    picture.width = size->width;
    picture.height = size->height;
    picture.reason = m_Kept.value_or(std::wstring());
    if (m_Extent) {
      const auto& [left, top, right, bottom] = *m_Extent;
      const CWorldRect extent{left * CentimetresPerPoint,
                              std::max(picture.height - top * CentimetresPerPoint, 0.0),
                              right * CentimetresPerPoint,
                              std::max(picture.height - bottom * CentimetresPerPoint, 0.0)};
      if (extent.left < extent.right && extent.bottom < extent.top) picture.extent = extent;
    }
    m_Graphic.weight = picture.bytes->size() + ObjectWeight;
    LoadedObject& object = m_Graphic.objects.emplace_back();
    object.shape = std::move(picture);
    return {};
  }

 private:
  static constexpr std::size_t MaximumLosses = 100;

  Expected<void> TakePath(const std::string& body) {
    auto path = ReadPathRecord(body);
    if (!path) return path.Error();
    m_Points += PointCount(path->shape);
    if (m_Points > MaximumVectorPoints || m_Graphic.objects.size() == MaximumVectorPaths) {
      return FailureOf("it has more than " + std::to_string(MaximumVectorPaths) + " paths or " +
                       std::to_string(MaximumVectorPoints) + " points, which are the most");
    }
    m_Graphic.weight += PointCount(path->shape) * sizeof(document::PathSegment) + ObjectWeight;
    m_Graphic.objects.push_back(ObjectOf(std::move(*path)));
    return {};
  }

  LoadedGraphic& m_Graphic;
  std::optional<std::array<double, 2>> m_Size;
  std::optional<std::array<double, 4>> m_Extent;
  std::optional<std::wstring> m_Kept;
  std::size_t m_Points = 0;
};

std::wstring LettersText() { return os::WideFromUtf8(std::string(LettersReason)); }

bool IsImage(GraphicKind kind) {
  return kind == GraphicKind::Png || kind == GraphicKind::Jpeg || kind == GraphicKind::Tiff;
}

std::string NameOf(GraphicKind kind) {
  const auto found = std::ranges::find(document::GraphicKindNames, kind,
                                       [](const auto& row) { return row.first; });
  return std::string(found->second);
}

Expected<void> Run(const std::vector<std::string>& task, const std::string& bytes,
                   const DrawingLimits& limits, ResultReader& reader) {
  return RunDrawing(task, bytes, {}, limits, [&](DrawingRecord kind, const std::string& body) {
    return reader.Take(kind, body);
  });
}

// A PDF that stays a picture only for its letters, once more without fonts. Where that fails it
// stays one, and the reason says why.
void ReadLettersAsPaths(const std::string& pdf, const std::string& purpose,
                        const DrawingLimits& limits, ResultReader& reader, LoadedGraphic& graphic) {
  interpreter::EpsLimits time;
  time.time = std::min(time.time, limits.epsTime);
  const auto outlined = interpreter::OutlinedPdf(pdf, time);
  LoadedGraphic paths;
  ResultReader second(paths);
  const auto ran = outlined ? Run({"paths", "pdf", purpose}, *outlined, limits, second)
                            : Expected<void>(outlined.Error());
  if (!ran) {
    reader.SayMore(", which can't become paths: " + Describe(ran.Error()));
  } else if (second.Kept()) {
    reader.KeepBecause(*second.Kept());
  } else {
    graphic = std::move(paths);
    reader.KeepBecause(std::nullopt);
  }
}

Expected<void> ReadForeign(const std::wstring& path, std::string bytes, const LoadOptions& options,
                           const DrawingLimits& limits, LoadedGraphic& graphic) {
  ResultReader reader(graphic);
  const std::string purpose = options.cutLine ? "cut" : "art";
  if (const auto kind = PathFileKindOf(bytes)) {
    return Run({"paths", *kind == PathFileKind::Dxf ? "dxf" : "hpgl", purpose}, bytes, limits,
               reader);
  }
  const auto kind = KindOf(bytes);
  if (!kind) {
    return FailureOf("it is neither SVG, PNG, JPEG, TIFF, PDF, EPS, PostScript, DXF nor HPGL");
  }
  GraphicShape picture;
  picture.kind = *kind;
  const os::PathParts parts = os::SplitPath(path);
  picture.name = parts.name + parts.extension;
  picture.bytes = std::make_shared<const std::string>(std::move(bytes));
  const auto drawable =
      DrawableOf(*kind, picture.bytes, limits.epsTime, interpreter::EpsLetters::Outlines);
  if (!drawable) return drawable.Error();
  const std::string name = NameOf(drawable->kind);
  const bool image = IsImage(*kind);
  const auto task = image ? std::vector<std::string>{"measure", name}
                          : std::vector<std::string>{"paths", name, purpose};
  auto ran = Run(task, *drawable->bytes, limits, reader);
  if (!ran) return ran;
  if (options.textAsGraphics && *kind == GraphicKind::Pdf && reader.Kept() == LettersText()) {
    ReadLettersAsPaths(*drawable->bytes, purpose, limits, reader, graphic);
  }
  return reader.Finish(std::move(picture), image);
}

}  // namespace

Expected<GraphicSize> MeasureGraphic(GraphicKind kind, std::shared_ptr<const std::string> bytes,
                                     const DrawingLimits& limits, EpsPart part) {
  const auto drawable =
      DrawableOf(kind, std::move(bytes), limits.epsTime, interpreter::EpsLetters::Keep, part);
  if (!drawable) return drawable.Error();
  LoadedGraphic measured;
  ResultReader reader(measured);
  const auto ran = Run({"measure", NameOf(drawable->kind)}, *drawable->bytes, limits, reader);
  if (!ran) return ran.Error();
  const auto size = reader.Size();
  if (!size) return FailureOf("its size can't be had");
  return *size;
}

Expected<std::shared_ptr<const LoadedGraphic>> ReadGraphicFile(const std::wstring& path,
                                                               const LoadOptions& options,
                                                               const DrawingLimits& limits) {
  auto bytes = os::ReadWholeFile(path, LargestGraphicFile);
  if (!bytes) return bytes.Error();
  auto graphic = std::make_shared<LoadedGraphic>();
  if (IsDocumentFile(*bytes)) {
    auto document = document::ReadDocumentText(*bytes);
    if (!document) return document.Error();
    if ((*document)->ObjectCount() == 0) return FailureOf("it holds no objects");
    graphic->document = std::move(*document);
    graphic->weight = bytes->size();
  } else {
    const auto read = ReadForeign(path, std::move(*bytes), options, limits, *graphic);
    if (!read) return read.Error();
  }
  return std::shared_ptr<const LoadedGraphic>(std::move(graphic));
}

}  // namespace rastrel::graphics
