#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "children/coreodalis/output_file.h"
#include "children/coreodalis/page_source.h"
#include "children/devices/devices.h"
#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// One page's delivery: the device, the fields of its pattern and how to report.
struct DeliveryOrder {
  const devices::Device* device = nullptr;
  devices::FieldValues values;  ///< all but plane and file
  bool planar = false;          ///< each plane as a file of its own
  unsigned permissions = 0600;  ///< of files that are made, less the umask
  /// Nobody needs the page after this delivery: its own file may become the device's.
  bool isPagesLast = false;
  std::function<void(double)> progress;  ///< called with the share of this delivery that is done
  std::function<void()> flushing;        ///< called when the files are written and not yet in place
  /// Called with the paths of the files that are in their places now; not for a command. New files
  /// go with an end of this process before it has returned: nobody knows of them.
  std::function<void(const std::vector<std::string>&)> delivered;
  /// Called before a failure is returned, if something of the page may have come out all the same:
  /// its program was ended before it could say so, or that of an earlier plane took its file.
  std::function<void()> unsure = [] {};
};

/// Brings pages to devices. Each page arrives at most once: its files appear whole or not at all.
class Delivery {
 public:
  explicit Delivery(interpreter::Guardian& guardian) : m_Guardian(guardian) {}

  /// Delivers one page.
  [[nodiscard]] Expected<void> Deliver(PageSource& source, const DeliveryOrder& order);

 private:
  [[nodiscard]] Expected<void> ToFiles(PageSource& source, const DeliveryOrder& order);
  [[nodiscard]] Expected<std::vector<OutputFile>> WriteFiles(PageSource& source,
                                                             const DeliveryOrder& order,
                                                             const std::vector<std::string>& paths);
  [[nodiscard]] std::optional<OutputFile> TakePageFile(const PageSource& source,
                                                       const DeliveryOrder& order,
                                                       const std::string& path);
  [[nodiscard]] Expected<void> ToCommand(PageSource& source, const DeliveryOrder& order);

  interpreter::Guardian& m_Guardian;
  Publisher m_Publisher;
};

/// The name of the only file where planes are not kept apart, in a pattern's {plane}.
inline constexpr const char* AllPlanes = "all";

/// The paths that a device's files would have, in the order of the planes; one if not planar. Where
/// the pattern has no {plane}, "-" and the plane's name come before the extension. No two are
/// the same, whatever the planes are called.
[[nodiscard]] std::vector<std::string> FilePaths(const DeliveryOrder& order,
                                                 const std::vector<std::string>& planes);

}  // namespace rastrel::odalis
