#include "rastrel/platform/host/host.h"

#include <atomic>

#include "rastrel/platform/host/embedded_host.h"
#include "rastrel/platform/host/headless_faces.h"

namespace rastrel::host {
namespace {

std::atomic<Host*>& InstalledHost() {
  static std::atomic<Host*> host{nullptr};
  return host;
}

}  // namespace

Settings::~Settings() = default;
Directories::~Directories() = default;
Translation::~Translation() = default;
Host::~Host() = default;
void Host::BeginWaitCursor() {}

DialogFaces& Host::GetDialogFaces() {
  static HeadlessFaces faces;
  return faces;
}

ObjectStore* Host::GetObjectStore() { return nullptr; }
TextCompose* Host::GetTextCompose() { return nullptr; }
GraphicsIO* Host::GetGraphicsIO() { return nullptr; }
ContourCut* Host::GetContourCut() { return nullptr; }
PlaneReader* Host::GetPlaneReader() { return nullptr; }
Application* Host::GetApplication() { return nullptr; }

void SetHost(Host* host) { InstalledHost().store(host, std::memory_order_release); }

Host& GetHost() {
  // Never destroyed: a thread of the library may still ask while the process ends.
  static EmbeddedHost* const embedded = new EmbeddedHost;
  Host* const host = InstalledHost().load(std::memory_order_acquire);
  return host != nullptr ? *host : *embedded;
}

}  // namespace rastrel::host
