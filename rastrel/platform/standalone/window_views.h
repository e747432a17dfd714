#pragma once

/// Dialogs as windows of the desktop, by a component that is loaded when it is asked for.

#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/expected.h"

/// The optional component `rastrel-window.so` is beside the library's programs and is loaded by its
/// name. Nothing of the library needs it, or its toolkit.
namespace rastrel::host {

/// The name of the function that the component exports.
inline constexpr const char* MakeWindowViewsName = "RastrelMakeWindowViews";
/// The version of the interface in dialogs.h; a component of another version makes no views.
inline constexpr int WindowViewsVersion = 4;
/// The function's type. It returns the component's views, which it owns until the process ends;
/// null if no window can be shown, with `reason` set to a static text (UTF-8).
using MakeWindowViews = DialogViews*(int version, const char** reason);

/// Views that show dialogs as windows, for a host to return from `GetDialogViews`. The same object
/// in each call; it lives until the process ends. Only the thread that will show the dialogs may
/// call. A process without an application of the toolkit gets one with the first success.
///
/// Fails if the component or its toolkit is not installed, if the component is of another version,
/// or if there is no display that answers. The failure's `why` is then a text for the user.
[[nodiscard]] RASTREL_API Expected<DialogViews*> LoadWindowViews();

}  // namespace rastrel::host
