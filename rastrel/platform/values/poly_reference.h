#pragma once

/// Counted references to the host's polygons.

#include <cstdint>
#include <memory>
#include <utility>

#include "rastrel/export.h"

/// The allocator of the host's polygon vectors.
template <class Element>
using SfAllocator = std::allocator<Element>;

/// The base of all polygons: a count of references, kept in the object. One thread at a time.
class RASTREL_API PolyBaseClass2 {
 public:
  PolyBaseClass2() = default;
  /// A copy begins with no references of its own.
  PolyBaseClass2(const PolyBaseClass2&) noexcept {}
  /// References are to the object and not to its value.
  // cppcheck-suppress operatorEqVarError
  PolyBaseClass2& operator=(const PolyBaseClass2&) noexcept { return *this; }
  virtual ~PolyBaseClass2();

  /// Counts a reference, unless the count is negative: such an object is not counted.
  void AddReference() {
    if (m_References >= 0) ++m_References;
  }
  /// Takes one away. The object is deleted when the count falls from 1 to 0; a count of 0 or less
  /// stays as it is.
  void ReleaseReference() {
    if (m_References <= 0) return;
    if (--m_References == 0) delete this;
  }
  /// References that hold the object; negative for one that is not counted.
  [[nodiscard]] std::int32_t GetReferenceCount() const { return m_References; }

 private:
  std::int32_t m_References = 0;
};

/// A counted reference to a polygon object. Null when it is new.
template <class Object>
class PolyReference {
 public:
  PolyReference() = default;
  /// Takes a reference of its own; null is allowed.
  explicit PolyReference(Object* object) : m_Object(object) {
    if (m_Object != nullptr) m_Object->AddReference();
  }
  PolyReference(const PolyReference& other) : PolyReference(other.m_Object) {}
  PolyReference(PolyReference&& other) noexcept
      : m_Object(std::exchange(other.m_Object, nullptr)) {}
  PolyReference& operator=(PolyReference other) noexcept {
    std::swap(m_Object, other.m_Object);
    return *this;
  }
  ~PolyReference() {
    if (m_Object != nullptr) m_Object->ReleaseReference();
    // An object with a negative count is not the references' to delete.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  }

  /// The object, owned by all its references together; null if there is none.
  [[nodiscard]] Object* Get() const { return m_Object; }
  /// REQUIRES, as the next one does: the reference is not null.
  Object* operator->() const { return m_Object; }
  Object& operator*() const { return *m_Object; }
  explicit operator bool() const { return m_Object != nullptr; }

 private:
  Object* m_Object = nullptr;
};
