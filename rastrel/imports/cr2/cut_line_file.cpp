#include "rastrel/imports/cr2/cut_line_file.h"

#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/inside.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/xml/layer.h"

namespace rastrel::imports {
namespace {

std::wstring ImportDirectory() {
  host::Application* const application = host::GetHost().GetApplication();
  return application != nullptr ? application->LoadBaseDir() : CBaseDir(PATH_TEMP);
}

}  // namespace

std::wstring SaveCutLineForImport(const XmlNode& svg) {
  std::wstring path = ImportDirectory() + L"\\cutline.svg";
  if (!SaveNodeXml(svg, path))
    CAppLog::Instance().Printf(L"[Import] the cut line can't be written to %s", path.c_str());
  return path;
}

std::wstring SaveCutLineBeside(const XmlNode& svg, std::wstring_view templatePath) {
  const std::wstring directory = os::SplitPath(templatePath).directory;
  std::wstring path = directory + L"cutline.svg";
  // A link would lead the text over another file, and opening a pipe would wait for its reader.
  const bool isFree =
      !os::ForeignBelow(directory.empty() ? L"." : directory, L"/cutline.svg").has_value();
  if (isFree && SaveNodeXml(svg, path)) return path;
  return SaveCutLineForImport(svg);
}

}  // namespace rastrel::imports
