#include "rastrel/conversion/cut/cut_source.h"

#include "rastrel/cfm/directories.h"
#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/conversion/cut/cut_lines.h"
#include "rastrel/conversion/cut/resolution_limit.h"
#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/conversion/postscript_files.h"
#include "rastrel/conversion/temporary_names.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/undo_step.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::conversion {

namespace {

using host::ObjectHandle;

// The path without its extension.
std::wstring StemOf(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  return parts.drive + parts.directory + parts.name;
}

void Remove(const std::wstring& path) { static_cast<void>(os::RemoveFile(path)); }

// One conversion of one object. The files that it leaves are a contract: generate_cut_data.h.
class CutRun {
 public:
  CutRun(CutSource& source, host::ObjectStore& store, int resolution)
      : m_Source(source), m_Store(store), m_Resolution(resolution) {}

  ObjectHandle Run(const std::wstring& path, bool withPreview) {
    if (!MakeFiles(path)) return 0;
    CQProgressDlg progress(m_File.c_str(), nullptr);
    progress.DoModal();
    if (progress.IsCancelled()) {
      if (!KeepsPostScriptFiles()) {
        DeleteDirectory(Product(L".cfm").c_str());
        Remove(m_File);
      }
      return 0;
    }
    ObjectHandle result = ReadCutLines();
    if (withPreview && !TakePreview(result)) return 0;
    if (result == 0) return 0;
    m_Store.DBApplyTM(result, {.tx = m_Place.x, .ty = m_Place.y});
    m_Store.DBSelect(result);
    return result;
  }

 private:
  // A file that the queue program makes of the temporary file.
  [[nodiscard]] std::wstring Product(const wchar_t* ending) const {
    return StemOf(m_File) + ending;
  }

  bool MakeFiles(const std::wstring& path) {
    if (!MakeRipTempName(m_File, m_Source.GetExtension(path).c_str())) return false;
    m_File = os::LowerAscii(m_File);
    if (!m_Source.MakeFile(path, m_File)) return false;
    m_Place = m_Source.GetPlace();
    m_Cut = m_Source.GetCutData();
    m_HalfCut = m_Source.GetHalfCutData();
    return WriteHeader();
  }

  // An object with a side file is converted without a header, too.
  bool WriteHeader() {
    const CutSource::Header header = m_Source.GetHeader();
    std::wstring file = m_File;
    if (header.inSideFile) {
      file = Product(L".jhdr");
      static_cast<void>(os::CreateForWriting(file, os::Access::Private));
    }
    const PageSize page{.height = m_Place.height, .width = m_Place.width};
    const int resolution = LimitedResolution(m_Place.width / host::CentimetresPerInch,
                                             m_Place.height / host::CentimetresPerInch,
                                             m_Resolution, header.belowLimit);
    if (WriteJobHeader(file.c_str(), header.hasPageSize ? &page : nullptr, &m_Cut, &m_HalfCut,
                       &resolution))
      return true;
    if (!KeepsPostScriptFiles()) Remove(file);
    return header.inSideFile;
  }

  ObjectHandle ReadCutLines() {
    if (m_Cut.enabled == 0 && m_HalfCut.enabled == 0) return 0;
    const std::wstring archive = Product(L".cut");
    if (!os::Exists(archive)) return 0;
    CCutObjects objects;
    // One that can't be read is an empty list, and goes as well.
    static_cast<void>(ReadCutArchive(archive, objects));
    Remove(archive);
    return BuildCutLines(objects, m_Cut, &m_HalfCut);
  }

  // False if there is no bitmap, which ends the run: objects that were made stay with the host.
  bool TakePreview(ObjectHandle& result) {
    const std::wstring bitmap = Product(L"_Color.bmp");
    if (!os::Exists(bitmap)) {
      CAppLog::Instance().Printf(L"[CLQ] could not access the bmp file: %s", bitmap);
      if (!KeepsPostScriptFiles()) Remove(m_File);
      return false;
    }
    if (m_Source.GetItem().CreatePreviewBmp(bitmap.c_str()) == 0) {
      CAppLog::Instance().Printf(L"[CLQ] could not create preview from bmp file: %s", bitmap);
      if (result != 0) m_Store.DBDestroyObject(result);
      result = 0;
    }
    if (!KeepsPostScriptFiles()) {
      DeleteDirectory(Product(L".cfm").c_str());
      Remove(bitmap);
      Remove(m_File);
    }
    return true;
  }

  CutSource& m_Source;
  host::ObjectStore& m_Store;
  int m_Resolution;
  std::wstring m_File;  // the temporary one
  CutSourcePlace m_Place;
  CPS2CutData m_Cut;
  CPS2CutData m_HalfCut;
};

}  // namespace

CutSource::~CutSource() = default;

unsigned long long GenerateCutData(CutSource& source, int resolution, bool withPreview,
                                   const wchar_t* path) {
  if (!os::Exists(CExePaths::Instance().m_QueueExe)) return 0;
  host::ObjectStore* const store = FindCutDocument();
  if (store == nullptr) return 0;
  const host::UndoStep step(*store, L"(*v*)Cutting");
  if (path == nullptr) return 0;
  return CutRun(source, *store, resolution).Run(path, withPreview);
}

}  // namespace rastrel::conversion
