#include "cli/printing/preview_target.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/input/input_file.h"
#include "cli/input/standard_input.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view NameField = "{name}";

std::string ValueOf(const Invocation& invocation) {
  return invocation.ValueOr(OptionId::PreviewOutput, "");
}

bool HasPictureExtension(const std::string& path) {
  const std::string extension = fs::path(path).extension();
  return extension == ".tif" || extension == ".tiff" || extension == ".png";
}

bool IsDirectory(const std::string& output) {
  std::error_code error;
  return output.ends_with('/') || (!HasPictureExtension(output) && fs::is_directory(output, error));
}

// Whether the option's value leads to a name for each file.
bool NamesEach(const std::string& output) {
  return IsDirectory(output) || output.find(NameField) != output.npos;
}

std::string Filled(std::string pattern, const std::string& name) {
  for (std::size_t at = 0; (at = pattern.find(NameField, at)) != pattern.npos; at += name.size())
    pattern.replace(at, NameField.size(), name);
  return pattern;
}

std::string JobNameOf(const Invocation& invocation, const std::string& operand) {
  if (operand != StandardInputOperand) return SafeJobName(fs::path(operand).filename().string());
  return SafeJobName(invocation.ValueOr(OptionId::Title, "standard input") + ".x");
}

}  // namespace

PreviewTarget TargetOfPreview(const Invocation& invocation, const std::string& name) {
  const std::string output = ValueOf(invocation);
  if (!NamesEach(output)) return {.path = output, .existing = os::Existing::Followed};
  const std::string separator = output.ends_with('/') ? "" : "/";
  return {.path = IsDirectory(output) ? output + separator + name + ".png" : Filled(output, name),
          .existing = UnnamedExisting(invocation)};
}

devices::FileFormat FormatOfPreview(const std::string& target) {
  if (target == StandardOutputName) return devices::FileFormat::Png;
  const std::string extension = fs::path(target).extension();
  if (extension == ".tif" || extension == ".tiff") return devices::FileFormat::Tiff;
  if (extension == ".png") return devices::FileFormat::Png;
  throw CommandError(ExitStatus::WrongUse,
                     "a preview needs the name of its file, which ends in "
                     ".tif, .tiff or .png, as in -o out.tif");
}

void CheckPreviewTarget(const Invocation& invocation, const PreviewTarget& target) {
  const std::string output = ValueOf(invocation);
  const bool made = !output.ends_with('/') || os::MakePath(os::FromNative(output));
  const fs::path folder = fs::path(target.path).parent_path();
  const auto there = os::CheckDirectory(os::FromNative(folder.empty() ? "." : folder.string()));
  const std::string fault = "the preview can't be put into '" + folder.string() + "': ";
  if (!there && IsMachineTrouble(there.Error().error))
    throw CommandError(ExitStatus::JobFailed, fault + DescribeError(there.Error().error));
  if (!there)
    throw CommandError(ExitStatus::WrongUse,
                       fault + "no such directory" + (made ? "" : ", and it can't be made"));
  if (const auto place = os::CheckPlace(target.path, target.existing); !place)
    ThrowUnwrittenPreview(place.Error());
}

void CheckPreviewNames(const Invocation& invocation) {
  const std::string output = ValueOf(invocation);
  if (output == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse,
                       "standard output takes one file: preview the files one by one");
  if (!NamesEach(output))
    throw CommandError(ExitStatus::WrongUse,
                       "the previews of several files need a directory, as in -o previews/, or a "
                       "name for each, as in -o '{name}.tif'");
  std::map<std::string, std::string> fileOf;
  for (const std::string& operand : invocation.operands) {
    const std::string target = TargetOfPreview(invocation, JobNameOf(invocation, operand)).path;
    const auto [other, isNew] = fileOf.emplace(target, operand);
    if (!isNew)
      throw CommandError(ExitStatus::WrongUse, "'" + other->second + "' and '" + operand +
                                                   "' would both become '" + target +
                                                   "': preview one of them by itself");
  }
}

void ThrowUnwrittenPreview(const Failure& failure) {
  ThrowUnwritten("the preview can't be written to", failure);
}

}  // namespace rastrel::cli
