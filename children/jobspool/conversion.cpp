#include "children/jobspool/conversion.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "children/jobspool/anonymous_file.h"
#include "children/jobspool/bitmap_file.h"
#include "children/jobspool/cut_archive.h"
#include "children/jobspool/leftovers.h"
#include "children/jobspool/prefix_text.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::jobspool {
namespace {

namespace fs = std::filesystem;

constexpr int OrdinaryResolution = 72;
constexpr double PointsPerInch = 72;
constexpr double PointsPerFlatness = 72 / 2540.;  // a hundredth of a millimetre
constexpr double SmallestTolerance = 1e-4;        // points: the decimals of cut paths

// The files of a conversion that went well.
struct Products {
  // In their places.
  explicit Products(const std::string& file)
      : pages(Companion(file, ".cfm")),
        archive(Companion(file, ".cut")),
        bitmap(Companion(file, "_Color.bmp")) {}
  // While they are made.
  explicit Products(const interpreter::RunDirectory& directory)
      : pages(directory.Path()),
        archive(directory.Path() + "/archive"),
        bitmap(directory.Path() + "/bitmap") {}

  std::string pages;
  std::string archive;
  std::string bitmap;
};

// A directory of that name that holds anything but pages is somebody's own.
Expected<void> RemoveEarlierPages(const std::string& path) {
  std::error_code error;
  const fs::file_status state = fs::symlink_status(path, error);
  if (state.type() == fs::file_type::not_found) return {};
  const bool ours =
      fs::is_directory(state) &&
      (fs::exists(path + "/" + pages::PageInfoName, error) || fs::is_empty(path, error));
  if (!ours) return Failure{"replace", path, EEXIST};
  fs::remove_all(path, error);
  if (error) return Failure{"remove", path, error.value()};
  return {};
}

Expected<void> RemoveEarlier(const Products& products) {
  if (const auto removed = RemoveEarlierPages(products.pages); !removed) return removed;
  for (const std::string& path : {products.archive, products.bitmap}) {
    if (unlink(path.c_str()) != 0 && errno != ENOENT) return Failure{"remove", path, errno};
  }
  return {};
}

Expected<os::FileDescriptor> HoldText(const std::string& text, const std::string& directory) {
  auto file = MakeAnonymousFile(directory);
  if (!file) return file;
  const auto written = os::WriteAll(file->Get(), text);
  if (!written) return FailureAt("a prefix", written.Error());
  return file;
}

class Conversion {
 public:
  Conversion(std::string file, const JobSource& source, const QueueContext& context)
      : m_File(std::move(file)), m_Source(source), m_Context(context), m_Products(m_File) {}

  Expected<void> Run() {
    RemoveForgottenBitmaps(m_Context.ripDirectory);
    if (const auto removed = RemoveEarlier(m_Products); !removed) return removed.Error();
    const std::string parent = fs::path(m_File).parent_path().string();
    const auto directory = interpreter::RunDirectory::MakeIn(parent, m_Context.guardian);
    if (!directory) return directory.Error();
    const auto pages = Interpret(*directory);
    if (!pages) return pages.Error();
    m_Context.reporter.Info("FLUSHING");
    return Finish(*directory, *pages);
  }

 private:
  [[nodiscard]] bool IsPicture() const { return m_Source.header.length > 0; }
  [[nodiscard]] int Resolution() const {
    return m_Source.header.resolution.value_or(OrdinaryResolution);
  }

  // A PDF sets its page while it runs. PostScript that doesn't declare its area has to be run for
  // that.
  Expected<void> FindArea(PictureTask& task) const {
    const bool pdf = m_Source.job.layout.kind == interpreter::JobKind::Pdf;
    task.area = m_Source.job.declared;
    if (task.area || (pdf && (task.size || task.resolution >= LowestDeviceResolution))) return {};
    const auto measured = Measure(m_Source, m_Context);
    if (!measured) return measured.Error();
    const PointBox& box = measured->box;
    if (pdf) {
      task.size = PictureSize{box.Width(), box.Height()};
    } else {
      task.area = box;
    }
    return {};
  }

  // The interpreter would fail without a reason.
  [[nodiscard]] Expected<void> CheckSize(const PictureTask& task) const {
    const auto dots = DotsOf(task);
    const auto limit = m_Context.settings.pagePixels;
    const auto side = static_cast<double>(interpreter::SidePixels);
    if (!dots || (dots->width <= side && dots->height <= side &&
                  dots->width * dots->height <= static_cast<double>(limit))) {
      return {};
    }
    const auto whole = [](double value) { return std::to_string(std::llround(value)); };
    return FailureOf("The picture would be " + whole(dots->width) + " x " + whole(dots->height) +
                     " pixels; the limit is " + std::to_string(limit) +
                     " pixels (RASTREL_RIP_PIXELS) and " + whole(side) + " on a side");
  }

