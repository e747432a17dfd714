#include "server/printer/ipp/job_attributes.h"

#include <string_view>

#include "rastrel/platform/os/hex.h"
#include "server/printer/job_options.h"

namespace rastrel::server {
namespace {

std::string TextOf(pappl_job_t* job, const char* name) {
  ipp_attribute_t* const attribute = ::papplJobGetAttribute(job, name);
  const char* const text = attribute ? ::ippGetString(attribute, 0, nullptr) : nullptr;
  return text ? text : "";
}

std::string SafeText(const char* text) { return text ? text : ""; }

void TakePages(pappl_job_t* job, SenderWishes& wishes) {
  ipp_attribute_t* const ranges = ::papplJobGetAttribute(job, "page-ranges");
  for (int index = 0; ranges && index < ::ippGetCount(ranges); ++index) {
    int last = 0;
    const int first = ::ippGetRange(ranges, index, &last);
    wishes.pages.emplace_back(first, last);
  }
}

void TakeResolution(pappl_job_t* job, SenderWishes& wishes) {
  ipp_attribute_t* const attribute = ::papplJobGetAttribute(job, "printer-resolution");
  if (!attribute) return;
  ipp_res_t units = IPP_RES_PER_INCH;
  wishes.horizontal = ::ippGetResolution(attribute, 0, &wishes.vertical, &units);
  if (units == IPP_RES_PER_INCH) return;
  wishes.horizontal = wishes.horizontal * 254 / 100;
  wishes.vertical = wishes.vertical * 254 / 100;
}

// Only a sender who asks for a size gets one: signs are printed as large as they are.
void TakeFit(pappl_job_t* job, SenderWishes& wishes) {
  const std::string scaling = TextOf(job, "print-scaling");
  if (scaling != "fit" && scaling != "fill" && scaling != "auto-fit") return;
  pappl_pr_options_t* const options = ::papplJobCreatePrintOptions(job, 0, true);
  if (!options) return;
  wishes.fit = FitSize{options->media.size_width, options->media.size_length};
  ::papplJobDeletePrintOptions(options);
}

}  // namespace

std::string DeviceAddressOf(const std::string& device) {
  return std::string(DeviceScheme) + "://" + os::HexFromBytes(device);
}

std::string DeviceOfAddress(const std::string& address) {
  const std::string start = std::string(DeviceScheme) + "://";
  if (!address.starts_with(start)) return {};
  std::string device;
  for (std::size_t at = start.size(); at + 1 < address.size(); at += 2)
    if (const auto byte = os::ByteFromHex(address[at], address[at + 1]))
      device += static_cast<char>(*byte);
  return device;
}

ReceivedDocument DocumentOf(pappl_job_t* job, const std::vector<OfferedMode>& modes) {
  SenderWishes wishes;
  if (ipp_attribute_t* const copies = ::papplJobGetAttribute(job, "copies"))
    wishes.copies = ::ippGetInteger(copies, 0);
  TakePages(job, wishes);
  TakeResolution(job, wishes);
  TakeFit(job, wishes);
  wishes.mode = TextOf(job, ModeAttribute);
  wishes.gray = TextOf(job, "print-color-mode").ends_with("monochrome");

  ReceivedDocument document;
  document.device =
      DeviceOfAddress(SafeText(::papplPrinterGetDeviceURI(::papplJobGetPrinter(job))));
  document.path = SafeText(::papplJobGetFilename(job));
  document.title = SafeText(::papplJobGetName(job));
  document.owner = SafeText(::papplJobGetUsername(job));
  document.options = OptionsOf(wishes, modes);
  document.number = ::papplJobGetID(job);
  return document;
}

}  // namespace rastrel::server
