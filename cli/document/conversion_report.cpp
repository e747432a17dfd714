#include "cli/document/conversion_report.h"

#include <filesystem>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/converting/queue_diagnosis.h"
#include "cli/installation/installation.h"
#include "rastrel/conversion/page_size.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

bool HoldsPages(const std::string& directory) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    if (entry->path().extension() == ".cfm") return true;
  }
  return false;
}

// With the reason, if the log has one.
[[noreturn]] void Throw(ExitStatus status, const std::string& text, const std::string& reason) {
  throw CommandError(
      status, reason.empty() ? text + "; the application log in '" + RipDirectory() + "' tells more"
                             : text + ": " + reason);
}

}  // namespace

Expected<PdfOptions> ApplyPdfOptions(const Invocation& invocation,
                                     const ConversionRequest& request) {
  if (request.page) {
    const std::string page = std::to_string(*request.page);
    if (auto set = os::SetEnvironmentValue("RASTREL_RIP_PAGE", page.c_str()); !set)
      return set.Error();
  }
  return PdfOptions::Apply(invocation);
}

BOUNDS MeasuredPage(const InputFile& input, const ConversionRequest& request) {
  BOUNDS page{};
  if (GetPSPageSize(os::FromNative(input.path).c_str(), page) != 0) return page;
  const std::string text =
      "page " + std::to_string(request.page.value_or(1)) + " can't be measured";
  const std::string why = LastErrorOfQueue();
  throw CommandError(ExitStatus::BadInput, why.empty() ? text : text + ": " + why);
}

bool ConversionReport::IsCancelled() const {
  if (m_Views.IsCancelled()) return true;
  return m_End == ConversionEnd::Dismissed && LastRemarkOfLibrary().empty();
}

void ConversionReport::ThrowWithoutResult() const {
  if (!m_Views.Message().empty()) throw CommandError(ExitStatus::BadInput, m_Views.Message());
  if (!m_Views.HasWorked())
    Throw(ExitStatus::NotPrepared, "the file can't be made ready for the conversion",
          LastRemarkOfLibrary());
  if (HoldsPages(m_Place.Path()))
    Throw(ExitStatus::NoPixels, "the picture that was made can't be read", LastRemarkOfLibrary());
  Throw(ExitStatus::JobFailed, "the conversion failed", LastErrorOfQueue());
}

void ConversionReport::ThrowWithoutLines() const {
  const std::string error = LastErrorOfQueue();
  if (!m_Views.HasWorked())
    Throw(ExitStatus::NotPrepared, "the file can't be made ready for the conversion",
          LastRemarkOfLibrary());
  if (!error.empty()) throw CommandError(ExitStatus::JobFailed, "the conversion failed: " + error);
  const std::string remark = LastRemarkOfLibrary();
  if (remark.find("bmp file") != remark.npos)
    Throw(ExitStatus::NoPixels, "the picture that was made can't be read", remark);
  throw CommandError(ExitStatus::NoCutLines,
                     "nothing in the file has a cut colour; there is nothing to cut");
}

void ConversionReport::ThrowIfArchiveIsDamaged() const {
  const std::string remark = LastRemarkOfLibrary();
  if (remark.starts_with("the cut archive"))
    throw CommandError(ExitStatus::NoCutLines, "the cut lines can't be read: " + remark);
}

void ConversionReport::Note(bool json, const std::string& text) const {
  if (json) {
    JsonLine("note").Add("text", text).Write();
  } else {
    WriteErrorLine("rastrel: " + text);
  }
}

}  // namespace rastrel::cli
