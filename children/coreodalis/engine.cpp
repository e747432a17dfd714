#include "children/coreodalis/engine.h"

#include <cerrno>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "children/coreodalis/cfm2_lines.h"
#include "children/coreodalis/delivery.h"
#include "children/coreodalis/page_source.h"
#include "children/coreodalis/report.h"
#include "children/devices/devices.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::odalis {
namespace {

constexpr std::uint64_t LargestDevicesFile = 256u << 10;

/// A page directory that the text names, however many entries do so.
struct PagePlace {
  std::wstring path;            ///< library path
  std::string native;           ///< the same on this machine
  std::size_t line = 0;         ///< of the first entry
  std::size_t lastEntry = 0;    ///< after this one it is removed, if it is to be
  std::uint64_t printings = 0;  ///< that are asked for
  unsigned delivered = 0;
  bool isRemoved = false;  ///< an entry says once or delete
};

std::string Today() {
  const os::LocalTime now = os::CurrentLocalTime();
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", now.year, now.month, now.day);
  return text;
}

std::string OutputDirectory() {
  const std::string given = os::EnvironmentValue("RASTREL_OUTPUT");
  return given.empty() ? os::DataRoot() + "/output" : given;
}

/// The last element of a title, which is the job file's path without its extension.
std::string NameOf(const std::string& title) { return title.substr(title.find_last_of("/\\") + 1); }

class Engine {
 public:
  Engine(const EngineOptions& options, interpreter::Guardian& guardian)
      : m_Options(options),
        m_Output(OutputDirectory()),
        m_Printer(os::EnvironmentValue("RASTREL_PRINTER")),
        m_Job(os::EnvironmentValue("RASTREL_JOB")),
        m_PagesAreRemoved(os::EnvironmentValue("RASTREL_PAGES") == "removed"),
        m_Date(Today()),
        m_Delivery(guardian) {}

  ExitStatus Run(std::string_view text) {
    if (const auto status = Prepare(text); status != ExitStatus::Done) return status;
    ReportState(EngineState::Ready);
    if (m_Printings == 0) ReportNote("nothing to print");
    if (m_Printings > 0) {
      if (auto read = ReadDevicesFile(); !read) return Give(ExitStatus::NotDelivered, read.Error());
      ReportState(EngineState::Printing);
    }
    for (std::size_t i = 0; i < m_Document.entries.size(); ++i) {
      PagePlace& place = *m_PlaceOfEntry[i];
      if (auto printed = PrintEntry(i, place); !printed) {
        return Give(ExitStatus::NotDelivered, printed.Error());
      }
      if (place.isRemoved && place.lastEntry == i) Remove(place);
    }
    m_Progress.Report(1);
    return ExitStatus::Done;
  }

 private:
  static ExitStatus Give(ExitStatus status, const Failure& failure) {
    ReportError(Describe(failure));
    return status;
  }

  ExitStatus Prepare(std::string_view text) {
    auto document = ReadCfm2(text);
    if (!document) {
      return Give(ExitStatus::BadInput,
                  FailureOf("the input is no CFM2: " + Describe(document.Error())));
    }
    m_Document = std::move(*document);
    for (const std::string& warning : m_Document.warnings) ReportWarning(warning);
    FindPlaces();
    for (auto& [path, place] : m_Places) {
      place.native = os::ToNative(place.path);
      const bool isThere = os::IsDirectory(place.path) &&
                           os::Exists(place.path + L"/" + os::WideFromUtf8(pages::PageInfoName));
      if (isThere) continue;
      // A page that is to be removed and is gone needs nothing more.
      if (place.printings == 0 && !os::Exists(place.path)) continue;
      return Give(ExitStatus::BadInput, FailureOf("line " + std::to_string(place.line) +
                                                  ": no page lies in '" + place.native + "'"));
    }
    return ExitStatus::Done;
  }

  void FindPlaces() {
    m_PlaceOfEntry.reserve(m_Document.entries.size());
    for (std::size_t i = 0; i < m_Document.entries.size(); ++i) {
      const PageEntry& entry = m_Document.entries[i];
      const std::string path = PageDirectoryOf(entry);
      PagePlace& place = m_Places[path];
      if (place.line == 0) {
        place.line = entry.line;
        place.path = os::WideFromUtf8(path);
      }
      place.lastEntry = i;
      if (entry.type == TicketType::Once || entry.type == TicketType::Delete)
        place.isRemoved = true;
      if (entry.type != TicketType::Delete) {
        place.printings += entry.copies;
        m_Printings += entry.copies;
      }
      m_PlaceOfEntry.push_back(&place);
    }
  }

