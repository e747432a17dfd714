#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/job/job_ticket.h"

class CWnd;

/// The message that a CVKJobTicket posts to its window when the job enters a state. The first
/// parameter is the originator, the second JobWindowState or JobWindowEnded. The window reads the
/// state itself from the ticket.
inline constexpr unsigned JobWindowInfo = 32890;
/// The message that is posted at every report of progress, even of 0 percent. The first parameter
/// is the originator, the second JobWindowState.
inline constexpr unsigned JobWindowProgress = 32891;
/// Second parameter: the job goes on, or (after a state message) it has ended.
inline constexpr int JobWindowState = 2;
inline constexpr int JobWindowEnded = 3;  ///< the job has ended

/// The ticket of direct output to a host's window: a preview, or planes, at a resolution of its own
/// and with separate cut data. Without a window it reports as a CJobTicket does. The setters are
/// called before PrintJob; none of the four settings is part of the record (Serialize).
class RASTREL_API CVKJobTicket : public CJobTicket {
 public:
  /// 72 pixels per inch, scaled, cut data and artwork, no window.
  CVKJobTicket();
  CVKJobTicket(const CVKJobTicket&) = default;
  CVKJobTicket& operator=(const CVKJobTicket&) = default;
  ~CVKJobTicket() override;

  /// A new generator of the preview's prefix, which the caller deletes. Never null.
  PSPrefix* GetPrefix() override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  using CJobTicket::Error;

  /// The output's resolution in pixels per inch.
  [[nodiscard]] int GetDPI() const { return m_DPI; }
  void SetDPI(int dpi) { m_DPI = dpi; }
  /// The window that the messages are posted to, on the threads that report. Not owned; it must
  /// outlive the print. Null, the default: none.
  void SetWnd(CWnd* window) { m_pWnd = window; }
  /// Whether the scaling of m_JobData is applied. True by default.
  [[nodiscard]] bool GetScale() const { return m_bScale; }
  void SetScale(bool scale) { m_bScale = scale; }
  /// Whether only cut data is wanted, without the artwork. False by default.
  [[nodiscard]] bool IsCutOnly() const { return m_bCutOnly; }
  void SetCutOnly(bool cutOnly) { m_bCutOnly = cutOnly; }

 private:
  std::int32_t m_DPI = 72;
  CWnd* m_pWnd = nullptr;
  bool m_bScale = true;
  bool m_bCutOnly = false;
};
