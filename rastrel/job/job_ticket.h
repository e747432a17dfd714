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

/// A print job. A host starts a print with it and reads the job's state from it. It is the record
/// (CJobBase), the interface that the pipeline reports to (CJobMessaging), and the owner of the
/// printing thread while one runs.
///
/// Use:
///
///   1. Create it. Fill m_JobName, m_JobData, m_JobFile (SetJobFile), m_Copies and m_Pages.
///   2. OpenLog, if the host wants the job log.
///   3. PrintJob starts the printing thread and returns. Before the first one ask CheckPrintFiles
///      (job/print_check.h): where the application log can't be written, EndPrint never returns.
///   4. Poll m_Status, m_Error and GetProgress. GetPrintThread()->Abort() stops the job.
///   5. EndPrint waits for the thread. Only then may the other fields be changed again.
///
/// All of this is done on one thread, the host's, unless an operation says otherwise. A job that
/// ended well stays at JS_ACTIVE with m_Error 0 until the host resets it (SetDefaults, or m_Status
/// to JS_IDLE). A failed or aborted job is at JS_HOLDING with m_Error set. After EndPrint a job may
/// be reset and printed again. A ticket whose m_CFMFile has entries prints those pages and does not
/// run the RIP.
///
/// Only errors with a code change m_Error. A child's warning or error text goes to the log alone.
class RASTREL_API CJobTicket : public CJobBase, public CJobMessaging {
 public:
  /// An idle job: every field at its default.
  CJobTicket();
  /// Copies every field; only a ticket without a thread may be copied.
  CJobTicket(const CJobTicket&) = default;
  /// The same.
  CJobTicket& operator=(const CJobTicket&) = default;
  /// Waits for a running print, without a time limit.
  ~CJobTicket() override;
  RASTREL_DECLARE_DYNCREATE(CJobTicket)

  /// Reads or writes the ticket's record (docs/formats/job-record.md). Not while it prints. A read
  /// of an unknown version leaves the ticket at JS_RECEIVING with no error. On a failure the
  /// archive's CArchiveException passes through; the ticket is partly filled then, and its status
  /// and error are as before.
  void Serialize(CArchive& archive) override;
  /// Resets the record (CJobBase::SetDefaults) and then the ticket's own fields: no progress, the
  /// log on the standard error stream, no RIP installation, not planar. m_CFMFile stays. Call
  /// EndPrint first: a running thread is not ended but lost.
  void SetDefaults() override;

  /// A new generator of this ticket's prefix, which the caller deletes. Never null.
  virtual PSPrefix* GetPrefix();
  /// Starts the print and returns at once. A job file needs an extension: true, and nothing is
  /// printed, if m_JobFile is unset or its path holds no dot. The thread ends without a report
  /// then, the ticket stays JS_ACTIVE with m_Error 0, and only the application log has the reason
  /// (CPrintingThread::HasEnded is the sign). False, and nothing runs, if the job is not JS_IDLE;
  /// if an earlier print was not ended with EndPrint (the job is held then); or if the thread could
  /// not start. m_Error has the reason of the last if a child program is missing.
  virtual bool PrintJob();
  /// Waits for the printing thread, without a time limit, and deletes it. Does nothing without a
  /// thread. Always true.
  virtual bool EndPrint();

  void Warning(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  void Log(const wchar_t* format, ...) override;

  /// Non-zero: an idle job is held. 0: a held job becomes idle. Anything else changes nothing.
  void HoldJob(int hold);

  /// The percentage done, 0 to 100 as the children report it. `text`, unless null, receives the
  /// latest status sentence. Any thread. The originator is ignored, here and in the next two.
  [[nodiscard]] int GetProgress(JT_ORIGINATOR originator, CString* text) const;
  /// Sets the percentage, and the sentence unless `text` is null. Any thread.
  void SetProgress(JT_ORIGINATOR originator, int percent, const CString* text);
  /// Sets the sentence. Any thread.
  void SetProgressText(JT_ORIGINATOR originator, const CString& text);

  /// Stores the text of m_Error, and returns m_Error. The text has the translation mark "(*v*)"; it
  /// is empty for JTE_NONE.
  JT_ERROR GetErrorText(CString& text) const;
  /// Stores the text of an info code; an empty text for an unknown code.
  void GetInfoText(JT_INFO code, JT_ORIGINATOR originator, CString& text) const;
  /// Stores the text of m_Status. `text` stays as it was for an unknown value.
  void GetStatusText(CString& text) const;

  /// Whether m_CFMFile has entries.
  [[nodiscard]] bool GetCFMFileExists() const;
  /// Whether there is something to print: the job file exists, or m_CFMFile has entries.
  [[nodiscard]] bool IsJobTicketValid();
  /// The sum of the sizes, in bytes, of the files whose argument is not 0: the job file, the pages,
  /// the second file. A missing file counts 0.
  [[nodiscard]] std::int64_t GetSizeOnDisk(int jobFile, int pages, int secondFile);

  /// Sets the function that receives the job log, one line a call, with its line end. Null, the
  /// default, is the standard error stream. The function is called on each thread that logs, and on
  /// several at once; the text is valid during the call only. SetDefaults resets it.
  void OpenLog(void (*log)(const wchar_t* text)) { m_pfnLog = log; }

  /// Sets m_JobFile from a library path, split into directory and name. Slashes of the directory
  /// become backslashes. A path without a directory is in the current one. One without a dot can't
  /// be printed: see PrintJob.
  void SetJobFile(const CString& path);

  /// Makes this a job that installs something in the RIP: it has no prefix and no output, and the
  /// RIP's exit status 1 counts as success. SetDefaults takes it back.
  void SetRIPInstallJob() { m_bRIPInstallJob = true; }
  [[nodiscard]] bool IsRIPInstallJob() const { return m_bRIPInstallJob; }
  /// A number for the host's own use. -1 by default.
  [[nodiscard]] int GetActiveAnimFrame() const { return m_ActiveAnimFrame; }
  void SetActiveAnimFrame(int frame) { m_ActiveAnimFrame = frame; }
  /// The printing thread, from PrintJob to EndPrint, even after it has ended; otherwise null. Owned
  /// by the ticket.
  [[nodiscard]] PrintingThread::CPrintingThread* GetPrintThread() const { return m_pPrintThread; }
  /// Whether the output engine is to write one file for each color plane. False by default.
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
