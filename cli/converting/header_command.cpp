#include "cli/converting/header_command.h"

#include <algorithm>
#include <filesystem>

#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/converting/conversion_settings.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

// Names that no library path can spell, as those with a backslash.
std::wstring PathOfTarget(const std::string& target) {
  std::wstring path = os::FromNative(target);
  if (os::ToNative(path) != target)
    throw CommandError(ExitStatus::WrongUse, "can't write '" + target +
                                                 "': such a name is not for "
                                                 "files that go to the queue");
  return path;
}

// The input may be the target itself: it is read before it is replaced.
Expected<void> WriteCopy(const InputFile& input, const std::string& target,
                         const std::string& header) {
  auto copy = os::OutputFile::Create(target, os::Existing::Followed);
  if (!copy) return copy.Error();
  if (auto written = copy->Write(header); !written) return written;
  std::error_code ignored;
  const bool inPlace = std::filesystem::equivalent(input.path, target, ignored);
  if (input.extension != ".pdf" || inPlace) {
    const auto source = os::OpenRegularFile(PathOfTarget(input.path));
    if (!source) return source.Error();
    if (auto appended = copy->Append(source->Get()); !appended) return appended;
  }
  return copy->Commit();
}

// A PDF's header is a file of its own.
void WriteToOutput(const InputFile& input, const std::string& header) {
  OrEnd(ExitStatus::WrongUse, KeepOutputForResult());
  OrEnd(ExitStatus::JobFailed, WriteResult(header));
  if (input.extension != ".pdf") OrEnd(ExitStatus::JobFailed, WriteResultFile(input.path));
}

}  // namespace

ExitStatus HeaderCommand(const Invocation& invocation) {
  const ConversionSettings settings =
      OrEnd(ExitStatus::WrongUse, ReadConversionSettings(invocation));
  const InputFile input =
      OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand, "give a job header to"));
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const std::wstring header = settings.Header();
  if (invocation.ValueOr(OptionId::OutputFile, "") == StandardOutputName) {
    WriteToOutput(input, os::AnsiFromWide(header));
    return ExitStatus::Done;
  }
  if (invocation.Has(OptionId::OutputFile)) {
    const std::string target = invocation.ValueOr(OptionId::OutputFile, "");
    static_cast<void>(PathOfTarget(target));
    const auto written = WriteCopy(input, target, os::AnsiFromWide(header));
    if (!written) ThrowUnwritten(FailureAt(target, written.Error()));
    return ExitStatus::Done;
  }
  std::string shown = settings.Any() ? "" : HeaderOf(input.path);
  shown = os::Utf8FromWide(shown.empty() ? header : os::WideFromAnsi(shown));
  std::erase(shown, '\r');
  WriteOutData(shown);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