  Expected<unsigned> Interpret(const interpreter::RunDirectory& directory) {
    auto request = RequestOf(m_Source, m_Context);
    if (!request) return request.Error();
    std::string prefix = SeparationPrefix(m_Context.settings.separationDpi);
    if (IsPicture()) {
      PictureTask task{{}, m_Source.header.size, Resolution(), m_Source.header.cutLines};
      if (const auto found = FindArea(task); !found) return found.Error();
      if (const auto checked = CheckSize(task); !checked) return checked.Error();
      prefix = PicturePrefix(task);
      request->setsCutColor = !task.cutLines.empty();
    }
    auto held = HoldText(prefix, directory.Path());
    if (!held) return held.Error();
    request->prefix = std::move(*held);
    if (!IsPicture()) {
      return interpreter::PrintPages(std::move(*request), directory, m_Context.reporter,
                                     m_Context.guardian);
    }
    const auto pages = interpreter::PrintFirstPage(std::move(*request), directory,
                                                   m_Context.reporter, m_Context.guardian);
    if (!pages) return pages.Error();
    if (pages->isOpen) {
      if (const auto checked = CheckMarks(); !checked) return checked.Error();
    }
    return pages->count;
  }

  // A page that the job did not end is one only if it has marks: the measure fails without.
  [[nodiscard]] Expected<void> CheckMarks() const {
    const auto measured = Measure(m_Source, m_Context);
    if (!measured) return measured.Error();
    return {};
  }

  Expected<void> Finish(const interpreter::RunDirectory& directory, unsigned pages) const {
    const std::string first = directory.Path() + "/" + pages::PageName(1);
    const Products made(directory);
    const auto written = WriteProducts(first, made);
    if (!written) return written.Error();
    if (const auto removed = directory.RemoveWork(); !removed) return removed;
    if (const auto joined = JoinPages(directory, first, pages); !joined) return joined;
    if (written->archive) {
      if (const auto moved = HandOver(made.archive, m_Products.archive); !moved) return moved;
    }
    if (written->bitmap) {
      if (const auto moved = HandOver(made.bitmap, m_Products.bitmap); !moved) return moved;
    }
    if (const auto moved = HandOver(first, m_Products.pages); !moved) return moved;
    if (rmdir(directory.Path().c_str()) != 0) {
      return Failure{"remove", directory.Path(), errno};
    }
    if (!m_Context.guardian.ReleaseAll()) return Failure{"release", m_Products.pages, errno};
    return {};
  }

  // Which products there are besides the pages.
  struct Written {
    bool archive = false;
    bool bitmap = false;
  };

  // Makes them of the first page, still in the run's directory.
  Expected<Written> WriteProducts(const std::string& first, const Products& made) const {
    Written written;
    if (!IsPicture()) return written;
    if (!m_Source.header.cutLines.empty()) {
      const auto archive = WriteCutArchive(first + "/" + pages::CutPathsName, made.archive,
                                           m_Source.header.cutLines, Tolerance());
      if (!archive) return archive.Error();
      written.archive = true;
    }
    const auto bitmap = WriteBitmapFile(first + "/page.ppm", made.bitmap, Resolution());
    written.bitmap = static_cast<bool>(bitmap);
    if (!bitmap && bitmap.Error().error != EFBIG) return bitmap.Error();
    if (!bitmap) {
      m_Context.reporter.Warning("The picture is too large for a bitmap file, which is left out.");
    }
    return written;
  }

  // Further pages lie below the first, whose description a reader finds without searching.
  static Expected<void> JoinPages(const interpreter::RunDirectory& directory,
                                  const std::string& first, unsigned pages) {
    for (unsigned page = 2; page <= pages; ++page) {
      const std::string name = "/" + pages::PageName(page);
      if (rename((directory.Path() + name).c_str(), (first + name).c_str()) != 0) {
        return Failure{"rename", directory.Path() + name, errno};
      }
    }
    return {};
  }

  // Under guard at the new name before it has it.
  Expected<void> HandOver(const std::string& from, const std::string& to) const {
    if (!m_Context.guardian.Guard(to)) return Failure{"guard", to, errno};
    if (rename(from.c_str(), to.c_str()) != 0) return Failure{"rename", to, errno};
    return {};
  }

  [[nodiscard]] double Tolerance() const {
    const double halfPixel = PointsPerInch / 2 / Resolution();
    return std::max(SmallestTolerance,
                    std::min(m_Source.header.flatness * PointsPerFlatness, halfPixel));
  }

  std::string m_File;
  const JobSource& m_Source;
  const QueueContext& m_Context;
  Products m_Products;
};

}  // namespace

Expected<void> Convert(const std::string& file, const JobSource& source,
                       const QueueContext& context) {
  std::error_code error;
  const fs::path path = fs::absolute(file, error);
  if (error) return Failure{"find", file, error.value()};
  return Conversion(path.string(), source, context).Run();
}

}  // namespace rastrel::jobspool
