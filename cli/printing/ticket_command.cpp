#include "cli/printing/ticket_command.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/job/job_event.h"
#include "cli/printing/ticket_file.h"
#include "rastrel/job/job_code_text.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

std::string StatusWord(JT_STATUS status) {
  const auto text = job::StatusText(status);
  return text ? ShownText(*text) : "unknown (" + std::to_string(status) + ")";
}

std::string ErrorWord(JT_ERROR error) {
  return error == JTE_NONE ? "none"
                           : ShownText(job::ErrorText(error)) + " (" + std::to_string(error) + ")";
}

std::string DateText(const COleDateTime& date) {
  if (date.GetStatus() != COleDateTime::valid) return "unknown";
  std::array<char, 32> text{};
  const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d",
                                   date.GetYear(), date.GetMonth(), date.GetDay(), date.GetHour(),
                                   date.GetMinute(), date.GetSecond());
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

const char* YesNo(bool flag) { return flag ? "yes" : "no"; }

// Writes a field in both forms, so that none is in one form only.
class FieldList {
 public:
  void Text(const char* label, const char* name, const std::string& value) {
    Line(label, value);
    m_Json.Add(name, value);
  }
  void Text(const char* label, const char* name, const CString& value) {
    Text(label, name, os::Utf8FromWide(value));
  }
  void Number(const char* label, const char* name, std::int64_t value) {
    Line(label, std::to_string(value));
    m_Json.Add(name, value);
  }
  void Real(const char* label, const char* name, double value) {
    Line(label, os::ShortestDecimal(value));
    m_Json.AddNumber(name, value);
  }
  void Flag(const char* label, const char* name, bool value) {
    Line(label, YesNo(value));
    m_Json.AddFlag(name, value);
  }
  void Texts(const char* label, const char* name, const std::vector<std::string>& values) {
    for (const std::string& value : values) Line(label, value);
    m_Json.Add(name, values);
  }
  void Pages(const char* label, const char* name, const std::vector<std::int64_t>& pages) {
    std::string list;
    for (const std::int64_t page : pages) list += (list.empty() ? "" : ",") + std::to_string(page);
    Line(label, list.empty() ? "all" : list);
    m_Json.Add(name, pages);
  }

  [[nodiscard]] const std::string& Lines() const { return m_Lines; }
  [[nodiscard]] std::string Json() const { return m_Json.Text(); }

 private:
  void Line(std::string label, const std::string& value) {
    constexpr std::size_t width = 20;
    label += ':';
    if (label.size() < width) label.resize(width, ' ');
    m_Lines += label + os::CleanLine(value) + "\n";
  }

  std::string m_Lines;
  JsonLine m_Json{"ticket"};
};

void AddJob(FieldList& fields, const CJobTicket& ticket) {
  fields.Text("name", "name", ticket.m_JobName);
  fields.Text("note", "note", ticket.m_JobNote);
  fields.Text("created", "created", DateText(ticket.m_Created));
  fields.Text("status", "text", StatusWord(ticket.m_Status));
  fields.Number("status code", "status", ticket.m_Status.Load());
  fields.Text("error", "error", ErrorWord(ticket.m_Error));
  fields.Number("error code", "code", ticket.m_Error.Load());
  fields.Number("copies", "copies", ticket.m_Copies);
  fields.Flag("planar", "planar", ticket.GetPlanar());
  fields.Text("job file", "file", ticket.m_JobFile.FileName);
  fields.Text("second file", "second-file", ticket.m_SecondFile.FileName);
  std::vector<std::int64_t> pages;
  for (const std::int32_t page : ticket.m_Pages) pages.push_back(std::int64_t{page} + 1);
  fields.Pages("pages", "pages", pages);
}

void AddSettings(FieldList& fields, const CJobData& settings) {
  fields.Text("printer", "printer", settings.PrinterName);
  fields.Text("print mode folder", "mode-folder", settings.PrintModeFolder);
  fields.Text("print mode", "mode", settings.PrintModeName);
  fields.Flag("spool requested", "spool-requested", settings.SpoolRequested);
  fields.Flag("spool allowed", "spool-allowed", settings.SpoolAllowed);
  fields.Number("scale mode", "scale-mode", settings.ScaleMode);
  fields.Text("scale target", "scale-target", settings.ScaleTarget);
  fields.Real("scale width cm", "scale-width-cm", settings.ScaleWidthCm);
  fields.Real("scale height cm", "scale-height-cm", settings.ScaleHeightCm);
  fields.Flag("levels enabled", "levels-enabled", settings.LevelsEnabled);
  fields.Flag("levels linked", "levels-linked", settings.LevelsLinked);
  fields.Flag("host flag 1", "host-flag-1", settings.HostFlag1);
  fields.Flag("host flag 2", "host-flag-2", settings.HostFlag2);
  fields.Flag("host flag 3", "host-flag-3", settings.HostFlag3);
}

void AddPages(FieldList& fields, CCFMFile& pages) {
  std::vector<std::string> directories;
  for (const CCFMFileEntry& page : pages.Entries)
    directories.push_back(os::ToNative(page.Directory + page.FileName));
  fields.Texts("spooled page", "paths", directories);
  fields.Number("spooled bytes", "bytes", pages.GetSizeOnDisk());
}

}  // namespace

ExitStatus ShowTicketCommand(const Invocation& invocation) {
  const std::string path = OrEnd(ExitStatus::WrongUse, TicketPath(invocation.operand));
  CJobTicket ticket;
  OrEnd(ExitStatus::BadInput, LoadTicket(ticket, path));
  FieldList fields;
  fields.Text("ticket", "path", path);
  AddJob(fields, ticket);
  AddSettings(fields, ticket.m_JobData);
  AddPages(fields, ticket.m_CFMFile);
  WriteOutLines(invocation.Has(OptionId::Json) ? fields.Json() : fields.Lines());
  return ExitStatus::Done;
}

ExitStatus HoldTicketCommand(const Invocation& invocation, bool hold) {
  const std::string path = OrEnd(ExitStatus::WrongUse, TicketPath(invocation.operand));
  CJobTicket ticket;
  OrEnd(ExitStatus::BadInput, LoadTicket(ticket, path));
  const JT_STATUS before = ticket.m_Status;
  ticket.HoldJob(hold ? 1 : 0);
  const JT_STATUS wanted = hold ? JS_HOLDING : JS_IDLE;
  if (ticket.m_Status != wanted)
    throw CommandError(ExitStatus::JobFailed, "the job of the ticket '" + path + "' can't be " +
                                                  (hold ? "held" : "released") +
                                                  ": its status is " + StatusWord(before));
  if (ticket.m_Status != before) OrEnd(ExitStatus::JobFailed, SaveTicket(ticket, path));
  const std::string already = ticket.m_Status == before ? "already " : "";
  if (invocation.Has(OptionId::Json)) {
    JsonLine line(hold ? "held" : "released");
    line.AddFlag("changed", ticket.m_Status != before).Add("path", path).Write();
  } else {
    WriteOutLine(path + ": " + already + (hold ? "held" : "released"));
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
