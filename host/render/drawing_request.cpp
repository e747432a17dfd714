#include "host/render/drawing_request.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "host/document/document_file.h"
#include "host/document/measure_text.h"
#include "host/graphics/drawing_process.h"

namespace rastrel::render {

using document::Document;
using document::GraphicKind;
using document::GraphicShape;
using document::Object;
using document::ObjectHandle;

namespace {

constexpr std::size_t LengthSize = 8;
constexpr char AsPdf = 'P';
constexpr char Reason = 'R';

constexpr std::array<std::pair<ImageFormat, std::string_view>, 3> FormatNames = {
    {{ImageFormat::Svg, "svg"}, {ImageFormat::Pdf, "pdf"}, {ImageFormat::Png, "png"}}};

bool IsOnPage(const Object& object, std::optional<int> page) {
  const VK_PAGE_RANGE& pages = object.attributes.pages;
  return !page || (pages.first <= *page && pages.last >= *page);
}

// Calls `visit` with the handle of each placed file that may be drawn, in the document's order.
template <typename Visit>
void VisitFiles(const Document& document, ObjectHandle root, std::optional<int> page, Visit visit) {
  // A visit may change the object, but neither the list nor the order.
  for (const ObjectHandle handle : document.Members(root)) {
    const Object& object = *document.Find(handle);
    if ((object.attributes.traits & DBTRAIT_VISIBLE) == 0 || !IsOnPage(object, page)) continue;
    if (std::holds_alternative<document::GroupShape>(object.shape)) {
      VisitFiles(document, handle, std::nullopt, visit);  // its pages count for all its members
    } else if (std::holds_alternative<GraphicShape>(object.shape)) {
      visit(handle);
    }
  }
}

// An EPS file as it is drawn.
struct EpsFile {
  std::shared_ptr<const std::string> bytes;
  bool whole;
};

// The EPS files that may be drawn, each content once for each way.
std::vector<EpsFile> EpsFilesInUse(const Document& document, std::optional<int> page) {
  std::vector<EpsFile> files;
  std::set<std::pair<std::string_view, bool>> known;
  VisitFiles(document, host::DocumentRoot, page, [&](ObjectHandle handle) {
    const auto& shape = std::get<GraphicShape>(document.Find(handle)->shape);
    if (shape.preview || !document::IsPostScript(shape.kind)) return;
    if (known.emplace(*shape.bytes, shape.whole).second) {
      files.push_back({shape.bytes, shape.whole});
    }
  });
  return files;
}

void AppendLength(std::string& text, std::uint64_t length) {
  for (std::size_t i = 0; i < LengthSize; ++i) text += static_cast<char>(length >> 8 * i & 0xFF);
}

// Takes a length and as many bytes off the front; nothing if there are fewer.
std::optional<std::string_view> TakeBytes(std::string_view& rest) {
  if (rest.size() < LengthSize) return std::nullopt;
  std::uint64_t length = 0;
  for (std::size_t i = LengthSize; i > 0; --i) {
    length = length << 8 | static_cast<unsigned char>(rest[i - 1]);
  }
  rest.remove_prefix(LengthSize);
  if (rest.size() < length) return std::nullopt;
  const std::string_view bytes = rest.substr(0, length);
  rest.remove_prefix(length);
  return bytes;
}

// Files with the same bytes share them, so that a drawing carries them once.
void ShareBytes(Document& document) {
  std::map<std::string_view, std::shared_ptr<const std::string>> known;
  VisitFiles(document, host::DocumentRoot, std::nullopt, [&](ObjectHandle handle) {
    auto& shape = std::get<GraphicShape>(document.Edit(handle)->shape);
    shape.bytes = known.try_emplace(*shape.bytes, shape.bytes).first->second;
  });
}

std::string TextOf(double number) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

// The conversions of one drawing's EPS files, which share its time.
class EpsConversions {
 public:
  explicit EpsConversions(std::chrono::milliseconds time) : m_Time(time) {}

