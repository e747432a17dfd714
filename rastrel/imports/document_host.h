#pragma once

#include <optional>

#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/values/color.h"

class CGenericPlateObject;

namespace rastrel::host {
class Application;
class TextCompose;
}  // namespace rastrel::host

namespace rastrel::imports {

/// The parts of the host that an import builds objects with. Valid while the host is installed.
struct DocumentHost {
  host::ObjectStore& store;
  host::TextCompose& text;
  host::Application& application;
};

/// The open document of the host in force; nothing if the host has none, which is written to the
/// application log, tag "[Import]".
[[nodiscard]] std::optional<DocumentHost> FindDocumentHost();

/// A color of the document's palette by its name; black if the palette has no such name.
[[nodiscard]] CVKColor PaletteColorOrBlack(host::Application& application, const wchar_t* name);

/// The plate object of a handle; null if it is gone or another object.
[[nodiscard]] CGenericPlateObject* PlateObjectOf(host::ObjectStore& store,
                                                 host::ObjectHandle object);

}  // namespace rastrel::imports
