#include <atomic>

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/standalone/headless_views.h"
#include "rastrel/platform/standalone/standalone_host.h"

// Which host is in force. Defined here and not beside the interfaces, which know no host: a program
// that brings none gets the one of this folder.
namespace rastrel::host {
namespace {

std::atomic<Host*>& InstalledHost() {
  static std::atomic<Host*> host{nullptr};
  return host;
}

}  // namespace

DialogViews& Host::GetDialogViews() {
  static standalone::HeadlessViews views;
  return views;
}

void SetHost(Host* host) { InstalledHost().store(host, std::memory_order_release); }

Host& GetHost() {
  // Never destroyed: a thread of the library may still ask while the process ends.
  static standalone::StandaloneHost* const standalone = new standalone::StandaloneHost;
  Host* const host = InstalledHost().load(std::memory_order_acquire);
  return host != nullptr ? *host : *standalone;
}

}  // namespace rastrel::host
