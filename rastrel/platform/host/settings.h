#pragma once

/// Reading and writing single settings of the host.

#include <cstddef>
#include <cstdint>

#include "rastrel/export.h"

/// Which of the host's stores a setting is in. The library uses the user's.
enum DataStoreType : int { DS_MACHINE = 0, DS_USER = 1 };

// The host's settings by section and key. Texts are wide and end with a zero. ASCII case of section
// and key does not count. A null section or key has no value and can't be written. The last
// argument of each call is reserved and null. Any thread may call; nothing throws.

/// The whole number of a setting: decimal digits with or without a sign. `defaultValue` if there is
/// no such setting, or its text is no such number or does not fit an int.
RASTREL_API int GetIntKorvane(const wchar_t* section, const wchar_t* key, int defaultValue,
                              DataStoreType store, void* reserved);
/// Copies the text of a setting into `buffer`, which holds `size` wide characters: a longer text is
/// cut, and the buffer always ends with a zero. Non-zero if there is such a setting; 0 leaves
/// `buffer` as it was. A null buffer, or a size of 0, receives nothing.
RASTREL_API int GetStringKorvane(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                                 std::uint32_t size, DataStoreType store, void* reserved);
/// As GetStringKorvane, but 0 makes the buffer an empty text.
RASTREL_API int GetStringKorvaneNull(const wchar_t* section, const wchar_t* key, wchar_t* buffer,
                                     std::uint32_t size, DataStoreType store, void* reserved);
/// Stores a whole number. Non-zero if it was stored; 0 leaves the old value.
RASTREL_API int WriteIntKorvane(const wchar_t* section, const wchar_t* key, int value,
                                DataStoreType store, void* reserved);
/// Stores a text, which must not be null. Non-zero if it was stored; 0 leaves the old value.
RASTREL_API int WriteStringKorvane(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                   DataStoreType store, void* reserved);
