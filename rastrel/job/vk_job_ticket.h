#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/job/job_ticket.h"

class CWnd;

/// Posted to the window of a CVKJobTicket: the job entered a state. First parameter the originator,
/// second what kind of state: JobWindowState or JobWindowEnded. The window reads the values from
/// the ticket.
inline constexpr unsigned JobWindowInfo = 32890;
/// Posted at every report of progress, also of 0. First parameter the originator, second
/// JobWindowState.
inline constexpr unsigned JobWindowProgress = 32891;
/// The kinds.
inline constexpr int JobWindowState = 2;
inline constexpr int JobWindowEnded = 3;

/// The ticket of direct output to a host's window: a preview or planes at a resolution of its own,
/// with cut data kept apart. Without a window it behaves as a CJobTicket.
class RASTREL_API CVKJobTicket : public CJobTicket {
 public:
  /// 72 pixels per inch, scaled, with no window.
  CVKJobTicket();
  CVKJobTicket(const CVKJobTicket&) = default;
  CVKJobTicket& operator=(const CVKJobTicket&) = default;
  ~CVKJobTicket() override;

  /// A new generator of the preview's prefix; the caller deletes it.
  PSPrefix* GetPrefix() override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  using CJobTicket::Error;

  /// Pixels per inch of the output.
  [[nodiscard]] int GetDPI() const { return m_DPI; }
  void SetDPI(int dpi) { m_DPI = dpi; }
  /// The window that hears of the job; not owned, must outlive the print. Null: none.
  void SetWnd(CWnd* window) { m_pWnd = window; }
  /// Whether the scaling of the job's settings applies.
  [[nodiscard]] bool GetScale() const { return m_bScale; }
  void SetScale(bool scale) { m_bScale = scale; }
  /// Whether only cut data is wanted.
  [[nodiscard]] bool IsCutOnly() const { return m_bCutOnly; }
  void SetCutOnly(bool cutOnly) { m_bCutOnly = cutOnly; }

 private:
  std::int32_t m_DPI = 72;
  CWnd* m_pWnd = nullptr;
  bool m_bScale = true;
  bool m_bCutOnly = false;
};
