#include "cli/document/drawing.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "cli/console/unwritten_file.h"
#include "cli/console/values.h"
#include "host/render/document_images.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr int MaximumDpi = 2400;
constexpr int MaximumPage = 1'000'000;

struct Extension {
  const char* name;
  DrawingKind kind;
};

constexpr std::array Extensions{
    Extension{".svg", DrawingKind::Svg}, Extension{".pdf", DrawingKind::Pdf},
    Extension{".png", DrawingKind::Png}, Extension{".json", DrawingKind::Document},
    Extension{".rdoc", DrawingKind::Document}};

Expected<DrawingKind> KindOf(const std::string& output) {
  const std::string extension = std::filesystem::path(output).extension();
  for (const Extension& row : Extensions) {
    if (extension == row.name) return row.kind;
  }
  return FailureOf("-o " + output + ": its name has to end in .svg, .pdf, .png, .rdoc or .json");
}

render::ImageFormat FormatOf(DrawingKind kind) {
  switch (kind) {
    case DrawingKind::Svg: return render::ImageFormat::Svg;
    case DrawingKind::Pdf: return render::ImageFormat::Pdf;
    default: return render::ImageFormat::Png;
  }
}

}  // namespace

Expected<DrawingRequest> DrawingRequestOf(const Invocation& invocation, const std::string& output) {
  DrawingRequest request;
  if (!output.empty()) {
    const auto kind = KindOf(output);
    if (!kind) return kind.Error();
    request.kind = *kind;
  }
  const std::string page = invocation.ValueOr(OptionId::Page, "");
  if (!page.empty()) {
    const auto number = WholeNumberOf("--page", page, 1, MaximumPage);
    if (!number) return number.Error();
    request.page = *number;
  }
  const std::string dpi = invocation.ValueOr(OptionId::PictureDpi, "");
  if (!dpi.empty()) {
    const auto number = WholeNumberOf("--dpi", dpi, 1, MaximumDpi);
    if (!number) return number.Error();
    request.dpi = *number;
  }
  request.outlines = invocation.Has(OptionId::Outlines);
  request.numbered = UnnamedExisting(invocation);
  return request;
}

Expected<std::vector<std::string>> WriteDrawing(document::DocumentHost& host,
                                                const DrawingRequest& request,
                                                const std::string& output) {
  const std::wstring path = os::FromNative(output);
  if (request.kind == DrawingKind::Document) {
    if (const auto saved = host.Save(path); !saved) return saved.Error();
    return std::vector<std::string>{output};
  }
  const render::ImageSource source{host.GetDocument(), host.GetFonts(), host.GetNotices()};
  render::ImageOptions options;
  if (request.page > 0) options.page = request.page;
  options.outlines = request.outlines;
  options.dpi = request.dpi;
  const auto written =
      render::SaveImages(source, FormatOf(request.kind), options, path, request.numbered);
  if (!written) return written.Error();
  std::vector<std::string> files;
  for (const std::wstring& file : *written) files.push_back(os::Utf8FromWide(file));
  return files;
}

std::vector<std::string> DrawOrEnd(document::DocumentHost& host, const DrawingRequest& request,
                                   const std::string& output) {
  auto files = WriteDrawing(host, request, output);
  if (!files && files.Error().error == EEXIST) ThrowUnwritten(files.Error());
  return OrEnd(ExitStatus::JobFailed, std::move(files));
}

}  // namespace rastrel::cli
