#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace rastrel::host {
class Application;
}  // namespace rastrel::host

/// The host's plotters, of which a template may choose one.
namespace rastrel::imports {

/// A name of this many characters or more chooses no plotter.
inline constexpr std::size_t PlotterNameSize = 200;
/// Plotters that are looked at. A setting that counts more of them is broken.
inline constexpr int MaxPlotters = 4096;

/// The index of the first plotter of exactly that name; nothing without one. Reads settings, and
/// changes nothing.
[[nodiscard]] std::optional<int> FindPlotter(host::Application& application,
                                             std::wstring_view name);

/// Makes the first plotter of exactly that name the one in use (setting
/// "plottersetup"/"DeviceUsed"). Without such a plotter the one in use stays.
void ChoosePlotter(host::Application& application, std::wstring_view name);

}  // namespace rastrel::imports