  ConvertedEps Convert(const EpsFile& file) {
    const auto used = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_Begin);
    if (used >= m_Time) {
      return FailureOf("no time is left for it: all EPS files of a drawing may take " +
                       document::MeasureText(std::chrono::duration<double>(m_Time).count()) +
                       " seconds together");
    }
    auto converted = graphics::DrawableOf(
        GraphicKind::Eps, file.bytes, m_Time - used, interpreter::EpsLetters::Keep,
        file.whole ? graphics::EpsPart::Area : graphics::EpsPart::Page);
    if (!converted) return converted.Error();
    return std::move(converted->bytes);
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::chrono::milliseconds m_Time;
  Clock::time_point m_Begin = Clock::now();
};

}  // namespace

bool HasPlacedFiles(const Document& document) {
  bool has = false;
  VisitFiles(document, host::DocumentRoot, std::nullopt,
             [&](ObjectHandle /*handle*/) { has = true; });
  return has;
}

std::vector<std::string> DrawingTask(ImageFormat format, const ImageOptions& options) {
  const auto found =
      std::ranges::find(FormatNames, format, [](const auto& row) { return row.first; });
  return {"pages",
          std::string(found->second),
          options.page ? std::to_string(*options.page) : "all",
          options.outlines ? "outlines" : "letters",
          options.blank ? "blank" : "bare",
          TextOf(options.dpi)};
}

std::optional<DrawingTaskParts> ReadDrawingTask(const std::vector<std::string>& arguments) {
  if (arguments.size() != 6 || arguments[0] != "pages") return std::nullopt;
  const auto found = std::ranges::find(FormatNames, std::string_view(arguments[1]),
                                       [](const auto& row) { return row.second; });
  if (found == FormatNames.end()) return std::nullopt;
  DrawingTaskParts parts;
  parts.format = found->first;
  if (arguments[2] != "all") parts.options.page = NumberOf(arguments[2]);
  parts.options.outlines = arguments[3] == "outlines";
  parts.options.blank = arguments[4] == "blank";
  const std::string& dpi = arguments[5];
  std::from_chars(dpi.data(), dpi.data() + dpi.size(), parts.options.dpi);
  return parts;
}

Expected<std::string> DrawingRequestText(const Document& document, const ImageOptions& options) {
  const auto content = document::WriteDocumentText(document);
  if (!content) return content.Error();
  std::string text;
  AppendLength(text, content->size());
  text += *content;
  EpsConversions conversions(options.limits.epsTime);
  for (const auto& file : EpsFilesInUse(document, options.page)) {
    const auto converted = conversions.Convert(file);
    const std::string bytes = converted ? **converted : Describe(converted.Error());
    text += converted ? AsPdf : Reason;
    AppendLength(text, bytes.size());
    text += bytes;
  }
  return text;
}

Expected<DrawingRequest> ReadDrawingRequest(std::string_view text, const ImageOptions& options) {
  const auto content = TakeBytes(text);
  if (!content) return FailureOf("the document is cut off");
  auto document = document::ReadDocumentText(*content);
  if (!document) return document.Error();
  DrawingRequest request;
  request.document = std::move(*document);
  ShareBytes(*request.document);
  for (const auto& file : EpsFilesInUse(*request.document, options.page)) {
    const char kind = text.empty() ? '\0' : text.front();
    if (!text.empty()) text.remove_prefix(1);
    const auto bytes = TakeBytes(text);
    if (!bytes) return FailureOf("a converted file is cut off");
    request.converted.emplace(std::pair(file.bytes.get(), file.whole),
                              kind == AsPdf
                                  ? ConvertedEps(std::make_shared<const std::string>(*bytes))
                                  : ConvertedEps(FailureOf(std::string(*bytes))));
  }
  return request;
}

int NumberOf(std::string_view digits) {
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() ? number : 0;
}

}  // namespace rastrel::render
