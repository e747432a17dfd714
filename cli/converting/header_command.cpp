#include "cli/converting/header_command.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "cli/console/standard_streams.h"
#include "cli/converting/conversion_settings.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "rastrel/conversion/prepend.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

[[noreturn]] void FailToWrite(const std::string& target, int error) {
  throw CommandError(ExitStatus::JobFailed,
                     "can't write '" + target + "': " + DescribeError(error));
}

// Names that no library path can spell, as those with a backslash.
std::wstring PathOfTarget(const std::string& target) {
  std::wstring path = os::FromNative(target);
  if (os::ToNative(path) != target)
    throw CommandError(ExitStatus::WrongUse, "can't write '" + target +
                                                 "': such a name is not for "
                                                 "files that go to the queue");
  return path;
}

void WriteCopy(const InputFile& input, const std::string& target, const std::string& header) {
  std::error_code ignored;
  if (std::filesystem::equivalent(input.path, target, ignored)) {
    if (!conversion::PrependToFile(PathOfTarget(target).c_str(), os::WideFromAnsi(header)))
      FailToWrite(target, errno);
    return;
  }
  const auto copy = os::CreateForWriting(PathOfTarget(target));
  if (!copy) FailToWrite(target, copy.Error().error);
  if (const auto written = os::WriteAll(copy->Get(), header); !written)
    FailToWrite(target, written.Error().error);
  if (input.extension == ".pdf") return;
  const auto source = os::OpenRegularFile(PathOfTarget(input.path));
  if (!source) FailToWrite(target, source.Error().error);
  if (const auto appended = os::AppendContent(copy->Get(), source->Get()); !appended)
    FailToWrite(target, appended.Error().error);
}

}  // namespace

ExitStatus HeaderCommand(const Invocation& invocation) {
  const ConversionSettings settings =
      OrEnd(ExitStatus::WrongUse, ReadConversionSettings(invocation));
  const InputFile input =
      OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand, "give a job header to"));
  LayOutQuietly();
  const std::wstring header = settings.Header();
  if (invocation.Has(OptionId::OutputFile)) {
    WriteCopy(input, invocation.ValueOr(OptionId::OutputFile, ""), os::AnsiFromWide(header));
    return ExitStatus::Done;
  }
  std::string shown = settings.Any() ? "" : HeaderOf(input.path);
  shown = os::Utf8FromWide(shown.empty() ? header : os::WideFromAnsi(shown));
  std::erase(shown, '\r');
  WriteOutData(shown);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
