#include "cli/document/drawing.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <utility>

#include "cli/console/unwritten_file.h"
#include "cli/console/values.h"
#include "host/render/document_images.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr int MaximumDpi = 2400;
constexpr int MaximumPage = 1'000'000;
constexpr int MaximumPixels = 20000;
constexpr int HighestFittedDpi = 300;

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

// The resolution at which a blank fits into so many pixels each way.
int FittedDpi(const document::SignBlank& blank, int pixels) {
  const double inches = std::max(blank.width, blank.height) / 2.54;
  const double dpi = inches > 0 ? std::floor(pixels / inches) : HighestFittedDpi;
  return static_cast<int>(std::clamp(dpi, 1.0, double{HighestFittedDpi}));
}

// Saved under a name of its own first: the host looks a name up in any case, as library paths are,
// and would replace `a.rdoc` for `A.rdoc`.
Expected<void> SaveDocument(document::DocumentHost& host, const std::string& output) {
  const std::string own =
      std::filesystem::path(output).replace_filename(os::OwnTemporaryName()).string();
  if (auto place = os::CheckPlace(output, os::Existing::Followed); !place) return place;
  if (auto saved = host.Save(os::FromNative(own)); !saved) return saved;
  Expected<void> done;
  {
    auto file = os::OutputFile::Take(own, output, os::Existing::Followed);
    done = file ? file->Commit() : Expected<void>(file.Error());
  }
  if (!done) static_cast<void>(os::RemoveFile(os::FromNative(own)));
  return done;
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
  const std::string pixels = invocation.ValueOr(OptionId::PicturePixels, "");
  if (!pixels.empty()) {
    if (!dpi.empty()) return FailureOf("--pixels and --dpi say the size of a picture both");
    const auto number = WholeNumberOf("--pixels", pixels, 1, MaximumPixels);
    if (!number) return number.Error();
    request.pixels = *number;
  }
  request.outlines = invocation.Has(OptionId::Outlines);
  request.numbered = UnnamedExisting(invocation);
  return request;
}

Expected<std::vector<std::string>> WriteDrawing(document::DocumentHost& host,
                                                const DrawingRequest& request,
                                                const std::string& output) {
  if (request.kind == DrawingKind::Document) {
    if (const auto saved = SaveDocument(host, output); !saved) return saved.Error();
    return std::vector<std::string>{output};
  }
  const render::ImageSource source{host.GetDocument(), host.GetFonts(), host.GetNotices()};
  render::ImageOptions options;
  if (request.page > 0) options.page = request.page;
  options.outlines = request.outlines;
  options.dpi =
      request.pixels > 0 ? FittedDpi(source.document.Blank(), request.pixels) : request.dpi;
  return render::SaveImages(source, FormatOf(request.kind), options, output, request.numbered,
                            request.single);
}

std::vector<std::string> DrawOrEnd(document::DocumentHost& host, const DrawingRequest& request,
                                   const std::string& output) {
  auto files = WriteDrawing(host, request, output);
  if (!files && files.Error().error == EEXIST) ThrowUnwritten(files.Error());
  return OrEnd(ExitStatus::JobFailed, std::move(files));
}

}  // namespace rastrel::cli
