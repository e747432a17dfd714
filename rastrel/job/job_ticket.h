#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/job/job_base.h"
#include "rastrel/job/job_messaging.h"
#include "rastrel/job/shared_text.h"

class PSPrefix;
namespace PrintingThread {
class CPrintingThread;
}

/// The one object through which a host asks for a print and hears of it: the record (CJobBase), the
/// interface that the pipeline reports to (CJobMessaging), and the printing thread while one runs.
///
/// Use: create it; fill m_JobName, m_JobData, m_JobFile, m_Copies and m_Pages; OpenLog; PrintJob;
/// poll GetProgress, GetStatusText and GetErrorText, or stop it with GetPrintThread()->Abort();
/// EndPrint. All of this on one thread, the host's. A job that ended well stays at JS_ACTIVE with
/// m_Error 0 until the host resets it; a failed or aborted one is at JS_HOLDING with m_Error set.
/// After EndPrint it may be reset and printed again. A ticket whose m_CFMFile has entries prints
/// those pages and never runs the RIP.
///
/// A text error or a warning of a child leaves no mark here; only coded errors do.
class RASTREL_API CJobTicket : public CJobBase, public CJobMessaging {
 public:
  /// An idle job: every field at its default.
  CJobTicket();
  /// Copies every field; only a ticket without a thread may be copied.
  CJobTicket(const CJobTicket&) = default;
  /// The same.
  CJobTicket& operator=(const CJobTicket&) = default;
  /// Waits for a running print without a limit.
  ~CJobTicket() override;
  RASTREL_DECLARE_DYNCREATE(CJobTicket)

  /// Reads or writes the ticket; docs/formats/job-record.md has the bytes. CArchiveException passes
  /// through and leaves a partly filled ticket, whose status and error are as they were.
  void Serialize(CArchive& archive) override;
  /// The record's defaults, then those of the fields below. Ends no thread: m_pPrintThread is only
  /// forgotten, so call EndPrint first. m_CFMFile stays.
  void SetDefaults() override;

  /// A new generator of this ticket's prefix; the caller deletes it. Never null.
  virtual PSPrefix* GetPrefix();
  /// Starts to print. False, and nothing runs, if the job is not idle, if a former print was never
  /// ended (which also holds the job), or if the thread refused: m_Error tells then.
  virtual bool PrintJob();
  /// Waits for the printing thread without a limit and forgets it. Always true.
  virtual bool EndPrint();

  void Warning(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  void Log(const wchar_t* format, ...) override;

  /// Non-zero: an idle job is held. 0: a held job becomes idle. Anything else changes nothing.
  void HoldJob(int hold);

  /// Percentage, 0 to 100 as the children report it; `text`, if given, receives the latest status
  /// sentence. Any thread. The originator is not looked at, here and in the next two.
  [[nodiscard]] int GetProgress(JT_ORIGINATOR originator, CString* text) const;
  /// Sets the percentage, and the sentence if one is given.
  void SetProgress(JT_ORIGINATOR originator, int percent, const CString* text);
  /// Sets the sentence.
  void SetProgressText(JT_ORIGINATOR originator, const CString& text);

  /// The text of m_Error, with its translation mark; returns m_Error. Empty for no error.
  JT_ERROR GetErrorText(CString& text) const;
  /// The text of an info code; empty for a code outside the vocabulary.
  void GetInfoText(JT_INFO code, JT_ORIGINATOR originator, CString& text) const;
  /// The text of m_Status; `text` stays as it was for a value outside the vocabulary.
  void GetStatusText(CString& text) const;

  /// Whether m_CFMFile has entries.
  [[nodiscard]] bool GetCFMFileExists() const;
  /// Whether there is something to print: the job file exists, or pages do.
  [[nodiscard]] bool IsJobTicketValid();
  /// Sum in bytes of what the arguments ask for with a non-zero value: the job file, the pages, the
  /// second file. What is missing counts 0.
  [[nodiscard]] std::int64_t GetSizeOnDisk(int jobFile, int pages, int secondFile);

  /// Where job log lines go, each with its line end; null: the standard error stream. The function
  /// is called on every thread that logs, several at once. Nothing is opened.
  void OpenLog(void (*log)(const wchar_t* text)) { m_pfnLog = log; }

  /// Sets m_JobFile from a path: directory and name apart, slashes of the directory as backslashes,
  /// no directory meaning the present one.
  void SetJobFile(const CString& path);

  /// Makes this a job that installs something in the RIP: no prefix, no output.
  void SetRIPInstallJob() { m_bRIPInstallJob = true; }
  [[nodiscard]] bool IsRIPInstallJob() const { return m_bRIPInstallJob; }
  /// Kept for the host.
  [[nodiscard]] int GetActiveAnimFrame() const { return m_ActiveAnimFrame; }
  void SetActiveAnimFrame(int frame) { m_ActiveAnimFrame = frame; }
  /// The thread from PrintJob to EndPrint, also when it has ended; else null. Owned by the ticket.
  [[nodiscard]] PrintingThread::CPrintingThread* GetPrintThread() const { return m_pPrintThread; }
  /// Asks the output engine for one file a color plane.
  [[nodiscard]] bool GetPlanar() const { return m_bPlanar; }
  void SetPlanar(bool planar) { m_bPlanar = planar; }

 private:
  void Load(CArchive& archive);
  void UseSpoolDirectory();

  rastrel::os::SharedWord<std::int32_t> m_Progress = 0;
  rastrel::job::SharedText m_ProgressText;
  void (*m_pfnLog)(const wchar_t* text) = nullptr;
  bool m_bRIPInstallJob = false;
  std::int32_t m_ActiveAnimFrame = -1;
  PrintingThread::CPrintingThread* m_pPrintThread = nullptr;
  bool m_bPlanar = false;
};
