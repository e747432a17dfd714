#include "cli/document/page_preview.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>
#include <variant>

#include "cli/document/preview_picture.h"
#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/conversion/temporary_names.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/host/length_units.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t MaxPictureBytes = std::uint64_t{3} * MaxPreviewSide * MaxPreviewSide + 100;
constexpr std::uint64_t MaxArchiveBytes = std::uint64_t{64} << 20;
constexpr int ResolutionWithoutSize = 36;  // of a file whose size is not known yet
constexpr const wchar_t* Suffix = L".ps";

double NumberOf(host::DialogView& view, int control) {
  const host::ControlValue value = view.GetValue(control);
  const auto* const number = std::get_if<double>(&value);
  return number != nullptr ? *number : 0;
}

bool IsChecked(host::DialogView& view, int control) {
  const host::ControlValue value = view.GetValue(control);
  const auto* const checked = std::get_if<bool>(&value);
  return checked != nullptr && *checked;
}

void SetPicked(host::DialogView& view, int control, CVKFullColor& color) {
  const host::ControlValue value = view.GetValue(control);
  const auto* const picked = std::get_if<host::PickedColor>(&value);
  if (picked == nullptr) return;
  const auto& [a, b, c, d] = picked->components;
  if (picked->type == host::PickerType::Rgb)
    color.SetColor(a, b, c, COLORSPACE_RGB);
  else
    color.SetColor(a, b, c, d, COLORSPACE_CMYK);
}

CPS2CutData CutFrom(host::DialogView& view) {
  CPS2CutData cut;
  if (!IsChecked(view, CPS2BmpDlg::CutLineCheckBox)) return cut;
  cut.enabled = 1;
  if (IsChecked(view, CPS2BmpDlg::NamedRadio)) {
    cut.colorKind = CutColorNamed;
    const host::ControlValue value = view.GetValue(CPS2BmpDlg::ColorNames);
    if (const auto* const name = std::get_if<std::wstring>(&value)) cut.color.SetColorName(*name);
  } else if (IsChecked(view, CPS2BmpDlg::CmykRadio)) {
    cut.colorKind = CutColorCmyk;
    SetPicked(view, CPS2BmpDlg::CmykPicker, cut.color);
  } else {
    SetPicked(view, CPS2BmpDlg::RgbPicker, cut.color);
  }
  return cut;
}

// The largest resolution at which the page has no more pixels.
int ResolutionFor(const PageSize& page, int width, int height) {
  const double fits = std::min(width / page.width, height / page.height) * host::CentimetresPerInch;
  return static_cast<int>(std::clamp(std::floor(fits), 1.0, 1200.0));
}

bool IsDrawable(const PageSize& page, int resolution) {
  const double pixels = std::max(page.width, page.height) / host::CentimetresPerInch * resolution;
  return page.width > 0 && page.height > 0 && pixels <= MaxPreviewSide;
}

}  // namespace

// A run of the queue program, which posts its end.
class PagePreview::Ticket : public CLQTicket {
 public:
  Ticket(const std::wstring& executable, CWnd& ended) : CLQTicket(executable), m_Ended(ended) {}
  ~Ticket() override { Join(); }
  // The log is for the conversion itself, whose warnings the command repeats.
  void Log(const wchar_t* /*format*/, ...) override {}

 protected:
  void OnEnd() override { m_Ended.PostMessage(0, 0, 0); }

 private:
  CWnd& m_Ended;
};

PagePreview::PagePreview(const std::string& path) : m_Path(os::FromNative(path)) {}

PagePreview::~PagePreview() {
  if (m_Ticket) m_Ticket->Abort();
  m_Ticket.reset();
  Clear();
}

