#include "host/plane_library.h"

#include <string_view>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/program_search.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::document {
namespace {

const os::SharedLibrary& LibraryOf(host::LibraryHandle library) {
  return *static_cast<const os::SharedLibrary*>(library);
}

// "libNAME.so" of "NAME.dll".
std::string SystemName(std::wstring_view name) {
  const std::wstring_view stem = name.ends_with(L".dll") ? name.substr(0, name.size() - 4) : name;
  return "lib" + os::Utf8FromWide(stem) + ".so";
}

Expected<os::SharedLibrary> OpenTrusted(const std::string& path) {
  if (auto trusted = os::CheckTrusted(path, os::DataRoot()); !trusted) return trusted.Error();
  return os::SharedLibrary::Open(path.c_str());
}

}  // namespace

std::wstring PlaneLibrary::SearchPath(const wchar_t* fileName) {
  const std::string program = os::ExecutablePath();
  const std::wstring beside = os::FromNative(program.substr(0, program.rfind('/') + 1)) + fileName;
  if (os::Exists(beside) && !os::IsDirectory(beside)) return beside;
  return os::FromNative(os::FindFileOnPath(os::Utf8FromWide(fileName)));
}

host::LibraryHandle PlaneLibrary::LoadLibrary(const wchar_t* path) {
  const std::wstring_view text = path;
  const bool isBareName = text.find_first_of(L"/\\") == std::wstring_view::npos;
  const std::string native = isBareName ? SystemName(text) : os::ToNative(text);
  auto library = isBareName ? os::SharedLibrary::Open(native.c_str()) : OpenTrusted(native);
  if (library) return &m_Libraries.emplace_back(*library);
  Failure failure = library.Error();
  failure.what = "load the plane reader";
  if (failure.where.empty()) failure.where = native;
  m_Report(failure);
  return nullptr;
}

host::PlaneReader::CreateFunction PlaneLibrary::GetCreateFunction(host::LibraryHandle library,
                                                                  const char* name) {
  CreateFunction function = nullptr;
  return LibraryOf(library).Bind(function, name) ? function : nullptr;
}

host::PlaneReader::DestroyFunction PlaneLibrary::GetDestroyFunction(host::LibraryHandle library,
                                                                    const char* name) {
  DestroyFunction function = nullptr;
  return LibraryOf(library).Bind(function, name) ? function : nullptr;
}

void PlaneLibrary::FreeLibrary(host::LibraryHandle library) {
  m_Libraries.remove_if([library](const auto& own) { return &own == library; });
}

}  // namespace rastrel::document
