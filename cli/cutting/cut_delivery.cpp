// The last stages: a picture of the job for a person, and the job to its device.

#include "cli/cutting/cut_delivery.h"

#include <algorithm>
#include <string>

#include "cli/console/unwritten_file.h"
#include "cli/cutting/device_job.h"
#include "cli/cutting/device_options.h"
#include "cli/cutting/device_place.h"
#include "cutting/picture/cut_picture.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {
namespace {

Expected<std::string> PictureOf(const cutting::CutJob& job, const std::string& path) {
  if (path.ends_with(".svg")) return cutting::CutPictureSvg(job);
  if (path.ends_with(".png")) return cutting::CutPicturePng(job, CutPicturePixels);
  throw CommandError(ExitStatus::WrongUse,
                     "can't write '" + path + "': a picture's name ends in .svg or .png");
}

}  // namespace

Expected<void> WriteCutPicture(CutRun& run) {
  if (!run.invocation.Has(OptionId::CutPicture)) return {};
  const std::string path = run.invocation.ValueOr(OptionId::CutPicture, "");
  const auto picture = PictureOf(run.job, path);
  if (!picture) return picture.Error();
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  if (const auto written = file->Write(*picture); !written) ThrowUnwritten(written.Error());
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
  run.written.push_back(path);
  return {};
}

ExitStatus SendCutJob(const CutRun& run) {
  const std::string path = OrEndByCode(ExitStatus::JobFailed,
                                       FindDevice(run.invocation.ValueOr(OptionId::CutDevice, "")));
  const cutting::Device device = OrEndByCode(ExitStatus::JobFailed, ReadDeviceFile(path));
  const std::string bytes = OrEndByCode(ExitStatus::JobFailed, FileForDevice(device, run.job));
  return SendDeviceJob({.device = device,
                        .devicePath = path,
                        .bytes = bytes,
                        .name = run.invocation.operand,
                        .file = {}},
                       run.invocation);
}

}  // namespace rastrel::cli
