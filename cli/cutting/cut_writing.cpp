#include <array>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/cutting/cut_pipeline.h"
#include "cutting/job/job_file.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {
namespace {

using Writer = Expected<std::string> (*)(const CutRun& run);

struct Form {
  std::string_view ending;  ///< of the file's name, in lower case
  Writer write;
};

Expected<std::string> WriteJson(const CutRun& run) { return cutting::JobFileText(run.job); }

// One form a line. The first is that of standard output.
constexpr std::array Forms{
    Form{".json", WriteJson},
};

std::string EndingOf(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  for (char& letter : ending)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return ending;
}

const Form& FormOf(const std::string& path) {
  if (path == StandardOutputName) return Forms.front();
  const std::string ending = EndingOf(path);
  std::string known;
  for (const Form& form : Forms) {
    if (form.ending == ending) return form;
    known += (known.empty() ? "" : ", ") + std::string(form.ending);
  }
  throw CommandError(ExitStatus::WrongUse,
                     "can't write '" + path + "': its form is none of " + known);
}

void Write(const std::string& path, const std::string& text) {
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  if (const auto written = file->Write(text); !written) ThrowUnwritten(written.Error());
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
}

}  // namespace

Expected<void> WriteCutJob(CutRun& run) {
  const std::string path = run.invocation.ValueOr(OptionId::ResultOutput, "");
  // The result may be the picture, or go to a device.
  if (!run.invocation.Has(OptionId::ResultOutput) &&
      (run.invocation.Has(OptionId::CutPicture) || run.invocation.Has(OptionId::CutDevice)))
    return {};
  if (path.empty()) throw CommandError(ExitStatus::WrongUse, "-o needs the name of a file, or -");
  std::error_code ignored;
  if (std::filesystem::equivalent(path, run.invocation.operand, ignored))
    throw CommandError(ExitStatus::WrongUse,
                       "the result would take the place of '" + path + "', which it is made of");
  const auto text = FormOf(path).write(run);
  if (!text) return text.Error();
  if (path == StandardOutputName) {
    OrEnd(ExitStatus::JobFailed, WriteResult(*text));
  } else {
    Write(path, *text);
    run.written.push_back(path);
  }
  return {};
}

}  // namespace rastrel::cli
