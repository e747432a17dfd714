#include "cli/document/separation_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <span>
#include <string_view>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/document/drawing.h"
#include "cli/input/input_file.h"
#include "host/document/document.h"
#include "host/render/plane_tiff.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr int HighestPictureDpi = 2400;

struct TargetRow {
  const char* extension;
  SeparationTarget target;
};
constexpr std::array TargetRows{
    TargetRow{".tif", SeparationTarget::Tiff},     TargetRow{".tiff", SeparationTarget::Tiff},
    TargetRow{".pdf", SeparationTarget::Pdf},      TargetRow{".svg", SeparationTarget::Picture},
    TargetRow{".png", SeparationTarget::Picture},  TargetRow{".rdoc", SeparationTarget::Document},
    TargetRow{".json", SeparationTarget::Document}};

SeparationTarget TargetOf(const std::string& path) {
  if (path.empty()) return SeparationTarget::None;
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return SeparationTarget::Directory;
  const std::string extension = fs::path(path).extension();
  const auto* row = std::ranges::find(
      TargetRows, extension,
      [](const TargetRow& candidate) -> std::string { return candidate.extension; });
  return row == TargetRows.end() ? SeparationTarget::Directory : row->target;
}

void MakeTargetDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (!fs::is_directory(path, error))
    throw CommandError(ExitStatus::WrongUse, "the planes can't be put into '" + path +
                                                 "': no such directory, and it can't be made");
}

render::TiffPage PageOf(const SeparatedPlane& plane) {
  return {.name = plane.name,
          .width = static_cast<std::uint32_t>(plane.width),
          .height = static_cast<std::uint32_t>(plane.height),
          .xResolution = plane.xResolution,
          .yResolution = plane.yResolution};
}

const document::PlanePixels& PixelsOf(SeparationRun& run, const SeparatedPlane& plane) {
  const document::Object& object = *run.Host().GetDocument().Find(plane.object);
  return *std::get<document::SeparationShape>(object.shape).pixels;
}

void WritePage(SeparationRun& run, os::OutputFile& file, const render::PlaneTiff& tiff,
               std::size_t page, const SeparatedPlane& plane) {
  Expected<void> written;
  const auto read = PixelsOf(run, plane).Visit([&](std::span<const std::uint8_t> pixels) {
    const std::string_view bytes(reinterpret_cast<const char*>(pixels.data()), pixels.size());
    written = file.Write(tiff.Head(page));
    if (written) written = file.Write(bytes);
  });
  OrEnd(ExitStatus::JobFailed, read);
  if (!written) ThrowUnwritten(written.Error());
}

// "sign-Cyan.tif", or of several pages "sign-2-Cyan.tif". Names that differ in case alone are the
// same on some file systems, and get numbers.
std::vector<std::string> FileNames(const std::string& name,
                                   const std::vector<SeparatedPlane>& planes) {
  const bool several = std::ranges::any_of(
      planes, [&](const SeparatedPlane& plane) { return plane.page != planes.front().page; });
  std::set<std::wstring> taken;
  std::vector<std::string> names;
  for (const SeparatedPlane& plane : planes) {
    const std::string stem = name + "-" + (several ? std::to_string(plane.page) + "-" : "") +
                             SafeJobName(plane.name + ".tif");
    std::string file = stem;
    for (int number = 2; !taken.insert(os::LowerAscii(os::WideFromUtf8(file))).second; ++number)
      file = stem + "_" + std::to_string(number);
    names.push_back(file + ".tif");
  }
  return names;
}

void WriteDirectory(SeparationRun& run, const SeparationOutput& output, const std::string& name,
                    std::vector<SeparatedPlane>& planes) {
  const std::vector<std::string> names = FileNames(name, planes);
  std::vector<std::string> paths;
  for (const std::string& file : names) {
    paths.push_back(output.path == "." ? file : (fs::path(output.path) / file).string());
    if (const auto place = os::CheckPlace(paths.back(), output.existing); !place)
      ThrowUnwritten(place.Error());
  }
  std::vector<os::OutputFile> files;
  for (std::size_t i = 0; i < planes.size(); ++i) {
    const auto tiff = OrEnd(ExitStatus::JobFailed, render::PlaneTiff::Of({PageOf(planes[i])}));
    auto file = os::OutputFile::Create(paths[i], output.existing);
    if (!file) ThrowUnwritten(file.Error());
    files.push_back(*std::move(file));
    WritePage(run, files.back(), tiff, 0, planes[i]);
    planes[i].files = {paths[i]};
  }
  if (const auto named = os::OutputFile::CommitAll(files); !named) ThrowUnwritten(named.Error());
}

