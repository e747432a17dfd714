#include "host/render/document_images.h"

#include <functional>
#include <utility>

#include "host/render/drawing_request.h"
#include "host/render/page_images.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::render {

namespace {

// No document without placed files gets here, so there is nothing to open.
Expected<std::unique_ptr<graphics::Picture>> OpenNone(const document::GraphicShape& /*shape*/) {
  return FailureOf("placed files are drawn by a program of their own");
}

// Takes the drawing program's records. An image's page number comes before it, and they go up, so
// that there is no end of images from nobody.
class RecordTaker {
 public:
  RecordTaker(document::Notices& notices, const TakeImage& take)
      : m_Notices(notices), m_Take(take) {}

  Expected<void> operator()(graphics::DrawingRecord kind, std::string body) {
    switch (kind) {
      case graphics::DrawingRecord::Notice: m_Notices.Add(os::WideFromUtf8(body)); return {};
      case graphics::DrawingRecord::Loss: m_Notices.AddLoss(os::WideFromUtf8(body)); return {};
      case graphics::DrawingRecord::Number: m_Next = NumberOf(body); return {};
      case graphics::DrawingRecord::Image: break;
      default: return {};
    }
    if (m_Next <= m_Last) {
      return FailureOf("the page can't be drawn: its pages come in no order");
    }
    m_Last = m_Next;
    return m_Take(std::move(body), m_Last);
  }

 private:
  document::Notices& m_Notices;
  const TakeImage& m_Take;
  int m_Next = -1;
  int m_Last = -1;
};

// Draws the pictures, and passes each on: in this process where all content is the document's own,
// else in the drawing program.
Expected<void> DrawAway(const ImageSource& source, ImageFormat format, const ImageOptions& options,
                        const TakeImage& take) {
  if (!HasPlacedFiles(source.document)) {
    return DrawImages(source, format, options, OpenNone, take);
  }
  const auto request = DrawingRequestText(source.document, options);
  if (!request) return request.Error();
  RecordTaker taker(source.notices, take);
  return graphics::RunDrawing(DrawingTask(format, options), *request, "the page", options.limits,
                              std::ref(taker));
}

}  // namespace

Expected<std::vector<std::string>> DrawDocument(const ImageSource& source, ImageFormat format,
                                                const ImageOptions& options) {
  std::vector<std::string> images;
  const auto drawn = DrawAway(source, format, options, [&](std::string image, int /*number*/) {
    images.push_back(std::move(image));
    return Expected<void>();
  });
  if (!drawn) return drawn.Error();
  return images;
}

Expected<std::vector<std::string>> SaveImages(const ImageSource& source, ImageFormat format,
                                              const ImageOptions& options, const std::string& path,
                                              os::Existing numbered, os::Existing single) {
  std::vector<std::string> paths;
  std::vector<os::OutputFile> files;
  const auto take = [&](const std::string& image, int number) -> Expected<void> {
    paths.push_back(number == 0 ? path : os::NumberedPath(path, static_cast<unsigned>(number)));
    auto file = os::OutputFile::Create(paths.back(), number == 0 ? single : numbered);
    if (!file) return file.Error();
    if (auto written = file->Write(image); !written) return written;
    files.push_back(*std::move(file));
    return {};
  };
  if (const auto drawn = DrawAway(source, format, options, take); !drawn) return drawn.Error();
  if (const auto named = os::OutputFile::CommitAll(files); !named) return named.Error();
  return paths;
}

}  // namespace rastrel::render
