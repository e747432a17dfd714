#pragma once

class CVKColor;
namespace rastrel::host {
class Application;
}  // namespace rastrel::host

namespace rastrel::imports {

/// Has the document's palette hold a color that an object of a template has: appends it, without a
/// name, if it is missing.
void AddMissingPaletteColor(host::Application& application, const CVKColor& color);

}  // namespace rastrel::imports
