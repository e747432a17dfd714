#pragma once

#include "rastrel/export.h"
#include "rastrel/job/status.h"

/// The narrow interface that the pipeline reports a job through. The printing thread and the
/// readers of the children's standard error call it, each on its own thread, so an implementation
/// must stand calls from several threads. The order of the virtual operations is the interface's.
class RASTREL_API CJobMessaging {
 public:
  /// A warning in a child's own words. `text` is borrowed for the call.
  virtual void Warning(const wchar_t* text, JT_ORIGINATOR originator) = 0;
  /// An error in a child's own words. `text` is borrowed for the call.
  virtual void Error(const wchar_t* text, JT_ORIGINATOR originator) = 0;
  /// An error by number.
  virtual void Error(JT_ERROR code, JT_ORIGINATOR originator) = 0;
  /// The job or a child entered a state.
  virtual void Info(JT_INFO code, JT_ORIGINATOR originator) = 0;
  /// Percentage done.
  virtual void Progress(unsigned short percent, JT_ORIGINATOR originator) = 0;
  /// One line for the job log, formatted by the rules of rastrel::job::FormatVariableList.
  virtual void Log(const wchar_t* format, ...) = 0;

 protected:
  CJobMessaging() = default;
  CJobMessaging(const CJobMessaging&) = default;
  CJobMessaging& operator=(const CJobMessaging&) = default;
  ~CJobMessaging() = default;
};
