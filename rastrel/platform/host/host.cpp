#include "rastrel/platform/host/host.h"

namespace rastrel::host {

Settings::~Settings() = default;
Directories::~Directories() = default;
Translation::~Translation() = default;
Host::~Host() = default;
void Host::BeginWaitCursor() {}

ObjectStore* Host::GetObjectStore() { return nullptr; }
TextCompose* Host::GetTextCompose() { return nullptr; }
GraphicsIO* Host::GetGraphicsIO() { return nullptr; }
ContourCut* Host::GetContourCut() { return nullptr; }
PlaneReader* Host::GetPlaneReader() { return nullptr; }
Application* Host::GetApplication() { return nullptr; }
std::optional<std::wstring> Host::GetLanguageKey() { return std::nullopt; }

}  // namespace rastrel::host
