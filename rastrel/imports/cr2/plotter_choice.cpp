#include "rastrel/imports/cr2/plotter_choice.h"

#include <algorithm>
#include <optional>
#include <string>

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/settings.h"

namespace rastrel::imports {

std::optional<int> FindPlotter(host::Application& application, std::wstring_view name) {
  const int count = GetIntKorvane(L"plottersetup", L"NumberDevices", 0, DS_USER, nullptr);
  for (int index = 0; index < std::min(count, MaxPlotters); ++index) {
    const std::wstring path = application.GGetPathDeviceInI(index);
    const std::optional<std::wstring> plotter =
        application.GetStringDevice(path.c_str(), L"setup", L"plottername");
    if (plotter && *plotter == name && name.size() < PlotterNameSize) return index;
  }
  return std::nullopt;
}

void ChoosePlotter(host::Application& application, std::wstring_view name) {
  const std::optional<int> index = FindPlotter(application, name);
  if (index) WriteIntKorvane(L"plottersetup", L"DeviceUsed", *index, DS_USER, nullptr);
}

}  // namespace rastrel::imports
