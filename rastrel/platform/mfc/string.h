#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// The framework's string type, which is the standard wide string here: each character is one
/// Unicode code point.
using CString = std::wstring;

/// The framework's array of strings. It owns its elements. One thread at a time. An index below 0
/// or not below the size is an error of the caller, as with std::vector.
class CStringArray {
 public:
  /// The number of elements, under both names.
  [[nodiscard]] int GetSize() const { return static_cast<int>(m_Elements.size()); }
  [[nodiscard]] int GetCount() const { return GetSize(); }
  [[nodiscard]] bool IsEmpty() const { return m_Elements.empty(); }
  /// The element at an index from 0, valid until the array changes.
  [[nodiscard]] const CString& GetAt(int index) const { return m_Elements[Place(index)]; }
  [[nodiscard]] const CString& operator[](int index) const { return GetAt(index); }
  [[nodiscard]] CString& operator[](int index) { return m_Elements[Place(index)]; }
  /// Appends an element, and returns its index.
  int Add(CString element) {
    m_Elements.push_back(std::move(element));
    return GetSize() - 1;
  }
  void RemoveAll() { m_Elements.clear(); }

 private:
  static std::size_t Place(int index) { return static_cast<std::size_t>(index); }

  std::vector<CString> m_Elements;
};
