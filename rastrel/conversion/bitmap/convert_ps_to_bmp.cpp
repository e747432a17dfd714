#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"

#include <memory>
#include <string>
#include <string_view>

#include "rastrel/cfm/directories.h"
#include "rastrel/conversion/bitmap/bitmap_settings.h"
#include "rastrel/conversion/bitmap/load_cfm_bitmap.h"
#include "rastrel/conversion/bitmap/queue_program.h"
#include "rastrel/conversion/cut/cut_lines.h"
#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/conversion/postscript_files.h"
#include "rastrel/conversion/temporary_names.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/host/undo_step.h"
#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace conversion = rastrel::conversion;
namespace host = rastrel::host;
namespace os = rastrel::os;

namespace {

constexpr std::wstring_view PostScriptSuffix = L".ps";

template <typename... Arguments>
void Log(const wchar_t* format, const Arguments&... arguments) {
  CAppLog::Instance().Printf(format, arguments...);
}

// One conversion, once its dialog was answered. Its files have one stem, a temporary name:
//
//   STEM.ps    the file with a job header
//   STEM.cfm   the directory of the page, made by the queue program
//   STEM.cut   the archive of the cut lines, made by the queue program
class BitmapConversion {
 public:
  BitmapConversion(host::Application& application, host::ObjectStore& store, const wchar_t* source,
                   const PS2BmpParams& params)
      : m_Application(application), m_Store(store), m_Source(source), m_Params(params) {}

  void Run(int kind) {
    AllowUpdate(false);
    BeginWaitCursor();
    if (!MakePostScript(kind)) return AllowUpdate(true);
    // From here on the view stays as it is but for a conversion that reaches the document.
    if (!AddHeader() || !Draw()) return;
    host::ObjectHandle bitmap = 0;
    if (!conversion::LoadCfmBitmap(PathWith(L".cfm"), m_Params, bitmap)) return;
    RemoveDrawn();
    const host::ObjectHandle cutLines =
        m_Params.cut.enabled != 0 ? conversion::TakeCutLines(PathWith(L".cut"), m_Params.cut) : 0;
    AllowUpdate(true);
    m_Store.DBSelect(bitmap);
    if (cutLines == 0) return;
    m_Store.DSAddObject(cutLines);
    m_Store.DBSelect(cutLines);
  }

 private:
  void AllowUpdate(bool allowed) {
    if (CVelumark5View* const view = m_Application.UIGetActiveView())
      view->SetUpdateAllowed(allowed);
  }

  [[nodiscard]] std::wstring PathWith(std::wstring_view suffix) const {
    return m_File.substr(0, m_File.size() - PostScriptSuffix.size()).append(suffix);
  }

  bool MakePostScript(int kind) {
    if (!conversion::MakeRipTempName(m_File, PostScriptSuffix.data())) {
      Log(L"[CLQ] there is no free name for a conversion's file");
      return false;
    }
    m_File = os::LowerAscii(m_File);
    switch (kind) {
      case PS2BMP_EPS: return WriteEps();
      case PS2BMP_POSTSCRIPT: return CopyPostScript();
      default: break;
    }
    Log(L"[CLQ] a file of kind %i can't be converted to a bitmap: %s", kind, m_Source);
    return false;
  }

  bool CopyPostScript() {
    const auto copied = os::CopyFileOver(m_Source, m_File, os::Access::Private);
    if (!copied)
      Log(L"[CLQ] the file to convert can't be copied: %s", rastrel::Describe(copied.Error()));
    return static_cast<bool>(copied);
  }

  bool WriteEps() {
    const std::unique_ptr<CGenericEPS> eps = m_Application.NewGenericEPS(m_Source.c_str());
    if (!eps) {
      Log(L"[CLQ] the host can't open the EPS file: %s", m_Source);
      return false;
    }
    if (eps->IsDCSObject()) {
      host::GetHost().GetDialogViews().ShowMessage(
          nullptr, host::TranslatedText(L"(*v*)DCS-EPS file cannot be converted to a bitmap."),
          host::TranslatedText(L"(*v*)Error"));
      return false;
    }
    const auto written = conversion::WriteAsPostScript(*eps, m_File);
    if (!written)
      Log(L"[CLQ] the EPS file can't be written as PostScript: %s: %s", m_Source,
          rastrel::Describe(written.Error()));
    return static_cast<bool>(written);
  }

  bool AddHeader() {
    const PageSize page{.height = m_Params.height, .width = m_Params.width};
    const CPS2CutData noHalfCut;
    const int resolution = m_Params.cut.resolution;
    if (conversion::WriteJobHeader(m_File.c_str(), &page, &m_Params.cut, &noHalfCut, &resolution))
      return true;
    Log(L"[CLQ] the job header can't be written: %s", m_File);
    return false;
  }

  bool Draw() {
    CQProgressDlg progress(m_File.c_str(), nullptr);
    progress.DoModal();
    const std::wstring pages = PathWith(L".cfm");
    if (progress.IsCancelled()) {
      static_cast<void>(DeleteDirectory(pages.c_str()));
      static_cast<void>(os::RemoveFile(m_File));
      return false;
    }
    if (os::IsDirectory(pages)) return true;
    Log(L"[CLQ] the queue program made no page: %s", pages);
    return false;
  }

  // With a cut line the PostScript stays.
  void RemoveDrawn() const {
    if (conversion::KeepsPostScriptFiles()) return;
    static_cast<void>(DeleteDirectory(PathWith(L".cfm").c_str()));
    if (m_Params.cut.enabled == 0) static_cast<void>(os::RemoveFile(m_File));
  }

  host::Application& m_Application;
  host::ObjectStore& m_Store;
  std::wstring m_Source;
  std::wstring m_File;
  const PS2BmpParams& m_Params;
};

}  // namespace

int ConvertPStoBmp(wchar_t* path, int /*unused1*/, int kind, double /*unused2*/, double /*unused3*/,
                   unsigned long long* /*unused4*/) {
  if (IsQAvailable() == 0 || path == nullptr) return 0;
  host::ObjectStore* const store = host::GetHost().GetObjectStore();
  host::Application* const application = host::GetHost().GetApplication();
  if (store == nullptr || application == nullptr) {
    Log(L"[CLQ] the host has no document to convert into");
    return 0;
  }
  host::UndoStep step(*store, L"(*v*)Converting to Bitmap");
  PS2BmpParams params;
  if (!conversion::AskBitmapParams(path, params)) return 1;
  if (params.mode == PS2BMP_NO_CONVERSION) {
    // Nothing more is asked of the host, not even the end of the step.
    step.LeaveOpen();
    return 0;
  }
  BitmapConversion(*application, *store, path, params).Run(kind);
  return 1;
}
