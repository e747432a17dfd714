#include "cli/document/open_template.h"

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "cli/document/font_options.h"
#include "cli/input/standard_input.h"
#include "host/document/document.h"
#include "rastrel/platform/host/host.h"

namespace rastrel::cli {
namespace {

void SetBlank(document::Document& document, const std::string& blank) {
  const Size size = OrEnd(ExitStatus::WrongUse, ParseSize("--blank", blank));
  document::SignBlank sign = document.Blank();
  sign.width = size.widthCm;
  sign.height = size.heightCm;
  document.SetBlank(sign);
}

// Standard input becomes a file, in a place that goes also if the command is killed.
std::string PathOfInput(const Invocation& invocation,
                        std::unique_ptr<interpreter::TaskPlace>& place) {
  if (invocation.operand != StandardInputOperand) return invocation.operand;
  place = std::make_unique<interpreter::TaskPlace>(
      OrEnd(ExitStatus::JobFailed, interpreter::TaskPlace::Make("rastrel-import-")));
  return OrEnd(ExitStatus::BadInput, TakeStandardInput(place->Directory(), ""));
}

TemplateSource SourceAt(const std::string& path, bool isCopy, const Invocation& invocation) {
  TemplateSource source = SourceOf(path);
  if (isCopy) {
    source.name = StandardInputName;
    std::error_code error;
    source.directory = std::filesystem::current_path(error).string();
    source.isPrivate = true;
  }
  source.allowOutside = invocation.Has(OptionId::AllowOutside);
  source.records = invocation.command == CommandId::Import && invocation.Has(OptionId::Json);
  source.strict = invocation.Has(OptionId::Strict);
  return source;
}

OpenedFile OpenAt(const std::string& path, bool isCopy, const Invocation& invocation) {
  const TemplateFormat format = FormatFor(invocation, path);
  if (format == TemplateFormat::Document) {
    if (!invocation.ValueOr(OptionId::Blank, "").empty())
      throw CommandError(ExitStatus::WrongUse, "--blank: a document has its blank already");
    RefuseFontOptions(invocation);
    return OrEnd(ExitStatus::BadInput, OpenDocumentFile(path));
  }
  OpenedFile file = NewDocument(format, invocation);
  OrEndByCode(ExitStatus::NotInstalled, ImportTemplate(SourceAt(path, isCopy, invocation), file));
  return file;
}

}  // namespace

TemplateFormat FormatFor(const Invocation& invocation, const std::string& path) {
  const std::string name = invocation.ValueOr(OptionId::Format, "");
  if (!name.empty()) return OrEnd(ExitStatus::WrongUse, FormatNamed(name));
  return OrEndByCode(ExitStatus::NotInstalled, FormatOfFile(path));
}

OpenedFile NewDocument(TemplateFormat format, const Invocation& invocation) {
  OpenedFile file;
  file.format = format;
  file.host = std::make_unique<document::DocumentHost>();
  const std::string blank = invocation.ValueOr(OptionId::Blank, "");
  if (!blank.empty()) SetBlank(file.host->GetDocument(), blank);
  PrepareFonts(invocation, *file.host);
  host::SetHost(file.host.get());
  return file;
}

OpenedFile OpenTemplate(const Invocation& invocation) {
  std::unique_ptr<interpreter::TaskPlace> place;
  const std::string path = PathOfInput(invocation, place);
  OrEnd(ExitStatus::BadInput, CheckTemplateFile(path));
  OpenedFile file = OpenAt(path, place != nullptr, invocation);
  file.name = place ? StandardInputName : path;
  file.place = std::move(place);
  return file;
}

}  // namespace rastrel::cli
