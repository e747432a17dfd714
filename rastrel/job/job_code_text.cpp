#include "rastrel/job/job_code_text.h"

#include <array>

#include "rastrel/job/format_string.h"
#include "rastrel/platform/host/translation.h"

namespace rastrel::job {

namespace {

constexpr const wchar_t* UnknownError = L"(*v*)Unknown error";

struct ChildStateText {
  const wchar_t* rip;
  const wchar_t* odalis;
  const wchar_t* other;
};

// From JTI_INITIALISING on, in the order of the codes.
constexpr std::array<ChildStateText, 8> ChildStateTexts{{
    {L"(*v*)Initializing Rip", L"(*v*)Initializing \"Odalis\"", L"(*v*)Initializing other %d"},
    {L"(*v*)Rip Ready", L"(*v*)\"Odalis\" Ready", L"(*v*)Other Ready %d"},
    {L"(*v*)Rip Interpreting", L"(*v*)\"Odalis\" Interpreting", L"(*v*)Other Interpreting %d"},
    {L"(*v*)Rip Converting", L"(*v*)\"Odalis\" Converting", L"(*v*)Other Converting %d"},
    {L"(*v*)Rip Flushing", L"(*v*)\"Odalis\" Flushing", L"(*v*)Other Flushing %d"},
    {L"(*v*)Rip Printing", L"(*v*)\"Odalis\" Printing", L"(*v*)Other Printing %d"},
    {L"(*v*)Rip Spooling", L"(*v*)\"Odalis\" Spooling", L"(*v*)Other Spooling %d"},
    {L"(*v*)Rip Recovered", L"(*v*)\"Odalis\" Recovered", L"(*v*)Other Recovered %d"},
}};

// The host's translation; a text that is too long for its buffers, or that it does not know, stays.
std::wstring Translated(const std::wstring& text) {
  if (text.size() >= static_cast<std::size_t>(TStringLimit)) return text;
  std::array<wchar_t, TStringLimit> source{};
  std::array<wchar_t, TStringLimit> destination{};
  text.copy(source.data(), text.size());
  text.copy(destination.data(), text.size());
  TString(source.data(), destination.data(), TStringLimit);
  destination.back() = L'\0';
  return destination.data();
}

std::wstring TextOfChildState(JT_INFO code, JT_ORIGINATOR originator) {
  const auto& texts = ChildStateTexts.at(static_cast<std::size_t>(code - JTI_INITIALISING));
  if (originator == JTO_RIP) return texts.rip;
  if (originator == JTO_ODALIS) return texts.odalis;
  // Translated with its "%d" in place, since that is how the table holds it; then formatted.
  const std::wstring format = Translated(texts.other);
  formatstringT<wchar_t> text;
  text.Format(format.c_str(), static_cast<int>(originator));
  return text;
}

}  // namespace

std::wstring ErrorText(JT_ERROR code) {
  switch (code) {
    case JTE_NONE: return {};
    case JTE_RIP_MISSING: return L"(*v*)RIP executable missing";
    case JTE_ODALIS_MISSING: return L"(*v*)Odalis executable missing";
    case JTE_STEM_MISSING: return L"(*v*)Stem executable missing";
    case JTE_NO_OUTPUT_THREAD: return L"(*v*)Can't start output thread";
    case JTE_START_ODALIS: return L"(*v*)Can't start Odalis";
    case JTE_START_RIP: return L"(*v*)Can't start RIP";
    case JTE_RIP_EXIT: return L"(*v*)RIP exited abnormally";
    case JTE_ODALIS_EXIT: return L"(*v*)Odalis exited abnormally";
    case JTE_LOW_RESOURCES: return L"(*v*)System low on resources";
    case JTE_NUMBERED: {
      formatstringT<wchar_t> text;
      text.Format(L"%s %d", UnknownError, static_cast<int>(code));
      return text;
    }
    case JTE_ABNORMAL: return L"(*v*)Abnormal termination";
    case JTE_SPOOL_OUTPUT: return L"(*v*)Can't spool output";
    case JTE_SPOOL_GENERATE: return L"(*v*)Can't generate spool file";
    case JTE_PREFIX: return L"(*v*)Can't generate PostScript prefix";
    case JTE_SPOOL_INVALID: return L"(*v*)Invalid spool file";
    case JTE_SPOOL_MISSING: return L"(*v*)Spool file is missing";
    case JTE_PS_MISSING: return L"(*v*)PostScript file is missing";
    case JTE_RUN_INSTALL: return L"(*v*)Run Sysinstall3.ps";
    case JTE_INVALID_RECOVERY: return L"(*v*)Invalid recovery";
    // The host shows the children's own exit statuses by number; they have no texts.
    case JTE_UNDEFINED:
    case JTE_RIP_STATUS_1:
    case JTE_RIP_STATUS_2:
    case JTE_RIP_STATUS_3:
    case JTE_ODALIS_STATUS_1:
    case JTE_ODALIS_STATUS_2: break;
  }
  return UnknownError;
}

std::wstring InfoText(JT_INFO code, JT_ORIGINATOR originator) {
  switch (code) {
    case JTI_BAD: return L"(*v*)Bad Info";
    case JTI_START_RIPPING: return L"(*v*)Start Ripping";
    case JTI_RIPPING_COMPLETE: return L"(*v*)Ripping Complete";
    case JTI_START_PRINTING: return L"(*v*)Start Printing";
    case JTI_PRINTING_COMPLETE: return L"(*v*)Printing complete";
    case JTI_START_SPOOLING: return L"(*v*)Start Spooling";
    case JTI_SPOOLING_COMPLETE: return L"(*v*)Spooling complete";
    case JTI_PROCESSING_STARTED: return L"(*v*)Processing Started";
    case JTI_PROCESSING_COMPLETED: return L"(*v*)Processing Completed";
    case JTI_PRINTING_ABORTED: return L"(*v*)Printing Aborted";
    case JTI_UNDEFINED: return L"(*v*)Undefined";
    case JTI_CLQ_SUCCESS:
    case JTI_CLQ_FAILURE: return {};
    case JTI_INITIALISING:
    case JTI_READY:
    case JTI_INTERPRETING:
    case JTI_CONVERTING:
    case JTI_FLUSHING:
    case JTI_PRINTING:
    case JTI_SPOOLING:
    case JTI_VALID_RECOVERY: return TextOfChildState(code, originator);
  }
  return {};
}

std::optional<std::wstring> StatusText(JT_STATUS status) {
  switch (status) {
    case JS_RECEIVING: return L"(*v*)Receiving";
    case JS_PREPROCESSING: return L"(*v*)Preprocessing";
    case JS_IDLE: return L"(*v*)Idle";
    case JS_HOLDING: return L"(*v*)Holding";
    case JS_ACTIVE: return L"(*v*)Active";
    case JS_COMPLETE: return L"(*v*)Complete";
  }
  return std::nullopt;
}

}  // namespace rastrel::job
