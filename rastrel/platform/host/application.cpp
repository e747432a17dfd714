#include "rastrel/platform/host/application.h"

#include "rastrel/platform/host/base_dir.h"

namespace rastrel::host {

Application::~Application() = default;

// The defaults of operations that a host leaves out.

int Application::FindPaletteColor(int, CVKColor&) { return 0; }
int Application::IsColorInPalette(const CVKColor&) { return 0; }
int Application::AddColorToPalette(const CVKFullColor&) { return 0; }
int Application::IsInvisibleColor(const CVKColor&) { return 0; }
int Application::GetSignBlankOriginPos() { return 7; }
void Application::SetSignBlankOriginPos(int) {}
void Application::GetGridOriginXY(double& x, double& y, double& third) { x = y = third = 0; }
std::optional<int> Application::GetEmptySeparationLayer() { return std::nullopt; }
CSheetLayerPalette* Application::GetSheetLayerPalette() { return nullptr; }
void Application::SetActiveOnlySheetLayer(int) {}
void Application::SetCurrentSheetLayer(int) {}
void Application::AddPaneToPlateObject(ObjectHandle) {}
void Application::AddPanesToPlateObject(ObjectHandle, int) {}
int Application::LoadTHZ(CVelumark5Doc*, CWnd*, const wchar_t*, int, int) { return 0; }
std::unique_ptr<CGenericEPS> Application::NewGenericEPS(const wchar_t*) { return nullptr; }
std::unique_ptr<CGenericCFPlane> Application::NewGenericCFPlane(const wchar_t*, int, int) {
  return nullptr;
}
CVKBitmap* Application::NewVKBitmap() { return nullptr; }
void Application::DeleteVKBitmap(CVKBitmap*) {}
CVelumark5View* Application::UIGetActiveView() { return nullptr; }
CWnd* Application::GetWindowHandle(int) { return nullptr; }
void Application::HourGlass(int) {}
void Application::TMessageBox(const wchar_t*, const wchar_t*, unsigned) {}
void Application::MessageBoxW(const wchar_t*, const wchar_t*, unsigned) {}
void Application::ZoomObj() {}
int Application::GetCurrentUnits() { return 0; }
std::wstring Application::GGetPathDeviceInI(int) { return {}; }
std::optional<std::wstring> Application::GetStringDevice(const wchar_t*, const wchar_t*,
                                                         const wchar_t*) {
  return std::nullopt;
}
int Application::WriteStringDevice(const wchar_t*, const wchar_t*, const wchar_t*) { return 0; }
int Application::GetQueueComChannel(const wchar_t*) { return 0; }
void Application::SetImportRotation(double) {}
void Application::ExpectCutLine(bool) {}
std::wstring Application::LoadBaseDir() { return CBaseDir(PATH_TEMP); }

}  // namespace rastrel::host