void WriteTiff(SeparationRun& run, const SeparationOutput& output,
               std::vector<SeparatedPlane>& planes) {
  std::vector<render::TiffPage> pages;
  for (const SeparatedPlane& plane : planes) pages.push_back(PageOf(plane));
  const auto tiff = OrEnd(ExitStatus::JobFailed, render::PlaneTiff::Of(std::move(pages)));
  auto file = os::OutputFile::Create(output.path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  for (std::size_t i = 0; i < planes.size(); ++i) {
    WritePage(run, *file, tiff, i, planes[i]);
    planes[i].files = {output.path};
  }
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
}

// The blank is as large as the largest page, so that pictures are in true size.
void FitBlank(document::Document& document, const std::vector<SeparatedPlane>& planes) {
  document::SignBlank blank = document.Blank();
  blank.width = blank.height = 0;
  for (const SeparatedPlane& plane : planes) {
    const BOUNDS bounds = document.Bounds(plane.object);
    blank.width = std::max(blank.width, bounds.xmax);
    blank.height = std::max(blank.height, bounds.ymax);
  }
  document.SetBlank(blank);
}

// Each plane on the page of the file that it is of, or on a page of its own.
void SetPages(document::Document& document, const std::vector<SeparatedPlane>& planes,
              bool pageForEach) {
  int page = 0;
  for (const SeparatedPlane& plane : planes) {
    page = pageForEach ? page + 1 : plane.page;
    document.SetPages(plane.object, {.first = page, .last = page});
  }
}

void DrawPlanes(SeparationRun& run, const SeparationOutput& output, const Invocation& invocation,
                std::vector<SeparatedPlane>& planes) {
  DrawingRequest request = OrEnd(ExitStatus::WrongUse, DrawingRequestOf(invocation, output.path));
  // A pixel of a picture is one of the planes.
  request.dpi = std::clamp(static_cast<int>(planes.front().xResolution), 1, HighestPictureDpi);
  const std::vector<std::string> files = DrawOrEnd(run.Host(), request, output.path);
  const bool numbered = files.size() > 1;
  for (SeparatedPlane& plane : planes) {
    const auto page = static_cast<std::size_t>(plane.page) - 1;
    plane.files = {numbered && page < files.size() ? files[page] : files.front()};
  }
}

}  // namespace

SeparationOutput SeparationOutputOf(const Invocation& invocation) {
  SeparationOutput output;
  output.path = invocation.ValueOr(OptionId::PlanesOutput, "");
  if (output.path == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse,
                       "planes are several, and standard output takes one: name a file or a "
                       "directory");
  output.target = TargetOf(output.path);
  output.existing = UnnamedExisting(invocation);
  if (output.target == SeparationTarget::Directory) {
    MakeTargetDirectory(output.path);
  } else if (output.target != SeparationTarget::None) {
    if (const auto place = os::CheckPlace(output.path, os::Existing::Followed); !place)
      ThrowUnwritten(place.Error());
  }
  return output;
}

void WriteSeparation(SeparationRun& run, const SeparationOutput& output,
                     const Invocation& invocation, const std::string& name,
                     std::vector<SeparatedPlane>& planes) {
  document::Document& document = run.Host().GetDocument();
  FitBlank(document, planes);
  SetPages(document, planes, output.target == SeparationTarget::Pdf);
  switch (output.target) {
    case SeparationTarget::None: break;
    case SeparationTarget::Directory: WriteDirectory(run, output, name, planes); break;
    case SeparationTarget::Tiff: WriteTiff(run, output, planes); break;
    case SeparationTarget::Pdf:
    case SeparationTarget::Picture:
    case SeparationTarget::Document: DrawPlanes(run, output, invocation, planes); break;
  }
}

}  // namespace rastrel::cli
