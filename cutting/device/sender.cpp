#include "cutting/device/sender.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "children/devices/pattern.h"
#include "cutting/device/connection.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cutting {
namespace {

constexpr std::size_t PieceBytes = std::size_t{1} << 20;
constexpr unsigned LargestNumber = 9999;

/// Whether the path leads to a port or a pipe, which no other file can take the place of.
bool IsNode(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  return std::filesystem::is_character_file(status) || std::filesystem::is_fifo(status);
}

Failure NotWhole(const SendProgress& progress, const Failure& failure) {
  Failure told = failure;
  told.why = (failure.why.empty() ? DescribeError(failure.error) : failure.why) + "; " +
             std::to_string(progress.taken) + " of " + std::to_string(progress.total) +
             " bytes were written, and no file is left of them";
  return told;
}

/// Writes a file whole or not at all. A failure with EEXIST: the place was taken meanwhile.
Expected<SendResult> WriteWhole(const std::string& path, os::Existing existing,
                                std::string_view bytes, const SendControl& control) {
  SendResult result{.progress = {.total = bytes.size()}, .path = path};
  auto file = os::OutputFile::Create(path, existing);
  if (!file) return file.Error();
  while (result.progress.taken < bytes.size()) {
    if (control.order && control.order() == SendOrder::Cancel) {
      result.isCancelled = true;
      return result;
    }
    const std::string_view piece = bytes.substr(result.progress.taken, PieceBytes);
    if (auto written = file->Write(piece); !written) {
      return NotWhole(result.progress, written.Error());
    }
    result.progress.taken += piece.size();
    if (control.onProgress) control.onProgress(result.progress);
  }
  if (auto committed = file->Commit(); !committed) {
    if (committed.Error().error == EEXIST) return committed.Error();
    return NotWhole(result.progress, committed.Error());
  }
  return result;
}

Expected<SendResult> WriteNew(const std::string& directory, const std::string& name,
                              std::string_view bytes, const SendControl& control) {
  const std::string first = directory + (directory.ends_with('/') ? "" : "/") + name;
  for (unsigned number = 1; number <= LargestNumber; ++number) {
    const std::string path = number == 1 ? first : os::NumberedPath(first, number);
    const auto place = os::CheckPlace(path, os::Existing::Refused);
    if (!place && place.Error().error != EEXIST) return place.Error();
    if (!place) continue;
    auto result = WriteWhole(path, os::Existing::Refused, bytes, control);
    if (result || result.Error().error != EEXIST) return result;
  }
  return FailureOf("'" + directory + "' has " + std::to_string(LargestNumber) +
                   " files of this job's name already");
}

Expected<SendResult> SendTo(Expected<Connection> connection, const std::string& where,
                            const Device& device, std::string_view bytes,
                            const SendControl& control) {
  if (!connection) return connection.Error();
  if (connection->isCancelled) {
    return SendResult{.progress = {.total = bytes.size()}, .isCancelled = true};
  }
  return SendThrough(connection->descriptor.Get(), where, bytes, device.reach, device.limits.chunk,
                     control);
}

}  // namespace

std::string DeviceFileName(const std::string& jobName, std::string_view format) {
  std::string_view name = jobName;
  if (const std::size_t slash = name.rfind('/'); slash != std::string_view::npos) {
    name.remove_prefix(slash + 1);
  }
  if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos && dot > 0) {
    name = name.substr(0, dot);
  }
  const std::string_view ending = format == "hpgl" ? "plt" : format == "gcode" ? "nc" : format;
  return devices::SafeName(name) + "." + std::string(ending);
}

Expected<SendResult> Send(const Device& device, std::string_view bytes, const std::string& name,
                          const SendControl& control) {
  const DeviceReach& reach = device.reach;
  switch (reach.by) {
    case Reach::File:
      if (IsNode(reach.path)) {
        return SendTo(OpenNode(reach.path), reach.path, device, bytes, control);
      }
      return WriteWhole(reach.path, os::Existing::Replaced, bytes, control);
    case Reach::Directory:
      return WriteNew(reach.path, DeviceFileName(name, device.format), bytes, control);
    case Reach::Tcp:
      return SendTo(ConnectTo(reach, control), reach.host + ":" + std::to_string(reach.port),
                    device, bytes, control);
    case Reach::Serial: return SendTo(OpenSerial(reach), reach.path, device, bytes, control);
    case Reach::None:
    case Reach::Program: break;
  }
  return FailureOf("'" + device.name + "' has no way that bytes can be sent by");
}

}  // namespace rastrel::cutting
