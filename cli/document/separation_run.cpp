#include "cli/document/separation_run.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/installation/installation.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/separation_planes.h"
#include "rastrel/conversion/separation/separation_objects.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t MaximumOutputFile = 260;  // characters that GenerateSCObjects reads
constexpr double SquareCentimetresPerSquareInch = 2.54 * 2.54;

// The settings of one separation, over those of the installation.
class RunSettings : public host::Settings {
 public:
  RunSettings(std::wstring file, host::Settings& below) : m_File(std::move(file)), m_Below(below) {}
  [[nodiscard]] std::optional<std::wstring> Read(const std::wstring& section,
                                                 const std::wstring& key,
                                                 DataStoreType store) override {
    if (section == L"Separation" && key == L"Output File") return m_File;
    if (section == L"Separation" && key == L"Delete") return L"1";
    return m_Below.Read(section, key, store);
  }
  [[nodiscard]] bool Write(const std::wstring& section, const std::wstring& key,
                           const std::wstring& value, DataStoreType store) override {
    return m_Below.Write(section, key, value, store);
  }

 private:
  std::wstring m_File;
  host::Settings& m_Below;
};

// As the file is named where the library can read such a long path, else as short as can be.
std::wstring CopyIn(const JobDirectory& directory, const std::string& path,
                    const std::string& name) {
  const auto length = [&](const std::string& file) {
    return os::FromNative(directory.Path() + "/" + file).size();
  };
  std::string file = name + ".ps";
  if (length(file) > MaximumOutputFile) file = "job.ps";
  if (length(file) > MaximumOutputFile)
    throw CommandError(ExitStatus::NotInstalled,
                       "the data root's path is too long to separate files: '" + directory.Path() +
                           "/" + file + "' has more than " + std::to_string(MaximumOutputFile) +
                           " characters");
  return os::FromNative(OrEndByCode(ExitStatus::JobFailed, directory.CopyIn(path, file)));
}

std::string HexColor(const CVKColor& color) {
  double red = 0;
  double green = 0;
  double blue = 0;
  color.GetColorChannels(&red, &green, &blue, nullptr);
  std::string bytes;
  for (const double part : {red, green, blue}) bytes += static_cast<char>(std::lround(part));
  return "#" + os::HexFromBytes(bytes);
}

[[noreturn]] void Fail(const document::Notices& notices) {
  const std::string why = LastErrorOfQueue();
  if (!why.empty()) throw CommandError(ExitStatus::JobFailed, "the separation failed: " + why);
  if (!notices.Losses().empty())
    throw CommandError(ExitStatus::JobFailed, "the planes can't be taken over: " +
                                                  os::Utf8FromWide(notices.Losses().front()));
  throw CommandError(ExitStatus::JobFailed, "the separation failed; the application log in '" +
                                                RipDirectory() + "' tells more");
}

}  // namespace

SeparationHost::SeparationHost(const std::wstring& copy)
    : m_Settings(std::make_unique<RunSettings>(copy, DocumentHost::GetSettings())) {
  host::SetHost(this);
}

SeparationHost::~SeparationHost() { host::SetHost(nullptr); }

SeparationRun::SeparationRun(const std::string& path, const std::string& name)
    : m_Directory(OrEnd(
          ExitStatus::NotInstalled,
          JobDirectory::CreateIn(OrEnd(ExitStatus::NotInstalled, MakeSeparationDirectory())))),
      m_Host(std::make_unique<SeparationHost>(CopyIn(m_Directory, path, name))) {}

bool SeparationRun::Separate(TerminalViews& views) {
  OrEnd(ExitStatus::NotInstalled, document::CheckPlaneReader());
  m_Host->SetDialogViews(&views);
  const int placed = GenerateSCObjects();
  m_Host->SetDialogViews(nullptr);
  if (views.IsCancelled()) return false;
  if (placed == 0) Fail(m_Host->GetNotices());
  return true;
}

std::vector<SeparatedPlane> SeparationRun::Planes() {
  std::vector<SeparatedPlane> planes;
  const document::Document& document = m_Host->GetDocument();
  for (const host::ObjectHandle object : document.Members(host::DocumentRoot)) {
    const auto* shape = std::get_if<document::SeparationShape>(&document.Find(object)->shape);
    if (shape == nullptr) continue;
    SeparatedPlane plane;
    std::wstring name;
    static_cast<void>(shape->ink.GetColorName(name));
    plane.name = os::Utf8FromWide(name);
    plane.object = object;
    plane.page = shape->page;
    plane.width = shape->pixelWidth;
    plane.height = shape->pixelHeight;
    plane.xResolution = shape->xResolution;
    plane.yResolution = shape->yResolution;
    plane.color = HexColor(shape->ink);
    const double ink = OrEnd(ExitStatus::JobFailed, shape->pixels->MeanInk());
    const double count = static_cast<double>(plane.width) * plane.height;
    plane.coverage = ink * 100;
    plane.area =
        ink * count / plane.xResolution / plane.yResolution * SquareCentimetresPerSquareInch;
    planes.push_back(std::move(plane));
  }
  return planes;
}

}  // namespace rastrel::cli
