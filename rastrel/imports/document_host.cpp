#include "rastrel/imports/document_host.h"

#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {

std::optional<DocumentHost> FindDocumentHost() {
  host::Host& present = host::GetHost();
  host::ObjectStore* const store = present.GetObjectStore();
  host::TextCompose* const text = present.GetTextCompose();
  host::Application* const application = present.GetApplication();
  if (store == nullptr || text == nullptr || application == nullptr) {
    CAppLog::Instance().Printf(L"[Import] the host has no document to import into");
    return std::nullopt;
  }
  return DocumentHost{.store = *store, .text = *text, .application = *application};
}

CVKColor PaletteColorOrBlack(host::Application& application, const wchar_t* name) {
  CVKFullColor color;
  if (application.FindPaletteColor(name, color) != 0) return color;
  return {0, COLORSPACE_RGB, 0, 0};
}

CGenericPlateObject* PlateObjectOf(host::ObjectStore& store, host::ObjectHandle object) {
  DBElement* const element = store.DBGetObjectElement(object);
  if (element == nullptr) return nullptr;
  return dynamic_cast<CGenericPlateObject*>(element->GetPlaceholderItem());
}

}  // namespace rastrel::imports
