#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/platform/host/dialog_preview.h"
#include "rastrel/platform/mfc/window.h"

namespace rastrel::cli {

/// The preview of a conversion's dialog (CPS2BmpDlg): the page at the screen's resolution with the
/// cut line over it. The queue program draws it, as it draws the bitmap itself, on a private copy
/// in the RIP's directory, where nothing of it stays. One run at a time; of the requests that come
/// meanwhile, the last one follows. Uses the host in force, on its thread.
class PagePreview : public host::DialogPreview {
 public:
  /// Native path of a PostScript or EPS file.
  explicit PagePreview(const std::string& path);
  /// Ends a run.
  ~PagePreview() override;

  void Request(host::DialogView& view, int width, int height) override;
  [[nodiscard]] HANDLE GetReadyHandle() const override { return m_Ended.GetMessageHandle(); }
  [[nodiscard]] std::optional<host::PreviewPicture> Take() override;

 private:
  class Ticket;
  // The values of one picture.
  struct Wanted {
    std::optional<PageSize> page;  // none: the file's own
    CPS2CutData cut;               // with the picture's resolution
    std::wstring header;           // of the job; the same one makes the same picture
  };

  [[nodiscard]] static Wanted WantedFrom(host::DialogView& view, int width, int height);
  void Begin();
  [[nodiscard]] bool MakeCopy();
  [[nodiscard]] host::PreviewPicture Load() const;
  void Clear();
  [[nodiscard]] std::wstring PathWith(const wchar_t* suffix) const;

  std::wstring m_Path;
  CWnd m_Ended;  // a message for each run that has ended
  std::unique_ptr<Ticket> m_Ticket;
  std::wstring m_File;  // the copy of the run, or empty
  Wanted m_Drawn;       // of the run
  std::optional<Wanted> m_Next;
};

}  // namespace rastrel::cli
