#include "rastrel/cfm/cfm_page.h"

#include "rastrel/cfm/cfm2_text.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/path.h"

namespace PrintingThread {

namespace {
constexpr const wchar_t* DefaultId = L"QueueCMF2Generator";
}  // namespace

CCFMPage::CCFMPage() : m_Id(DefaultId) { SetDirectory(L"default"); }

CCFMPage::CCFMPage(const std::wstring& directory, const std::wstring& title)
    : m_Id(DefaultId), m_Title(title) {
  SetDirectory(directory);
}

CCFMPage::~CCFMPage() = default;

void CCFMPage::SetDirectory(const std::wstring& text) {
  std::wstring directory(rastrel::cfm::Trimmed(text));
  if (directory == L"default") directory = CExePaths::Instance().m_OutputDir;
  m_Directory = rastrel::os::WithClosingBackslash(std::move(directory));
}

}  // namespace PrintingThread
