#pragma once

#include <cstddef>
#include <cstdint>

#include "rastrel/export.h"

/// Which of the host's stores a setting lives in. The library uses the user's.
enum DataStoreType : int { DS_MACHINE = 0, DS_USER = 1 };

// The host's settings by section and key. Names are compared without regard to ASCII case. The last
// argument of each call is reserved and null. Any thread may call.

/// A whole number, or `defaultValue` if there is none or it is no number.
RASTREL_API int GetIntKorvane(const wchar_t* section, const wchar_t* key, int defaultValue,
                              DataStoreType store, void* reserved);
/// Copies a text into `buffer`, cut to `size` wide characters with its terminator. Non-zero if a
/// value was found; `buffer` is left as it was otherwise.
RASTREL_API int GetStringKorvane(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                                 std::uint32_t size, DataStoreType store, void* reserved);
/// As GetStringKorvane, but a missing value empties the buffer.
RASTREL_API int GetStringKorvaneNull(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                                     std::uint32_t size, DataStoreType store, void* reserved);
/// Stores a whole number. Non-zero if it was stored.
RASTREL_API int WriteIntKorvane(const wchar_t* section, const wchar_t* key, int value,
                                DataStoreType store, void* reserved);
/// Stores a text. Non-zero if it was stored.
RASTREL_API int WriteStringKorvane(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                   DataStoreType store, void* reserved);
