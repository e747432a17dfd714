#include "rastrel/platform/standalone/window_views.h"

#include "rastrel/platform/standalone/window_component.h"

namespace rastrel::host {

Expected<DialogViews*> LoadWindowViews() {
  static DialogViews* views = nullptr;
  if (views != nullptr) return views;
  const auto make = standalone::FindInWindowComponent<MakeWindowViews>(MakeWindowViewsName);
  if (!make) return make.Error();
  const char* reason = nullptr;
  views = (*make)(WindowViewsVersion, &reason);
  if (views != nullptr) return views;
  return FailureOf(reason != nullptr ? reason : "no window can be shown");
}

}  // namespace rastrel::host
