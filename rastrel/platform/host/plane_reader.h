#pragma once

/// Finding, loading and using the reader of separated planes.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/values/bitmap_header.h"

/// An interface's identifier, with its fields in the order in which it is written.
struct InterfaceId {
  std::uint32_t first = 0;
  std::uint16_t second = 0;
  std::uint16_t third = 0;
  std::uint8_t rest[8] = {};
  bool operator==(const InterfaceId&) const = default;
};

/// The identifier of `CFMPlane`, by which a conversion asks a reader for the plane that it opens:
/// {20D77C57-E591-4554-9341-193D5265AEAD}.
inline constexpr InterfaceId PlaneInterfaceId{
    0x20D77C57, 0xE591, 0x4554, {0x93, 0x41, 0x19, 0x3D, 0x52, 0x65, 0xAE, 0xAD}};

/// One separated plane, read from its ".info" file. It belongs to the reader that returned it and
/// ends with it. Every operation returns non-zero for success. Paths and keys are wide and end with
/// a zero. Only the user interface thread uses it.
class RASTREL_API CFMPlane {
 public:
  CFMPlane() = default;
  virtual ~CFMPlane();
  CFMPlane(const CFMPlane&) = delete;
  CFMPlane& operator=(const CFMPlane&) = delete;

  /// Sets the host's directory of programs (PATH_PROGRAMS).
  virtual int SetBaseDirectory(const wchar_t* path) = 0;
  /// Sets the key of the host's language, if it has one.
  virtual int SetLanguageKey(const wchar_t* key) = 0;
  /// Opens a plane by the path of its ".info" file.
  virtual int Open(const wchar_t* path) = 0;
  /// Reads the size of the open plane: pixels across, and rows.
  virtual int GetDimensions(std::int32_t& width, std::int32_t& height) = 0;
  /// Reads the pixels of the open plane as one block, and their header. The block is as a bitmap
  /// wants it: rows from the top, each padded to 4 bytes; of 24 bits (blue, green, red) or of 8
  /// (one gray sample, 0 black and 255 white, without a table of colors), as `biBitCount` says.
  /// Both belong to the plane until `ReleasePixels`, which must be called once for each success.
  virtual int GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) = 0;
  /// Gives them back.
  virtual void ReleasePixels(const BITMAPINFOHEADER* header, std::span<const std::byte> pixels) = 0;
  /// Why the last operation that failed did, as one line for the log, with the file that is at
  /// fault. Never null; valid until the next call. By default empty.
  [[nodiscard]] virtual const wchar_t* GetFailure();
};

/// A reader: the object that the plane reader's library creates. Only the user interface thread
/// uses it.
class RASTREL_API CFMDllIF {
 public:
  CFMDllIF() = default;
  virtual ~CFMDllIF();
  CFMDllIF(const CFMDllIF&) = delete;
  CFMDllIF& operator=(const CFMDllIF&) = delete;

  /// The interface of that identifier, owned by this object; null if it has none.
  [[nodiscard]] virtual CFMPlane* GetInterface(const InterfaceId& id) = 0;
};

/// The two functions by which a library gives away a class of its own. A plane reader's library
/// defines them for `CFMDllIF` and exports them; whoever loads it finds them by the names that the
/// compiler gave them, so that nothing is linked:
///
///     template <>
///     CFMDllIF* DynamicExport<CFMDllIF>::Create() { return new (std::nothrow) Reader; }
///     template <>
///     void DynamicExport<CFMDllIF>::Destroy(CFMDllIF* reader) { delete reader; }
///
/// Nothing may be thrown out of either.
template <typename Interface>
class RASTREL_API DynamicExport {
 public:
  /// Makes an instance, which the caller gives back to `Destroy`; null if that fails.
  static Interface* Create();
  /// Destroys an instance of `Create`, once.
  static void Destroy(Interface* instance);
};

namespace rastrel::host {

/// A library that is loaded while the program runs; null is none.
using LibraryHandle = void*;

/// Finds and loads the plane reader's library "cfplane.dll". A host that has its reader built in
/// returns any handle that is not null, and the two functions. A handle that is the loader's own
/// one of the module that this library is part of is never given back. Only the user interface
/// thread calls.
class RASTREL_API PlaneReader {
 public:
  PlaneReader() = default;
  virtual ~PlaneReader();
  PlaneReader(const PlaneReader&) = delete;
  PlaneReader& operator=(const PlaneReader&) = delete;

  /// Makes a reader, which the caller owns; null if that fails. Exported by the library.
  using CreateFunction = CFMDllIF* (*)();
  /// Destroys a reader, once. Exported by the library.
  using DestroyFunction = void (*)(CFMDllIF*);

  /// The path of a library on the system's search path; empty if there is none.
  [[nodiscard]] virtual std::wstring SearchPath(const wchar_t* fileName) = 0;
  /// Loads a library by its path or its bare name. The caller gives it back with `FreeLibrary`.
  /// Null if it can't be loaded.
  [[nodiscard]] virtual LibraryHandle LoadLibrary(const wchar_t* path) = 0;
  /// The function that makes a reader, by its decorated name (ASCII); null if it is missing. Valid
  /// until the library is given back.
  [[nodiscard]] virtual CreateFunction GetCreateFunction(LibraryHandle library,
                                                         const char* name) = 0;
  /// The function that destroys a reader, in the same way.
  [[nodiscard]] virtual DestroyFunction GetDestroyFunction(LibraryHandle library,
                                                           const char* name) = 0;
  /// Gives a library back, once.
  virtual void FreeLibrary(LibraryHandle library) = 0;
};

}  // namespace rastrel::host
