#pragma once

#include <string>

#include "rastrel/platform/host/plane_reader.h"

/// The plane reader's library, as `DynamicLinkBase` binds it: its file name, and the class that it
/// exports.
struct CFMDllIFDefault {
  using Interface = CFMDllIF;
  static constexpr const wchar_t* FileName = L"cfplane.dll";
  static constexpr const char* ClassName = "CFMDllIF";
  /// The most characters that the path of the library may have on the search path, its terminator
  /// included. With more, the library counts as not found there.
  static constexpr std::size_t PathLimit = 260;
};

/// The decorated name of one of the two functions of `DynamicExport<CLASS>`, as this system's
/// compilers make it: the fixed texts around the class's name.
struct DecoratedName {
  const char* head;
  const char* tail;
  [[nodiscard]] std::string Around(const char* className) const;
};
/// `static CFMDllIF* Create()`. The 8 counts the letters of the class's name.
inline constexpr DecoratedName CreateName{"_ZN13DynamicExportI8", "E6CreateEv"};
/// `static void Destroy(CFMDllIF*)`.
inline constexpr DecoratedName DestroyName{"_ZN13DynamicExportI8", "E7DestroyEPS0_"};

/// One user of a library that is bound at run time through the host's `PlaneReader`: it has an
/// instance of the library's class for as long as it lives. All users of a process share one
/// binding of the library, which is loaded for the first and freed after the last, unless it is the
/// module that this code lives in. Users may overlap.
///
///     DynamicLinkBase<CFMDllIFDefault> reader;
///     if (!reader) return false;
///     CFMPlane* plane = reader->GetInterface(id);
///
/// The count of users is not locked: the user interface thread alone may use it. The host must stay
/// the same while there are users.
template <typename Library>
class DynamicLinkBase {
 public:
  using Interface = typename Library::Interface;

  /// Binds the library and makes an instance. Empty if the host has no plane reader, the library
  /// can't be loaded or lacks one of the two functions, or no instance can be made.
  DynamicLinkBase();
  /// Destroys the instance, and frees the library after the last user.
  ~DynamicLinkBase();
  DynamicLinkBase(const DynamicLinkBase&) = delete;
  DynamicLinkBase& operator=(const DynamicLinkBase&) = delete;

  /// Whether there is an instance.
  explicit operator bool() const { return m_pInstance != nullptr; }
  /// The instance. REQUIRES: there is one.
  Interface* operator->() const { return m_pInstance; }

 private:
  struct Binding;
  static Binding& Shared();
  [[nodiscard]] static bool Bind();
  static void Release();

  bool m_bCounted = false;
  Interface* m_pInstance = nullptr;
};

extern template class DynamicLinkBase<CFMDllIFDefault>;
