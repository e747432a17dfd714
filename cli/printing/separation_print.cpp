#include "cli/printing/separation_print.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/printers.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t MaximumPath = 260;  // characters that GenerateSCObjects reads
constexpr unsigned MaximumCopies = 10'000;

// They change pages, of which there are none yet.
constexpr std::array PageOptions{
    OptionId::Mode,          OptionId::Copies,      OptionId::Pages,      OptionId::Spool,
    OptionId::KeepPs,        OptionId::Planar,      OptionId::Scale,      OptionId::Levels,
    OptionId::LevelsRed,     OptionId::LevelsGreen, OptionId::LevelsBlue, OptionId::LevelsGray,
    OptionId::CutColor,      OptionId::SaveTicket,  OptionId::Box,        OptionId::PasswordFile,
    OptionId::ParallelPages, OptionId::Output};

void RefusePageOptions(const Invocation& invocation) {
  for (const OptionId id : PageOptions)
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) + ": the printer '" +
                                                   SeparationPrinter + "' takes the file as it is");
  if (invocation.operands.size() > 1)
    throw CommandError(ExitStatus::WrongUse, std::string("the printer '") + SeparationPrinter +
                                                 "' keeps one file: print the files one by one, "
                                                 "and separate each");
}

Expected<void> Take(const std::string& copy, const std::string& target) {
  auto file = os::OutputFile::Take(copy, target, os::Existing::Refused);
  if (!file) return file.Error();
  return file->Commit();
}

// Moves the copy to a free name in the separation directory, and returns its path.
std::string Keep(const std::string& copy, const std::string& name) {
  const std::string place = OrEnd(ExitStatus::NotInstalled, MakeSeparationDirectory());
  const std::string path = place + "/" + name + ".ps";
  for (unsigned number = 1; number <= MaximumCopies; ++number) {
    const std::string target = number == 1 ? path : os::NumberedPath(path, number);
    const auto taken = Take(copy, target);
    if (taken) return target;
    if (taken.Error().error != EEXIST) ThrowUnwritten(taken.Error());
  }
  throw CommandError(ExitStatus::JobFailed,
                     "there is no free name for '" + name + ".ps' in '" + place + "'");
}

// The library reads the path from there.
void Announce(const std::string& path) {
  const std::wstring text = os::FromNative(path);
  if (text.size() <= MaximumPath &&
      WriteStringKorvane(L"Separation", L"Output File", text.c_str(), DS_USER, nullptr) != 0)
    return;
  static_cast<void>(os::RemoveFile(text));
  throw CommandError(ExitStatus::JobFailed,
                     text.size() > MaximumPath
                         ? "the path of the file has more than " + std::to_string(MaximumPath) +
                               " characters: '" + path + "'"
                         : "the path of the file can't be stored in the settings");
}

}  // namespace

bool PrintsToSeparation(const Invocation& invocation) {
  if (invocation.ValueOr(OptionId::Printer, "") != SeparationPrinter) return false;
  const auto devices = ReadPrinters();
  return !devices || std::ranges::none_of(*devices, [](const devices::Device& device) {
    return device.printer == SeparationPrinter;
  });
}

ExitStatus PrintToSeparation(const Invocation& invocation) {
  RefusePageOptions(invocation);
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const JobDirectory directory = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
  const std::string copy =
      OrEndByCode(ExitStatus::JobFailed, directory.CopyIn(input.path, input.safeName + ".ps"));
  const std::string path = Keep(copy, input.safeName);
  Announce(path);
  if (invocation.Has(OptionId::Json)) {
    JsonLine("done").Add("exit", 0).Add("paths", std::vector<std::string>{path}).Write();
  } else {
    WriteOutPath(path);
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
