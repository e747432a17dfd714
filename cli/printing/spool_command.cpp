#include "cli/printing/spool_command.h"

#include <array>
#include <cmath>
#include <ctime>

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/other_programs.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "cli/printing/spool.h"
#include "cli/printing/spool_repair.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/program_search.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

std::string DateText(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::array<char, 32> text{};
  const std::tm* local = std::localtime(&time);
  if (local == nullptr || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", local) == 0)
    return "unknown";
  return text.data();
}

std::string Resolution(double value) { return os::ShortestDecimal(std::round(value * 100) / 100); }

const char* ColorWord(pages::PageColor color) {
  switch (color) {
    case pages::PageColor::Gray: return "gray";
    case pages::PageColor::Rgb: return "RGB";
    case pages::PageColor::Cmyk: return "CMYK";
    case pages::PageColor::Separations: return "separations";
  }
  return "";
}

std::string PlaneNames(const pages::PageInfo& info) {
  std::string names;
  for (const pages::PagePlane& plane : info.planes)
    names += (names.empty() ? "" : ", ") + plane.name;
  return names;
}

std::vector<std::string> PageRow(const SpoolPage& page) {
  if (!page.info) return {page.title, page.problem};
  const pages::PageInfo& info = *page.info;
  return {
      "page " + std::to_string(info.page),
      std::to_string(info.width) + " x " + std::to_string(info.height) + " pixels",
      Resolution(info.xResolution) + " x " + Resolution(info.yResolution) + " dpi",
      std::to_string(info.bits) + " bits " + ColorWord(info.color) + " (" + PlaneNames(info) + ")",
      std::to_string(page.bytes) + " bytes",
      info.printer,
      info.mode};
}

std::string PageLine(const SpoolEntry& entry, const SpoolPage& page) {
  JsonLine line("page");
  if (!page.info) {
    line.Add("text", page.problem).Add("path", entry.directory + "/" + page.title);
    return line.Text();
  }
  const pages::PageInfo& info = *page.info;
  line.Add("page", info.page).Add("path", entry.directory + "/" + page.title);
  line.Add("width", info.width).Add("height", info.height);
  line.AddNumber("x-resolution", info.xResolution).AddNumber("y-resolution", info.yResolution);
  line.Add("bits", info.bits).Add("colour", ColorWord(info.color));
  std::vector<std::string> planes;
  for (const pages::PagePlane& plane : info.planes) planes.push_back(plane.name);
  line.Add("planes", planes).Add("bytes", static_cast<std::int64_t>(page.bytes));
  line.Add("job", info.job).Add("printer", info.printer).Add("mode", info.mode);
  return line.Text();
}

const char* StateWord(SpoolState state) {
  switch (state) {
    case SpoolState::Kept: return "kept";
    case SpoolState::WithoutRecord: return "without-record";
    case SpoolState::Incomplete: return "incomplete";
  }
  return "";
}

std::string StateText(const SpoolEntry& entry) {
  switch (entry.state) {
    case SpoolState::Kept: return {};
    case SpoolState::WithoutRecord: return "kept without a record";
    case SpoolState::Incomplete: return "incomplete: " + entry.problem;
  }
  return {};
}

std::string EntryLine(const SpoolEntry& entry) {
  JsonLine line("spool");
  line.Add("text", entry.name).Add("path", entry.directory);
  line.Add("pages", static_cast<std::int64_t>(entry.pages));
  line.Add("bytes", static_cast<std::int64_t>(entry.bytes));
  line.Add("date", DateText(entry.modified)).Add("state", StateWord(entry.state));
  line.AddIfAny("problem", entry.problem);
  return line.Text();
}

std::vector<std::string> EntryRow(const SpoolEntry& entry) {
  std::vector<std::string> row{
      entry.name, std::to_string(entry.pages) + (entry.pages == 1 ? " page" : " pages"),
      std::to_string(entry.bytes) + " bytes", DateText(entry.modified)};
  if (entry.state != SpoolState::Kept) row.push_back(StateText(entry));
  return row;
}

void WriteEntry(const SpoolEntry& entry, bool json) {
  json ? WriteOutLines(EntryLine(entry)) : WriteOutRow(EntryRow(entry));
}

void ShowInDesktop(const std::string& directory) {
  const bool desktop =
      !os::EnvironmentValue("DISPLAY").empty() || !os::EnvironmentValue("WAYLAND_DISPLAY").empty();
  if (!desktop) return;
  const std::string opener = os::FindProgram("xdg-open");
  if (!opener.empty()) StartAndForget(opener, {directory});
}

}  // namespace

ExitStatus ListSpoolCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  for (const SpoolEntry& entry : ListSpool()) WriteEntry(entry, invocation.Has(OptionId::Json));
  return ExitStatus::Done;
}

ExitStatus ShowSpoolCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const SpoolEntry entry = OrEnd(ExitStatus::BadInput, NeedSpoolEntry(invocation.operand));
  const bool json = invocation.Has(OptionId::Json);
  WriteEntry(entry, json);
  for (const SpoolPage& page : PagesOf(entry))
    json ? WriteOutLines(PageLine(entry, page)) : WriteOutRow(PageRow(page));
  return ExitStatus::Done;
}

ExitStatus SpoolSizeCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  std::uint64_t bytes = 0;
  if (invocation.hasOperand) {
    bytes = OrEnd(ExitStatus::BadInput, NeedSpoolEntry(invocation.operand)).bytes;
  } else {
    for (const SpoolEntry& entry : ListSpool()) bytes += entry.bytes;
  }
  if (invocation.Has(OptionId::Json)) {
    JsonLine line("size");
    line.AddIfAny("text", invocation.operand)
        .Add("bytes", static_cast<std::int64_t>(bytes))
        .Write();
  } else {
    WriteOutLine(std::to_string(bytes) + " bytes");
  }
  return ExitStatus::Done;
}

ExitStatus RemoveSpoolCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const SpoolEntry entry = OrEnd(ExitStatus::BadInput, NeedSpoolEntry(invocation.operand));
  if (IsOwned(entry.directory))
    throw CommandError(ExitStatus::BadInput, "the job '" + entry.name +
                                                 "' in the spool can't be removed: its print is "
                                                 "under way");
  if (const auto removed = RemoveEntry(entry); !removed)
    throw CommandError(ExitStatus::JobFailed,
                       "'" + removed.Error().where + "' can't be removed whole");
  if (invocation.Has(OptionId::Json)) {
    JsonLine line("removed");
    line.Add("text", entry.name).Add("path", entry.directory).Write();
  } else {
    WriteOutLine("removed " + entry.name);
  }
  return ExitStatus::Done;
}

ExitStatus OpenSpoolCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const std::string directory =
      invocation.hasOperand
          ? OrEnd(ExitStatus::BadInput, NeedSpoolEntry(invocation.operand)).directory
          : SpoolDirectory();
  if (invocation.Has(OptionId::Json)) {
    JsonLine line("directory");
    line.Add("path", directory).Write();
  } else {
    WriteOutPath(directory);
  }
  ShowInDesktop(directory);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
