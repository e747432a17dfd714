#include "rastrel/job/exe_paths.h"

#include <array>
#include <optional>

#include "rastrel/job/singleton.h"
#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

using rastrel::os::Exists;

namespace {

rastrel::job::Singleton<CExePaths>& Holder() {
  static rastrel::job::Singleton<CExePaths> holder;
  return holder;
}

// The program is looked for under a lower-case name and started under a mixed-case one; both meet
// where names are looked up ignoring case.
constexpr const wchar_t* QueueProgramSought = L"jobspool.exe";
constexpr const wchar_t* QueueProgram = L"JobSpool.exe";

constexpr std::uint32_t ConfigurationSize = 256;  // wide characters, terminator included

std::optional<std::wstring> Configured(const wchar_t* section, const wchar_t* key) {
  std::array<wchar_t, ConfigurationSize> buffer{};
  if (GetStringKorvane(section, key, buffer.data(), ConfigurationSize, DS_USER, nullptr) == 0)
    return std::nullopt;
  return std::wstring(buffer.data());
}

}  // namespace

CExePaths& CExePaths::Instance() {
  return Holder().Get([] { new CExePaths; });
}

void CExePaths::DeleteInstance() { Holder().Delete(); }

CExePaths::CExePaths() {
  // First of all: code that the constructor calls may ask for the object.
  Holder().Announce(this);
  TakeModule();
  TakeQueueDirectory();
  m_RipDir = m_QueueDir + L"rip\\";
  const auto module = rastrel::os::SplitPath(m_ModulePath);
  m_ModuleDir = module.drive + module.directory;
  FormPaths();
}

CExePaths::~CExePaths() { Holder().Retract(); }

void CExePaths::TakeModule() {
  m_ModulePath = rastrel::os::FromNative(rastrel::os::ExecutablePath());
  m_ModuleName = rastrel::os::SplitPath(m_ModulePath).name;
}

void CExePaths::TakeQueueDirectory() {
  if (auto directory = Configured(L"Debug", L"CmdlineQpath")) {
    // The name is put directly after the value, so a value without its closing separator never
    // finds the program; it is used all the same unless the second place has it.
    if (!Exists(*directory + QueueProgramSought)) {
      const auto second = Configured(L"local queue", L"path");
      if (second && Exists(*second + L"\\" + QueueProgramSought)) directory = second;
    }
    m_QueueDir = *directory;
    if (!m_QueueDir.empty() && m_QueueDir.back() != L'\\') m_QueueDir += L'\\';
  }
  if (m_QueueDir.empty())
    m_QueueDir = static_cast<std::wstring>(CBaseDir(PATH_PROGRAMS, L"Queue", true)) + L"\\";
}

void CExePaths::FormPaths() {
  m_RipExe = m_RipDir + L"corerast.exe";
  m_QRastExe = m_RipDir + L"qrast.exe";
  m_OdalisExe = m_RipDir + L"coreodalis.exe";
  m_PModesDir = m_RipDir + L"System\\pmodes\\";
  m_OutputDir = m_RipDir + L"System\\c-out\\";
  m_CFMDir = m_RipDir + L"CFM";
  m_QueueExe = m_QueueDir + QueueProgram;
  auto& directories = rastrel::host::GetHost().GetDirectories();
  m_WindowsDir = directories.WindowsDirectory().value_or(L"") + L"\\";
  m_SystemDir = directories.SystemDirectory().value_or(L"") + L"\\";
  m_DriverDir = directories.PrinterDriverDirectory().value_or(L"") + L"\\";
}
