#include "rastrel/printing/child_process.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/printing/command_line.h"

namespace os = rastrel::os;

namespace PrintingThread {

namespace {

std::vector<std::string> EntriesOf(const Args& block) {
  std::vector<std::string> entries;
  for (const char* at = block.Data(); *at != '\0'; at += std::strlen(at) + 1)
    entries.emplace_back(at);
  return entries;
}

bool HasSameName(const std::string& entry, const std::string& other) {
  const std::size_t name = other.find('=') + 1;
  return entry.compare(0, name, other, 0, name) == 0;
}

// The child runs in another directory, where a relative data root is another one.
std::string ForChild(const std::string& entry) {
  constexpr std::string_view DataRoot = "RASTREL_HOME=";
  const bool relative = entry.starts_with(DataRoot) && entry.size() > DataRoot.size() &&
                        entry[DataRoot.size()] != '/';
  return relative ? std::string(DataRoot) + os::DataRoot() : entry;
}

HANDLE OrStandard(HANDLE handle, os::StandardStream stream) {
  return handle == 0 ? os::StandardHandle(stream) : handle;
}

}  // namespace

CCPHelper::CCPHelper(const std::wstring& executable)
    : m_Executable(executable),
      m_hStdInput(os::StandardHandle(os::StandardStream::Input)),
      m_hStdOutput(os::StandardHandle(os::StandardStream::Output)),
      m_hStdError(os::StandardHandle(os::StandardStream::Error)) {
  AddArgument(executable);
  for (const std::string& entry : os::EnvironmentEntries()) m_Environment.Add(ForChild(entry));
}

CCPHelper::~CCPHelper() = default;

void CCPHelper::AddArgument(const std::wstring& text) { m_Arguments.push_back(text); }

void CCPHelper::SetVariable(const std::string& name, const std::string& value) {
  m_Variables.push_back(name + "=" + value.c_str());
}

void CCPHelper::GetCommandLine(std::wstring& target) const {
  for (const std::wstring& argument : m_Arguments)
    target.append(L"\"").append(argument).append(L"\" ");
}

bool CCPHelper::Start() {
  if (m_Environment.Data() == nullptr) {
    CAppLog::Instance().Write("[Print] Low on resources");
    return false;
  }
  // A missing program is the system's to name.
  const auto trusted = os::CheckTrusted(os::ToNative(m_Executable), os::DataRoot());
  if (!trusted && trusted.Error().error == EPERM) {
    CAppLog::Instance().Printf(L"[Print] Couldn't start a program: %s",
                               os::WideFromUtf8(Describe(trusted.Error())));
    return false;
  }
  std::wstring commandLine;
  GetCommandLine(commandLine);
  const auto parts = os::SplitPath(m_Executable);

  os::SpawnRequest request;
  request.executable = os::ToNative(m_Executable);
  for (const std::wstring& argument : rastrel::printing::ArgumentsOfCommandLine(commandLine))
    request.arguments.push_back(os::Utf8FromWide(argument));
  request.environment = EntriesOf(m_Environment);
  for (const std::string& variable : m_Variables) {
    std::erase_if(request.environment,
                  [&](const std::string& entry) { return HasSameName(entry, variable); });
    request.environment.push_back(variable);
  }
  request.directory = os::ToNative(parts.drive + parts.directory);
  request.standardInput = OrStandard(m_hStdInput, os::StandardStream::Input);
  request.standardOutput = OrStandard(m_hStdOutput, os::StandardStream::Output);
  request.standardError = OrStandard(m_hStdError, os::StandardStream::Error);

  const auto child = os::Spawn(request);
  if (!child) {
    CAppLog::Instance().Printf(L"[Print] Couldn't start '%s', error: %i", m_Executable,
                               child.Error().error);
    return false;
  }
  m_hProcess = child->process;
  m_ProcessId = child->id;
  return true;
}

}  // namespace PrintingThread
