#include "cli/document/open_template.h"

#include <memory>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "cli/document/font_options.h"
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

}  // namespace

TemplateFormat FormatFor(const Invocation& invocation) {
  const std::string name = invocation.ValueOr(OptionId::Format, "");
  if (!name.empty()) return OrEnd(ExitStatus::WrongUse, FormatNamed(name));
  return OrEndByCode(ExitStatus::NotInstalled, FormatOfFile(invocation.operand));
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
  const std::string& path = invocation.operand;
  OrEnd(ExitStatus::BadInput, CheckTemplateFile(path));
  const TemplateFormat format = FormatFor(invocation);
  const std::string blank = invocation.ValueOr(OptionId::Blank, "");
  if (format == TemplateFormat::Document) {
    if (!blank.empty())
      throw CommandError(ExitStatus::WrongUse, "--blank: a document has its blank already");
    RefuseFontOptions(invocation);
    return OrEnd(ExitStatus::BadInput, OpenDocumentFile(path));
  }
  OpenedFile file = NewDocument(format, invocation);
  TemplateSource source = SourceOf(path);
  source.allowOutside = invocation.Has(OptionId::AllowOutside);
  source.records = invocation.command == CommandId::Import && invocation.Has(OptionId::Json);
  source.strict = invocation.Has(OptionId::Strict);
  OrEndByCode(ExitStatus::NotInstalled, ImportTemplate(source, file));
  return file;
}

}  // namespace rastrel::cli
