#pragma once

#include <string>

/// Every path of the program family, derived once from the queue directory. No other code builds
/// them. Texts are library paths (platform/os/path.h), directories with their closing backslash
/// unless a line says otherwise. Read-only after construction, so any thread may read.
class CExePaths {
 public:
  /// The one object, made at first use. Configuration is read then and never again.
  static CExePaths& Instance();
  /// Deletes the object, if there is one; the next use makes a new one. No other thread may use it.
  static void DeleteInstance();

  virtual ~CExePaths();
  CExePaths(const CExePaths&) = delete;
  CExePaths& operator=(const CExePaths&) = delete;

  std::wstring m_RipDir;      ///< log files, temporary names, the RIP and its system
  std::wstring m_ModuleDir;   ///< directory of the host's executable
  std::wstring m_OutputDir;   ///< pages of the directory "default"
  std::wstring m_RipExe;      ///< the RIP
  std::wstring m_QRastExe;    ///< the bitmap RIP
  std::wstring m_OdalisExe;   ///< the output engine
  std::wstring m_PModesDir;   ///< print modes
  std::wstring m_WindowsDir;  ///< a bare backslash where the system has no such directory
  std::wstring m_SystemDir;   ///< the same
  std::wstring m_DriverDir;   ///< the same
  std::wstring m_ModulePath;  ///< the host's executable
  std::wstring m_ModuleName;  ///< its file name without extension
  std::wstring m_CFMDir;      ///< spool root; the only directory here without a closing backslash
  std::wstring m_QueueDir;    ///< the directory that most others are in
  std::wstring m_QueueExe;    ///< the queue program

 private:
  CExePaths();
  void TakeModule();
  void TakeQueueDirectory();
  void FormPaths();
};