  Expected<void> ReadDevicesFile() {
    m_DevicesPath = os::DataRoot() + "/devices.txt";
    // It names commands to run.
    const auto trusted = os::CheckTrusted(m_DevicesPath, os::DataRoot());
    if (!trusted && trusted.Error().error == EPERM)
      return FailureOf("no devices: " + Describe(trusted.Error()));
    const auto text = os::ReadWholeFile(os::FromNative(m_DevicesPath), LargestDevicesFile);
    if (!text) return FailureOf("no devices: " + Describe(text.Error()));
    auto devices = devices::ReadDevices(*text);
    if (!devices) return FailureOf("'" + m_DevicesPath + "', " + Describe(devices.Error()));
    m_Devices = std::move(*devices);
    if (m_Output.front() != '/') {
      return FailureOf("RASTREL_OUTPUT is '" + m_Output + "', and no full path");
    }
    return {};
  }

  Expected<void> PrintEntry(std::size_t number, PagePlace& place) {
    const PageEntry& entry = m_Document.entries[number];
    if (entry.type == TicketType::Delete) return {};
    const bool isRemovedThen = (place.isRemoved || m_PagesAreRemoved) && place.lastEntry == number;
    for (unsigned copy = 0; copy < entry.copies; ++copy) {
      const bool isLast = isRemovedThen && copy + 1 == entry.copies;
      if (auto printed = PrintOnce(entry, place, isLast); !printed) {
        return FailureOf("page '" + std::string(entry.title) + "': " + Describe(printed.Error()));
      }
    }
    return {};
  }

  /// `isLast`: the page is removed after that.
  Expected<void> PrintOnce(const PageEntry& entry, PagePlace& place, bool isLast) {
    const auto info = pages::ReadPageInfo(place.native);
    if (!info) return InfoFailure(place, info.Error());
    DeliveryOrder order;
    order.values.printer = m_Printer.empty() ? info->printer : m_Printer;
    order.device = devices::FindDevice(m_Devices, order.values.printer);
    if (!order.device) {
      return FailureOf("'" + m_DevicesPath + "' has no section for the printer '" +
                       order.values.printer + "', and none for '*'");
    }
    auto source = PageSource::Open(place.native, *info);
    if (!source) return source.Error();
    order.values.output = m_Output;
    order.values.job = JobOf(*info, entry);
    order.values.page = info->page;
    order.values.copy = ++place.delivered;
    order.values.date = m_Date;
    order.permissions = info->access.value_or(0600);
    order.isPagesLast = isLast;
    order.planar = m_Options.planar;
    order.progress = [this](double share) { ReportShare(share); };
    order.flushing = [this] {
      if (m_Printed + 1 == m_Printings) ReportState(EngineState::Flushing);
    };
    order.delivered = [](const std::vector<std::string>& paths) {
      for (const std::string& path : paths) ReportOutput(path);
    };
    order.unsure = [page = info->page] { ReportUnsure(page); };
    if (auto delivered = m_Delivery.Deliver(*source, order); !delivered) return delivered;
    ++m_Printed;
    ReportPage(info->page);
    ReportShare(0);
    return {};
  }

  std::string JobOf(const pages::PageInfo& info, const PageEntry& entry) const {
    if (!m_Job.empty()) return m_Job;
    const std::string name = NameOf(info.job);
    return name.empty() ? std::string(entry.title) : name;
  }

  /// A fault in the text comes with its line; any other failure names the file by itself.
  static Failure InfoFailure(const PagePlace& place, const Failure& failure) {
    if (failure.line == 0) return FailureOf(Describe(failure));
    return FailureOf("'" + place.native + "/" + pages::PageInfoName + "', line " +
                     std::to_string(failure.line) + ": " + failure.why);
  }

  void ReportShare(double share) {
    m_Progress.Report((static_cast<double>(m_Printed) + share) / static_cast<double>(m_Printings));
  }

  static void Remove(const PagePlace& place) {
    if (!os::Exists(place.path)) return;
    // The page is delivered; that it stays on the disk is no reason to call the job failed.
    if (!os::RemoveTree(place.path)) ReportWarning("could not remove '" + place.native + "'");
  }

  EngineOptions m_Options;
  std::string m_Output;
  std::string m_Printer;
  std::string m_Job;       ///< its name, if the library says one
  bool m_PagesAreRemoved;  ///< all of them, by the library after this run
  std::string m_Date;
  std::string m_DevicesPath;
  Delivery m_Delivery;
  Cfm2Document m_Document;
  std::map<std::string, PagePlace> m_Places;
  std::vector<PagePlace*> m_PlaceOfEntry;
  std::vector<devices::Device> m_Devices;
  Progress m_Progress;
  std::uint64_t m_Printings = 0;
  std::uint64_t m_Printed = 0;
};

}  // namespace

ExitStatus RunEngine(std::string_view text, const EngineOptions& options,
                     interpreter::Guardian& guardian) {
  return Engine(options, guardian).Run(text);
}

}  // namespace rastrel::odalis
