#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/host/placed_graphics.h"

/// An interface's identifier, in the order in which it is written.
struct InterfaceId {
  std::uint32_t first = 0;
  std::uint16_t second = 0;
  std::uint16_t third = 0;
  std::uint8_t rest[8] = {};
  bool operator==(const InterfaceId&) const = default;
};

/// One separated plane, read from its ".info" file. It lives as long as the reader that gave it.
/// Every operation gives non-zero for success.
class RASTREL_API CFMPlane {
 public:
  CFMPlane() = default;
  virtual ~CFMPlane();
  CFMPlane(const CFMPlane&) = delete;
  CFMPlane& operator=(const CFMPlane&) = delete;

  /// Tells the host's directory of programs (type 2) and, where it has one, the key of its
  /// language.
  virtual int SetBaseDirectory(const wchar_t* path) = 0;
  virtual int SetLanguageKey(const wchar_t* key) = 0;
  /// Opens a plane by the path of its ".info" file.
  virtual int Open(const wchar_t* path) = 0;
  /// Pixels across and rows.
  virtual int GetDimensions(std::int32_t& width, std::int32_t& height) = 0;
  /// The pixels as one block with the head that belongs to it, rows from the top. Both are the
  /// plane's until they are given back, which happens once, also after a failure elsewhere.
  virtual int GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) = 0;
  virtual void ReleasePixels(const BITMAPINFOHEADER* header, std::span<const std::byte> pixels) = 0;
};

/// What the plane reader's library creates.
class RASTREL_API CFMDllIF {
 public:
  CFMDllIF() = default;
  virtual ~CFMDllIF();
  CFMDllIF(const CFMDllIF&) = delete;
  CFMDllIF& operator=(const CFMDllIF&) = delete;

  /// The interface of that identifier, owned by this object; null if it has none.
  [[nodiscard]] virtual CFMPlane* GetInterface(const InterfaceId& id) = 0;
};

namespace rastrel::host {

/// A library that is loaded while the program runs; null is none.
using LibraryHandle = void*;

/// Finding and loading the plane reader's library "cfplane.dll". A host that has its reader built
/// in gives any handle that is not null, and the two functions. Only the user interface thread
/// calls.
class RASTREL_API PlaneReader {
 public:
  PlaneReader() = default;
  virtual ~PlaneReader();
  PlaneReader(const PlaneReader&) = delete;
  PlaneReader& operator=(const PlaneReader&) = delete;

  /// The functions that the library exports: one makes a reader, the other ends it.
  using CreateFunction = CFMDllIF* (*)();
  using DestroyFunction = void (*)(CFMDllIF*);

  /// The path of a library on the system's search path; empty when there is none.
  [[nodiscard]] virtual std::wstring SearchPath(const wchar_t* fileName) = 0;
  /// Loads a library by its path or its bare name; null when it can't be loaded.
  [[nodiscard]] virtual LibraryHandle LoadLibrary(const wchar_t* path) = 0;
  /// Exports by their decorated names; null for one that is missing.
  [[nodiscard]] virtual CreateFunction GetCreateFunction(LibraryHandle library,
                                                         const char* name) = 0;
  [[nodiscard]] virtual DestroyFunction GetDestroyFunction(LibraryHandle library,
                                                           const char* name) = 0;
  /// Gives a library back.
  virtual void FreeLibrary(LibraryHandle library) = 0;
};

}  // namespace rastrel::host
