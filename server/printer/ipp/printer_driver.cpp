#include "server/printer/ipp/printer_driver.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/printer/ipp/job_attributes.h"
#include "server/printer/ipp/network_printer.h"
#include "server/printer/ipp/raster_job.h"

namespace rastrel::server {
namespace {

constexpr const char* OwnFormat = "application/postscript";
constexpr std::array OtherFormats{"application/pdf", "image/jpeg", "image/png"};
// Sheets that desktops know, and a roll on which any size within two is had.
constexpr std::array Media{"iso_a4_210x297mm",  "iso_a3_297x420mm",      "iso_a2_420x594mm",
                           "iso_a1_594x841mm",  "iso_a0_841x1189mm",     "na_letter_8.5x11in",
                           "na_ledger_11x17in", "roll_max_1600x50000mm", "roll_min_10x10mm"};
constexpr int UsualResolution = 300;

// The library hands its callbacks no data of their own, and there is one printer a process.
NetworkPrinter* ThePrinter = nullptr;

bool PrintFile(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*) {
  return ThePrinter->RunDocument(job);
}
bool Filter(pappl_job_t* job, pappl_device_t*, void*) { return ThePrinter->RunDocument(job); }

RasterJob& RasterOf(pappl_job_t* job) { return *static_cast<RasterJob*>(::papplJobGetData(job)); }

bool Accept(pappl_job_t* job, const Expected<void>& result) {
  if (!result) ::papplJobSetMessage(job, "%s", Describe(result.Error()).c_str());
  return static_cast<bool>(result);
}

bool StartRaster(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*) {
  auto raster =
      std::make_unique<RasterJob>(ThePrinter->Shop().Spool() + "/raster-" +
                                  std::to_string(::papplPrinterGetID(::papplJobGetPrinter(job))) +
                                  "-" + std::to_string(::papplJobGetID(job)) + ".pdf");
  const auto begun = raster->Begin();
  ::papplJobSetData(job, raster.release());
  return Accept(job, begun);
}
bool StartPage(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t*, unsigned) {
  return Accept(job, RasterOf(job).BeginPage(options->header));
}
bool WriteRow(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*, unsigned,
              const unsigned char* row) {
  // A few bytes may repeat rows for hours.
  if (::papplJobIsCanceled(job)) return false;
  return Accept(job, RasterOf(job).AddRow(row));
}
bool EndPage(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*, unsigned) {
  return Accept(job, RasterOf(job).EndPage());
}
bool EndRasterJob(pappl_job_t* job, pappl_pr_options_t*, pappl_device_t*) {
  const std::unique_ptr<RasterJob> raster(&RasterOf(job));
  ::papplJobSetData(job, nullptr);
  const bool whole = Accept(job, raster->Finish()) && !::papplJobIsCanceled(job);
  if (whole) return ThePrinter->EndRaster(job, raster->Path());
  static_cast<void>(os::RemoveFile(os::FromNative(raster->Path())));
  return false;
}

// There is no lamp and no display: whoever looks after the server reads it in the log.
void Identify(pappl_printer_t* printer, pappl_identify_actions_t, const char* message) {
  std::string line = "rastrel: a sender asks which printer is '" +
                     std::string(::papplPrinterGetName(printer)) + "'";
  if (message && *message) line += ": " + std::string(message);
  os::WriteToStandardError(os::CleanLine(line) + "\n");
}

bool OpenDevice(pappl_device_t*, const char*, const char*) { return true; }
void CloseDevice(pappl_device_t*) {}
ssize_t ReadDevice(pappl_device_t*, void*, size_t) { return 0; }
ssize_t WriteDevice(pappl_device_t*, const void*, size_t size) {
  return static_cast<ssize_t>(size);
}

bool DescribeOwn(pappl_system_t*, const char*, const char*, const char*,
                 pappl_pr_driver_data_t* data, ipp_t** attributes, void* printer) {
  static_cast<NetworkPrinter*>(printer)->DescribeDriver(*data, attributes);
  return true;
}

template <std::size_t Size>
void CopyText(char (&target)[Size], const char* text) {
  ::papplCopyString(target, text, Size);
}

void SetMedia(pappl_pr_driver_data_t& data) {
  data.num_media = static_cast<int>(Media.size());
  std::ranges::copy(Media, data.media);
  data.borderless = true;
  data.num_source = 1;
  data.source[0] = "main-roll";
  data.num_type = 1;
  data.type[0] = "stationery";
  data.media_default.size_width = 21000;
  data.media_default.size_length = 29700;
  CopyText(data.media_default.size_name, Media.front());
  CopyText(data.media_default.source, "main-roll");
  CopyText(data.media_default.type, "stationery");
  data.media_ready[0] = data.media_default;
}

void SetResolutions(const std::vector<OfferedMode>& modes, pappl_pr_driver_data_t& data) {
  const auto add = [&data](int horizontal, int vertical) {
    for (int index = 0; index < data.num_resolution; ++index)
      if (data.x_resolution[index] == horizontal && data.y_resolution[index] == vertical) return;
    if (data.num_resolution == PAPPL_MAX_RESOLUTION) return;
    data.x_resolution[data.num_resolution] = horizontal;
    data.y_resolution[data.num_resolution++] = vertical;
  };
  for (const OfferedMode& mode : modes)
    if (mode.horizontal != 0) add(mode.horizontal, mode.vertical);
  if (data.num_resolution == 0) add(UsualResolution, UsualResolution);
  data.x_default = data.x_resolution[0];
  data.y_default = data.y_resolution[0];
}

// What the library has no member for, or answers for printers of two sides alone: a sender's wishes
// are taken as they are, and colors as the mode makes them.
void SetPlainAnswers(ipp_t* attributes) {
  ::ippAddString(attributes, IPP_TAG_PRINTER, IPP_CONST_TAG(IPP_TAG_KEYWORD),
                 "pwg-raster-document-sheet-back", nullptr, "normal");
  ::ippAddBoolean(attributes, IPP_TAG_PRINTER, "preferred-attributes-supported", 0);
  for (const char* name : {"print-rendering-intent-default", "print-rendering-intent-supported"})
    ::ippAddString(attributes, IPP_TAG_PRINTER, IPP_CONST_TAG(IPP_TAG_KEYWORD), name, nullptr,
                   "auto");
}

void SetModes(const std::vector<OfferedMode>& modes, pappl_pr_driver_data_t& data,
              ipp_t* attributes) {
  if (modes.empty()) return;
  data.vendor[data.num_vendor++] = ModeAttribute;
  std::vector<const char*> keywords;
  for (const OfferedMode& mode : modes) keywords.push_back(mode.keyword.c_str());
  ::ippAddStrings(attributes, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "rastrel-mode-supported",
                  static_cast<int>(keywords.size()), nullptr, keywords.data());
}

}  // namespace

void NetworkPrinter::DescribeDriver(pappl_pr_driver_data_t& data, ipp_t** attributes) const {
  CopyText(data.make_and_model, "Rastrel");
  data.printfile_cb = PrintFile;
  data.rstartjob_cb = StartRaster;
  data.rstartpage_cb = StartPage;
  data.rwriteline_cb = WriteRow;
  data.rendpage_cb = EndPage;
  data.rendjob_cb = EndRasterJob;
  data.status_cb = [](pappl_printer_t*) { return true; };
  data.format = OwnFormat;
  data.kind = PAPPL_KIND_LARGE_FORMAT | PAPPL_KIND_ROLL;
  data.ppm = data.ppm_color = 1;
  const bool hasGray = std::ranges::find(m_Modes, false, &OfferedMode::isColor) != m_Modes.end();
  data.color_supported = PAPPL_COLOR_MODE_AUTO | PAPPL_COLOR_MODE_COLOR;
  if (hasGray) data.color_supported |= PAPPL_COLOR_MODE_MONOCHROME;
  data.color_default = PAPPL_COLOR_MODE_AUTO;
  data.raster_types = PAPPL_PWG_RASTER_TYPE_SRGB_8 | PAPPL_PWG_RASTER_TYPE_SGRAY_8;
  data.quality_default = IPP_QUALITY_NORMAL;
  data.scaling_default = PAPPL_SCALING_NONE;
  data.sides_supported = data.sides_default = PAPPL_SIDES_ONE_SIDED;
  data.orient_default = IPP_ORIENT_PORTRAIT;
  SetResolutions(m_Modes, data);
  SetMedia(data);
  data.identify_cb = Identify;
  data.identify_default = data.identify_supported = PAPPL_IDENTIFY_ACTIONS_DISPLAY;
  *attributes = ::ippNew();
  SetPlainAnswers(*attributes);
  SetModes(m_Modes, data, *attributes);
}

void AddShopDriver(pappl_system_t* system, NetworkPrinter& printer) {
  ThePrinter = &printer;
  ::papplDeviceAddScheme(DeviceScheme, PAPPL_DEVTYPE_CUSTOM_LOCAL, nullptr, OpenDevice, CloseDevice,
                         ReadDevice, WriteDevice, nullptr, nullptr);
  static pappl_pr_driver_t drivers[] = {{ShopDriver, "Rastrel", nullptr, nullptr}};
  ::papplSystemSetPrinterDrivers(system, 1, drivers, nullptr, nullptr, DescribeOwn, &printer);
  for (const char* format : OtherFormats)
    ::papplSystemAddMIMEFilter(system, format, OwnFormat, Filter, nullptr);
}

}  // namespace rastrel::server
