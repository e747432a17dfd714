#include <array>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "cli/console/exit_status.h"
#include "cli/console/standard_streams.h"
#include "cli/console/unwritten_file.h"
#include "cli/cutting/cut_delivery.h"
#include "cli/cutting/cut_form_options.h"
#include "cli/cutting/cut_pipeline.h"
#include "cutting/job/job_file.h"
#include "cutting/picture/cut_picture.h"
#include "cutting/rules/rules.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {
namespace {

using Writer = Expected<std::string> (*)(const CutRun& run);

struct Form {
  std::string_view ending;  ///< of the file's name, in lower case
  Writer write;
};

Expected<std::string> WriteJson(const CutRun& run) { return cutting::JobFileText(run.job); }

template <cutting::CutForm form>
Expected<std::string> WriteForm(const CutRun& run) {
  cutting::CutFileOptions options = CutFormOptions(run.invocation);
  if (run.rules && !run.invocation.Has(OptionId::Tolerance))
    options.tolerance = run.rules->Defaults().tolerance;
  return cutting::WriteCutFile(run.job, form, options);
}

Expected<std::string> WritePng(const CutRun& run) {
  return cutting::CutPicturePng(run.job, CutPicturePixels);
}
Expected<std::string> WritePictureSvg(const CutRun& run) { return cutting::CutPictureSvg(run.job); }

// An SVG is a file for a cutter unless its name says that it is for a person.
constexpr std::string_view PictureSvgName = "preview.svg";

// One form a line. The first is that of standard output.
constexpr std::array Forms{
    Form{".json", WriteJson},
    Form{".plt", WriteForm<cutting::CutForm::Hpgl>},
    Form{".hpgl", WriteForm<cutting::CutForm::Hpgl>},
    Form{".dxf", WriteForm<cutting::CutForm::Dxf>},
    Form{".svg", WriteForm<cutting::CutForm::Svg>},
    Form{".pdf", WriteForm<cutting::CutForm::Pdf>},
    Form{".gcode", WriteForm<cutting::CutForm::Gcode>},
    Form{".nc", WriteForm<cutting::CutForm::Gcode>},
    Form{".ngc", WriteForm<cutting::CutForm::Gcode>},
    Form{".png", WritePng},
    Form{PictureSvgName, WritePictureSvg},
};

std::string EndingOf(const std::string& path) {
  std::string name = std::filesystem::path(path).filename().string();
  for (char& letter : name)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  if (name == PictureSvgName || name.ends_with("." + std::string(PictureSvgName)))
    return std::string(PictureSvgName);
  return std::filesystem::path(name).extension().string();
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

}  // namespace

bool IsCutJobName(const std::string& path) {
  return path == StandardOutputName || EndingOf(path) == ".json";
}

bool IsCutPictureName(const std::string& path) {
  const std::string ending = EndingOf(path);
  return ending == ".png" || ending == PictureSvgName;
}

void WriteCutText(CutRun& run, const std::string& path, const std::string& text) {
  std::error_code ignored;
  if (std::filesystem::equivalent(path, run.invocation.operand, ignored))
    throw CommandError(ExitStatus::WrongUse,
                       "the result would take the place of '" + path + "', which it is made of");
  const bool isRefused =
      !run.replacesResult && path == run.invocation.ValueOr(OptionId::ResultOutput, "");
  auto file =
      os::OutputFile::Create(path, isRefused ? os::Existing::Refused : os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  if (const auto written = file->Write(text); !written) ThrowUnwritten(written.Error());
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
  run.written.push_back(path);
}

Expected<void> WriteCutJob(CutRun& run) {
  // The result may be the picture, go to a device, or be looked at alone.
  if (!run.invocation.Has(OptionId::ResultOutput) &&
      (run.invocation.Has(OptionId::CutPicture) || run.invocation.Has(OptionId::CutShow) ||
       run.invocation.Has(OptionId::CutDevice)))
    return {};
  const std::string path = run.invocation.ValueOr(OptionId::ResultOutput, "");
  if (path.empty()) throw CommandError(ExitStatus::WrongUse, "-o needs the name of a file, or -");
  const auto text = FormOf(path).write(run);
  if (!text) return text.Error();
  if (path == StandardOutputName) {
    OrEnd(ExitStatus::JobFailed, WriteResult(*text));
  } else {
    WriteCutText(run, path, *text);
  }
  return {};
}

}  // namespace rastrel::cli
