#include "cli/input/result_names.h"

#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/input/input_file.h"
#include "cli/input/standard_input.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view NameField = "{name}";

}  // namespace

bool IsResultDirectory(const std::string& output) {
  std::error_code error;
  return output.ends_with('/') || (!output.empty() && fs::is_directory(output, error));
}

bool NamesEachResult(const std::string& output) {
  return output.empty() || IsResultDirectory(output) || output.find(NameField) != output.npos;
}

std::string ResultNameFor(const std::string& output, const std::string& name,
                          const std::string& extension) {
  if (output.empty()) return name + extension;
  if (IsResultDirectory(output))
    return output + (output.ends_with('/') ? "" : "/") + name + extension;
  std::string filled = output;
  for (std::size_t at = 0; (at = filled.find(NameField, at)) != filled.npos; at += name.size())
    filled.replace(at, NameField.size(), name);
  return filled;
}

std::string JobNameOfOperand(const Invocation& invocation, const std::string& operand) {
  if (operand == StandardInputOperand)
    return SafeJobName(invocation.ValueOr(OptionId::Title, "standard input") + ".x");
  return SafeJobName(fs::path(operand).filename().string());
}

void CheckResultNames(const Invocation& invocation, const std::string& output,
                      const std::string& extension, const char* verb) {
  std::map<std::string, std::string> operandOf;
  for (const std::string& operand : invocation.operands) {
    const std::string name =
        ResultNameFor(output, JobNameOfOperand(invocation, operand), extension);
    const auto [other, isNew] = operandOf.emplace(name, operand);
    if (!isNew)
      throw CommandError(ExitStatus::WrongUse, "'" + other->second + "' and '" + operand +
                                                   "' would both become '" + name + "': " + verb +
                                                   " one of them by itself");
  }
}

}  // namespace rastrel::cli
