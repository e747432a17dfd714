#pragma once

#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/expected.h"

/// Dialogs as windows: an optional component, `rastrel-window.so` beside the other programs, that
/// is found and loaded when it is asked for. Nothing of the library needs it, or its toolkit.
namespace rastrel::host {

/// The name of the function that the component exports, and its kind. It returns null, and sets the
/// reason to a text that stays, if no window can be shown: there is no display. The version is that
/// of the interface in dialogs.h; a component that has another one refuses.
inline constexpr const char* MakeWindowViewsName = "RastrelMakeWindowViews";
inline constexpr int WindowViewsVersion = 1;
using MakeWindowViews = DialogViews*(int version, const char** reason);

/// Views that show dialogs as windows of the desktop, for a host to hand out. The same object at
/// each call, which lives till the process ends. Only the thread that will show the dialogs may
/// call. The reason in words (UTF-8) if there are none: the component is not installed, its toolkit
/// is not, or there is no display.
[[nodiscard]] RASTREL_API Expected<DialogViews*> LoadWindowViews();

}  // namespace rastrel::host