PagePreview::Wanted PagePreview::WantedFrom(host::DialogView& view, int width, int height) {
  Wanted wanted;
  wanted.cut = CutFrom(view);
  wanted.cut.resolution = ResolutionWithoutSize;
  const host::LengthUnit unit = host::CurrentLengthUnit();
  const PageSize page{.height = host::ToCentimetres(NumberOf(view, CPS2BmpDlg::HeightEdit), unit),
                      .width = host::ToCentimetres(NumberOf(view, CPS2BmpDlg::WidthEdit), unit)};
  if (page.width > 0 && page.height > 0) {
    wanted.page = page;
    wanted.cut.resolution = ResolutionFor(page, width, height);
  }
  const CPS2CutData none;
  wanted.header = conversion::JobHeaderText(wanted.page ? &*wanted.page : nullptr, &wanted.cut,
                                            &none, &wanted.cut.resolution);
  return wanted;
}

void PagePreview::Request(host::DialogView& view, int width, int height) {
  Wanted wanted = WantedFrom(view, width, height);
  const std::wstring& last = m_Next ? m_Next->header : m_Drawn.header;
  if (wanted.header == last) return;
  m_Next = std::move(wanted);
  if (!m_Ticket) Begin();
}

// Without a run that can be started the message of an end comes all the same.
void PagePreview::Begin() {
  m_Drawn = *std::exchange(m_Next, std::nullopt);
  m_Ticket = std::make_unique<Ticket>(CExePaths::Instance().m_QueueExe, m_Ended);
  const bool canStart = (!m_Drawn.page || IsDrawable(*m_Drawn.page, m_Drawn.cut.resolution)) &&
                        MakeCopy() && m_Ticket->Start(m_File.c_str());
  if (!canStart) m_Ended.PostMessage(0, 0, 0);
}

bool PagePreview::MakeCopy() {
  if (!conversion::MakeRipTempName(m_File, Suffix)) return false;
  m_File = os::LowerAscii(m_File);
  const CPS2CutData none;
  return os::CopyFileOver(m_Path, m_File, os::Access::Private) &&
         conversion::WriteJobHeader(m_File.c_str(), m_Drawn.page ? &*m_Drawn.page : nullptr,
                                    &m_Drawn.cut, &none, &m_Drawn.cut.resolution);
}

std::optional<host::PreviewPicture> PagePreview::Take() {
  bool hasEnded = false;
  while (m_Ended.TakeMessage()) hasEnded = true;
  if (!hasEnded || !m_Ticket) return std::nullopt;
  m_Ticket->Join();
  m_Ticket.reset();
  host::PreviewPicture picture = Load();
  Clear();
  if (m_Next) Begin();
  return picture;
}

host::PreviewPicture PagePreview::Load() const {
  const auto bytes = os::ReadWholeFile(PathWith(L".cfm") + L"/page.ppm", MaxPictureBytes);
  auto picture = bytes ? PictureFromNetpbm(*bytes) : std::nullopt;
  if (!picture) return {.width = 0, .height = 0, .bgra = {}, .note = L"There is no preview."};
  if (m_Drawn.cut.enabled == 0) return *std::move(picture);
  const std::wstring archive = PathWith(L".cut");
  CCutObjects objects;
  try {
    const std::uint64_t size = os::FileSize(archive);
    if (size > 0 && size <= MaxArchiveBytes && !conversion::ReadCutArchive(archive, objects))
      objects.m_Objects.clear();
  } catch (const CArchiveException&) {
    objects.m_Objects.clear();
  }
  DrawCutLines(objects, m_Drawn.cut.resolution, *picture);
  picture->note = objects.m_Objects.empty() ? L"Nothing has the colour of the cut line."
                                            : L"The cut line is drawn in magenta.";
  return *std::move(picture);
}

std::wstring PagePreview::PathWith(const wchar_t* suffix) const {
  return m_File.substr(0, m_File.size() - std::wstring_view(Suffix).size()) + suffix;
}

// The file, and all that the queue program makes of it.
void PagePreview::Clear() {
  if (m_File.empty()) return;
  static_cast<void>(os::RemoveTree(PathWith(L".cfm")));
  for (const std::wstring& file : {m_File, PathWith(L".cut"), PathWith(L"_Color.bmp")})
    static_cast<void>(os::RemoveFile(file));
  m_File.clear();
}

}  // namespace rastrel::cli
