#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "rastrel/platform/mfc/sync.h"
#include "rastrel/printing/child_supervisor.h"
#include "rastrel/printing/stderr_parser.h"

namespace PrintingThread {

/// The queue program's measurements of a page; docs/formats/page-records.md has its lines. A value
/// that it did not report stays at its initial value. Lengths are in inches.
struct QRastPageInfo {
  std::wstring name;
  std::int32_t bits = -1;  ///< bits a pixel
  std::int32_t npls = -1;  ///< number of planes
  std::int32_t xdpi = -1;  ///< dots per inch
  std::int32_t ydpi = -1;  ///< dots per inch
  float bboxX = -1.0F;
  float bboxY = -1.0F;
  float bboxWidth = -1.0F;
  float bboxHeight = -1.0F;
  std::int32_t mavl = -1;                               ///< the queue program's
  std::array<std::int32_t, 4> bmap = {-1, -1, -1, -1};  ///< the queue program's
};

/// Called with each line of the queue program's standard error but empty ones, on a thread of the
/// reader's; no call is under way when the run is over.
using QRastLineHandler = std::function<void(const std::wstring& line)>;

/// Reads the records out of the queue program's standard error. Every line goes to the application
/// log and to the handler, if there is one; a line that is no record is otherwise ignored.
class CQRastStderrParser : public CBaseStderrParser {
 public:
  /// Neither is owned. The record may be read once Wait has returned.
  CQRastStderrParser(HANDLE* pipe, QRastPageInfo* pageInfo, QRastLineHandler onLine = {});
  ~CQRastStderrParser() override;
  void ParseLine(const std::wstring& line) override;

 private:
  void ParseRecord(std::wstring_view record);

  QRastPageInfo* m_pPageInfo;
  QRastLineHandler m_OnLine;
};

/// Runs the queue program once on a file, in its measuring mode. Serves for one run, on the stack
/// of its caller.
class CQRast : public rastrel::printing::ChildSupervisor {
 public:
  /// The file's path and the record are borrowed. So is `stop`, which may be null: a count of it
  /// ends the run.
  CQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop = nullptr,
         QRastLineHandler onLine = {});
  ~CQRast() override;
  /// Blocks until the child has ended and all its lines are read. True if it ended with status 0
  /// or 1, or was terminated because the wait failed; false otherwise, and if it was stopped. The
  /// record has the reported values in either case. Failures go to the application log.
  [[nodiscard]] bool Run();

 private:
  void AddArguments();
  void WaitForEnd();
  void LogExitStatus() override;

  static void OnStopped(CBBasePrintingThread& supervisor);

  const wchar_t* m_pFile;
  QRastPageInfo* m_pPageInfo;
  CSemaphore* m_pStop;
  QRastLineHandler m_OnLine;
  bool m_bStopped = false;
};

/// Measures a file: CQRast, once it is sure that there is a queue program. Non-zero if that went
/// well. 0 at once for a null path, or if the program is missing (logged).
[[nodiscard]] int RunQRast(const wchar_t* file, QRastPageInfo* pageInfo, CSemaphore* stop = nullptr,
                           const QRastLineHandler& onLine = {});

}  // namespace PrintingThread
