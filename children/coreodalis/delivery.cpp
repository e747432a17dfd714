#include "children/coreodalis/delivery.h"

#include <fcntl.h>

#include <cerrno>
#include <set>
#include <utility>

#include "children/coreodalis/command_device.h"
#include "children/coreodalis/render.h"
#include "children/shared/delivery_command.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {
namespace {

std::string InsertBeforeExtension(const std::string& path, const std::string& text) {
  const std::size_t name = path.rfind('/') + 1;
  std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot <= name) dot = path.size();
  return path.substr(0, dot) + text + path.substr(dot);
}

std::vector<std::string> PathsFor(const devices::Pattern& pattern, bool planar,
                                  const devices::FieldValues& given,
                                  const std::vector<std::string>& planes) {
  devices::FieldValues values = given;
  values.plane = AllPlanes;
  if (!planar) return {pattern.Expand(values)};
  std::vector<std::string> paths;
  std::set<std::string> taken;
  for (const std::string& plane : planes) {
    values.plane = plane;
    std::string path = pattern.Expand(values);
    if (!pattern.Has(devices::Field::Plane))
      path = InsertBeforeExtension(path, "-" + devices::SafeName(plane));
    const std::string first = path;
    for (unsigned i = 2; !taken.insert(path).second; ++i) {
      path = InsertBeforeExtension(first, "_" + std::to_string(i));
    }
    paths.push_back(std::move(path));
  }
  return paths;
}

/// One directory separator in front of the name, and no doubled ones, so that messages read well.
std::string WithoutDoubledSlashes(std::string path) {
  for (std::size_t at = 0; (at = path.find("//", at)) != std::string::npos;) path.erase(at, 1);
  return path;
}

RenderOrder RenderingOf(const DeliveryOrder& order) {
  RenderOrder rendering;
  rendering.format = order.device->format;
  rendering.compression = order.device->compression;
  rendering.planar = order.planar;
  rendering.progress = order.progress;
  return rendering;
}

Expected<void> RunChecks(const PageSource& source) {
  for (const ContentCheck& check : source.Checks()) {
    if (auto checked = check.Run(); !checked) return checked;
  }
  return {};
}

/// The command's arguments, with the fields filled in.
std::vector<std::string> WordsOf(const devices::Device& device,
                                 const devices::FieldValues& values) {
  std::vector<std::string> words;
  for (const devices::Pattern& word : device.command) words.push_back(word.Expand(values));
  return words;
}

}  // namespace

std::vector<std::string> FilePaths(const DeliveryOrder& order,
                                   const std::vector<std::string>& planes) {
  auto paths = PathsFor(order.device->pattern, order.planar, order.values, planes);
  for (std::string& path : paths) path = WithoutDoubledSlashes(std::move(path));
  return paths;
}

Expected<void> Delivery::Deliver(PageSource& source, const DeliveryOrder& order) {
  return order.device->kind == devices::DeviceKind::File ? ToFiles(source, order)
                                                         : ToCommand(source, order);
}

/// The page's own file, where it has the bytes that the device gets, and this is its last use.
std::optional<OutputFile> Delivery::TakePageFile(const PageSource& source,
                                                 const DeliveryOrder& order,
                                                 const std::string& path) {
  const devices::Device& device = *order.device;
  const bool isWanted = order.isPagesLast && !order.planar &&
                        device.format == devices::FileFormat::Tiff &&
                        device.compression == devices::Compression::None;
  const int descriptor = isWanted ? source.FileAsTiff() : -1;
  if (descriptor < 0) return std::nullopt;
  return OutputFile::Take(descriptor, DirectoryOf(path), m_Guardian, order.permissions);
}

Expected<std::vector<OutputFile>> Delivery::WriteFiles(PageSource& source,
                                                       const DeliveryOrder& order,
                                                       const std::vector<std::string>& paths) {
  std::vector<OutputFile> files;
  const bool isUnchanged = source.IsUnchanged();  // before the second name, which is a change
  if (auto taken = TakePageFile(source, order, paths.front())) {
    taken->BeginFlush();  // while the check reads
    if (auto checked = isUnchanged ? Expected<void>() : RunChecks(source); !checked)
      return checked.Error();
    order.progress(1);
    files.push_back(*std::move(taken));
    return files;
  }
  std::vector<RenderTarget> targets;
  for (const std::string& path : paths) {
    auto file = OutputFile::Create(DirectoryOf(path), m_Guardian, order.permissions);
    if (!file) return file.Error();
    targets.push_back({file->Descriptor(), path});
    files.push_back(std::move(*file));
  }
  RenderOrder rendering = RenderingOf(order);
  rendering.progress = [&](double share) {
    for (OutputFile& file : files) file.BeginFlush();
    order.progress(share);
  };
  auto rendered = Render(source, rendering, targets);
  if (!rendered) return rendered.Error();
  return files;
}

Expected<void> Delivery::ToFiles(PageSource& source, const DeliveryOrder& order) {
  const auto paths = FilePaths(order, source.Shape().planes);
  auto files = WriteFiles(source, order, paths);
  if (!files) return files.Error();
  order.flushing();
  std::vector<Publisher::Item> items;
  for (std::size_t i = 0; i < files->size(); ++i) {
    if (auto flushed = (*files)[i].Flush(); !flushed) return flushed.Error();
    items.push_back({&(*files)[i], paths[i]});
  }
  // A replaced file could not come back, so that only files with new names are put under guard. A
  // path that can't be, or a guardian that is gone, is no reason to lose a page.
  const auto guard = [this](const std::vector<std::string>& names) {
    for (const std::string& name : names) static_cast<void>(m_Guardian.Guard(name));
  };
  const auto delivered = m_Publisher.Publish(items, order.device->overwrite, guard);
  if (!delivered) return delivered.Error();
  order.delivered(*delivered);
  for (const std::string& path : *delivered) static_cast<void>(m_Guardian.Release(path));
  return {};
}

Expected<void> Delivery::ToCommand(PageSource& source, const DeliveryOrder& order) {
  auto directory = CommandDirectory::Create(m_Guardian);
  if (!directory) return directory.Error();
  // The program sees this name, and may show it.
  const auto name = devices::Pattern::Read(std::string("{job}-{page}.") +
                                           devices::ExtensionOf(order.device->format));
  if (!name) return name.Error();
  auto paths = PathsFor(*name, order.planar, order.values, source.Shape().planes);
  std::vector<os::FileDescriptor> files;
  std::vector<RenderTarget> targets;
  for (std::string& path : paths) {
    path.insert(0, directory->Path() + "/");
    os::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.IsOpen()) return Failure{"create", path, errno};
    targets.push_back({file.Get(), path});
    files.push_back(std::move(file));
  }
  auto rendered = Render(source, RenderingOf(order), targets);
  if (!rendered) return rendered;
  files.clear();
  order.flushing();
  for (std::size_t i = 0; i < paths.size(); ++i) {
    devices::FieldValues values = order.values;
    values.plane = order.planar ? source.Shape().planes[i] : AllPlanes;
    values.file = paths[i];
    auto run = children::RunCommand(WordsOf(*order.device, values), paths[i], m_Guardian,
                                    order.device->timeoutSeconds);
    if (run) continue;
    if (i > 0 || run.Error().error == EINTR) order.unsure();
    return run;
  }
  return {};
}

}  // namespace rastrel::odalis
