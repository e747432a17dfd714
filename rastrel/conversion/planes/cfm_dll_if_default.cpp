#include "rastrel/conversion/planes/cfm_dll_if_default.h"

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/shared_library.h"

namespace host = rastrel::host;

std::string DecoratedName::Around(const char* className) const {
  return std::string(head) + className + tail;
}

template <typename Library>
struct DynamicLinkBase<Library>::Binding {
  host::PlaneReader* reader = nullptr;  // that loaded it
  host::LibraryHandle module = nullptr;
  host::PlaneReader::CreateFunction create = nullptr;
  host::PlaneReader::DestroyFunction destroy = nullptr;
  unsigned users = 0;
};

template <typename Library>
typename DynamicLinkBase<Library>::Binding& DynamicLinkBase<Library>::Shared() {
  static Binding binding;
  return binding;
}

template <typename Library>
bool DynamicLinkBase<Library>::Bind() {
  host::PlaneReader* const reader = host::GetHost().GetPlaneReader();
  if (reader == nullptr) return false;
  std::wstring path = reader->SearchPath(Library::FileName);
  if (path.empty() || path.size() >= Library::PathLimit) path = Library::FileName;

  Binding& shared = Shared();
  if (shared.create != nullptr && shared.destroy != nullptr) {
    ++shared.users;
    return true;
  }
  Binding bound{.reader = reader, .module = reader->LoadLibrary(path.c_str()), .users = 1};
  if (bound.module == nullptr) return false;
  bound.create =
      reader->GetCreateFunction(bound.module, CreateName.Around(Library::ClassName).c_str());
  bound.destroy =
      reader->GetDestroyFunction(bound.module, DestroyName.Around(Library::ClassName).c_str());
  if (bound.create == nullptr || bound.destroy == nullptr) {
    reader->FreeLibrary(bound.module);
    return false;
  }
  shared = bound;
  return true;
}

template <typename Library>
void DynamicLinkBase<Library>::Release() {
  Binding& shared = Shared();
  if (--shared.users > 0) return;
  // Freeing the own module would take this code away. Its functions stay bound for the next user.
  if (shared.module == rastrel::os::OwnModule()) return;
  shared.reader->FreeLibrary(shared.module);
  shared = {};
}

template <typename Library>
DynamicLinkBase<Library>::DynamicLinkBase() : m_bCounted(Bind()) {
  if (m_bCounted) m_pInstance = Shared().create();
}

template <typename Library>
DynamicLinkBase<Library>::~DynamicLinkBase() {
  if (m_pInstance != nullptr) Shared().destroy(m_pInstance);
  if (m_bCounted) Release();
}

template class DynamicLinkBase<CFMDllIFDefault>;
