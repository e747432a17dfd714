#pragma once

#include <cstdint>
#include <deque>

#include "rastrel/export.h"
#include "rastrel/job/cfm_file.h"
#include "rastrel/job/job_data.h"
#include "rastrel/job/job_file.h"
#include "rastrel/job/status.h"
#include "rastrel/platform/mfc/date_time.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/os/shared_word.h"

/// A job as a record: identity, settings, files, status. The host reads and writes the fields
/// directly; while the job prints it may read m_Status and m_Error, and leaves the rest alone.
class RASTREL_API CJobBase : public CObject {
 public:
  /// Every field at its default.
  CJobBase();
  CJobBase(const CJobBase&) = default;
  CJobBase& operator=(const CJobBase&) = default;
  ~CJobBase() override;

  /// The class of CJobBase; it can't be created dynamically.
  CRuntimeClass* GetRuntimeClass() const override;
  static CRuntimeClass classCJobBase;

  /// Resets to the defaults given here: settings, names, status, copies, error, creation time
  /// (now), the directory and name of both files, the selected pages. m_CFMFile stays.
  virtual void SetDefaults();

  CString m_JobName;                                      ///< the job's label; quoted in log lines
  CString m_JobNote;                                      ///< for the host's own use
  rastrel::os::SharedWord<JT_ERROR> m_Error = JTE_NONE;   ///< the last error
  rastrel::os::SharedWord<JT_STATUS> m_Status = JS_IDLE;  ///< the job's state
  std::int32_t m_Copies = 1;                              ///< collated copies of all pages
  CJobData m_JobData;                                     ///< all settings
  std::deque<std::int32_t> m_Pages;  ///< selected pages, counted from 0; empty: all
  CJTSFile m_JobFile;                ///< the PostScript file
  CJTSFile m_SecondFile;             ///< kept and measured, never opened
  CCFMFile m_CFMFile;                ///< the rendered pages, if there are any
  COleDateTime m_Created;            ///< local time of the last reset
};
