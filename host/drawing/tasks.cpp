#include "host/drawing/tasks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <utility>

#include "host/document/document_format.h"
#include "host/drawing/exchange_reader.h"
#include "host/drawing/open_picture.h"
#include "host/drawing/plotter_reader.h"
#include "host/drawing/process_limits.h"
#include "host/drawing/record_writer.h"
#include "host/drawing/vector_drawing.h"
#include "host/render/drawing_request.h"
#include "host/render/page_images.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::drawing {

using document::GraphicKind;
using document::GraphicShape;
using graphics::DrawingRecord;
using graphics::Picture;

namespace {

// A picture that says when it is drawn.
class WatchedPicture : public Picture {
 public:
  WatchedPicture(std::unique_ptr<Picture> picture, std::string name,
                 std::shared_ptr<const std::string> file)
      : m_Picture(std::move(picture)), m_Name(std::move(name)) {
    SetSize(m_Picture->Width(), m_Picture->Height());
    SetFile(std::move(file));
  }

  [[nodiscard]] Expected<void> Draw(cairo_t* context) const override {
    const ForeignFile watch(m_Name);
    const auto drawn = m_Picture->Draw(context);
    if (drawn) return {};
    return FailureOf("the placed file \"" + m_Name +
                     "\" can't be drawn: " + Describe(drawn.Error()));
  }
  [[nodiscard]] const char* MimeType() const override { return m_Picture->MimeType(); }
  [[nodiscard]] std::uint64_t Pixels() const override { return m_Picture->Pixels(); }

 private:
  std::unique_ptr<Picture> m_Picture;
  std::string m_Name;
};

std::string TextOf(double number) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

Expected<void> Measure(const std::string& kindName, const std::string& input) {
  const auto kind = std::ranges::find(document::GraphicKindNames, std::string_view(kindName),
                                      [](const auto& row) { return row.second; });
  if (kind == document::GraphicKindNames.end()) return FailureOf("there is no kind " + kindName);
  const ForeignFile watch("");
  const auto picture = OpenPicture(kind->first, std::make_shared<const std::string>(input));
  if (!picture) return picture.Error();
  WriteRecord(DrawingRecord::Size,
              TextOf((*picture)->Width()) + " " + TextOf((*picture)->Height()));
  return {};
}

// "svg" and "pdf" become paths as they are painted, "dxf" and "hpgl" as they are.
Expected<void> ReadPaths(const std::string& kind, bool cutLine, const std::string& input) {
  const ForeignFile watch("");
  PathSink sink(
      [](const VectorPath& path) { WriteRecord(DrawingRecord::Path, graphics::PathRecord(path)); },
      [](const std::string& sentence) { WriteRecord(DrawingRecord::Loss, sentence); });
  if (kind == "dxf") return ReadExchangeFile(input, sink);
  if (kind == "hpgl") return ReadPlotterFile(input, sink);
  const auto drawing = ReadVectorDrawing(kind == "svg" ? GraphicKind::Svg : GraphicKind::Pdf,
                                         std::make_shared<const std::string>(input), cutLine, sink);
  if (!drawing) return drawing.Error();
  WriteRecord(DrawingRecord::Size, TextOf(drawing->width) + " " + TextOf(drawing->height));
  if (!drawing->reason.empty()) {
    if (drawing->extent) {
      WriteRecord(DrawingRecord::Extent,
                  TextOf(drawing->extent->left) + " " + TextOf(drawing->extent->top) + " " +
                      TextOf(drawing->extent->right) + " " + TextOf(drawing->extent->bottom));
    }
    WriteRecord(DrawingRecord::Kept, drawing->reason);
  } else if (sink.Paths() == 0) {
    return FailureOf("it draws nothing");
  }
  return {};
}

// The files of a request, opened under watch.
class FileOpener {
 public:
  explicit FileOpener(const render::DrawingRequest& request) : m_Request(request) {}

  Expected<std::unique_ptr<Picture>> operator()(const GraphicShape& shape) const {
    const document::ShownFile shown = document::ShownFileOf(shape);
    GraphicKind kind = shown.kind;
    std::shared_ptr<const std::string> bytes = shown.bytes;
    if (document::IsPostScript(kind)) {
      const auto& converted = m_Request.converted.at({shape.bytes.get(), shape.whole});
      if (!converted) return converted.Error();
      kind = GraphicKind::Pdf;
      bytes = *converted;
    }
    const std::string name = os::Utf8FromWide(shape.name);
    const ForeignFile watch(name);
    auto picture = OpenPicture(kind, std::move(bytes));
    if (!picture) return picture.Error();
    std::shared_ptr<const std::string> file = (*picture)->File();
    return std::unique_ptr<Picture>(
        std::make_unique<WatchedPicture>(std::move(*picture), name, std::move(file)));
  }

 private:
  const render::DrawingRequest& m_Request;
};

Expected<void> DrawPages(const render::DrawingTaskParts& parts, const std::string& input) {
  const auto request = render::ReadDrawingRequest(input, parts.options);
  if (!request) return request.Error();
  document::Notices notices;
  const text::FontCatalog fonts(notices);
  const render::ImageSource source{*request->document, fonts, notices};
  const auto take = [](const std::string& image, int number) {
    WriteRecord(DrawingRecord::Number, std::to_string(number));
    WriteRecord(DrawingRecord::Image, image);
    return Expected<void>();
  };
  const auto drawn =
      render::DrawImages(source, parts.format, parts.options, FileOpener(*request), take);
  for (const std::wstring& text : notices.Texts()) {
    WriteRecord(DrawingRecord::Notice, os::Utf8FromWide(text));
  }
  for (const std::wstring& text : notices.Losses()) {
    WriteRecord(DrawingRecord::Loss, os::Utf8FromWide(text));
  }
  return drawn;
}

}  // namespace

Expected<void> DoTask(const std::vector<std::string>& task, const std::string& input) {
  if (task.size() == 2 && task[0] == "measure") return Measure(task[1], input);
  if (task.size() == 3 && task[0] == "paths") return ReadPaths(task[1], task[2] == "cut", input);
  if (const auto parts = render::ReadDrawingTask(task)) return DrawPages(*parts, input);
  return FailureOf("this program is a part of the commands that open documents");
}

}  // namespace rastrel::drawing
