#pragma once

#include "rastrel/export.h"
#include "rastrel/job/status.h"

/// The interface through which the pipeline reports a job. The printing thread and the readers of
/// the children's standard error call it, each on its own thread, so an implementation must be
/// thread-safe. It must return soon and must not throw. A text is valid during the call only. The
/// order of the virtual operations is part of the binary interface.
class RASTREL_API CJobMessaging {
 public:
  /// A child's warning, as the child wrote it.
  virtual void Warning(const wchar_t* text, JT_ORIGINATOR originator) = 0;
  /// A child's error without a code, as the child wrote it.
  virtual void Error(const wchar_t* text, JT_ORIGINATOR originator) = 0;
  /// An error with a code.
  virtual void Error(JT_ERROR code, JT_ORIGINATOR originator) = 0;
  /// The job entered a step, or a child a state.
  virtual void Info(JT_INFO code, JT_ORIGINATOR originator) = 0;
  /// The percentage done, as the child reports it.
  virtual void Progress(unsigned short percent, JT_ORIGINATOR originator) = 0;
  /// One line for the job log, formatted by the rules of rastrel::job::FormatVariableList.
  virtual void Log(const wchar_t* format, ...) = 0;

 protected:
  CJobMessaging() = default;
  CJobMessaging(const CJobMessaging&) = default;
  CJobMessaging& operator=(const CJobMessaging&) = default;
  ~CJobMessaging() = default;
};
