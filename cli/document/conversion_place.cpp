#include "cli/document/conversion_place.h"

#include <utility>

#include "cli/console/exit_status.h"
#include "cli/input/standard_input.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {

ConversionPlace::ConversionPlace(JobDirectory directory) : m_Directory(std::move(directory)) {
  // The log opens at its first use, in the RIP's directory of that moment.
  CAppLog::Instance();
  CExePaths& paths = CExePaths::Instance();
  m_RipDirectory = std::exchange(paths.m_RipDir, os::FromNative(m_Directory.Path()) + L"\\");
}

ConversionPlace::~ConversionPlace() { LeaveRipDirectory(); }

void ConversionPlace::LeaveRipDirectory() {
  if (!m_RipDirectory.empty())
    CExePaths::Instance().m_RipDir = std::exchange(m_RipDirectory, std::wstring());
}

InputFile ConversionPlace::Inspect(const Invocation& invocation) const {
  std::string path = invocation.operand;
  if (path == StandardInputOperand)
    path = OrEnd(ExitStatus::BadInput,
                 TakeStandardInput(Path(), invocation.ValueOr(OptionId::Title, "")));
  return OrEnd(ExitStatus::BadInput, InspectInput(path, "convert"));
}

}  // namespace rastrel::cli
