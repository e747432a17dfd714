#pragma once

#include "rastrel/export.h"

class CArchive;
class CDumpContext;
class CObject;

/// The record of a class at run time: its name, its base class, and how to make an object.
struct CRuntimeClass {
  const char* m_lpszClassName;        ///< the class's name, ASCII
  unsigned m_wSchema;                 ///< version for archives of objects; not used here
  CObject* (*m_pfnCreateObject)();    ///< null if the class can't be created dynamically
  const CRuntimeClass* m_pBaseClass;  ///< null at the root

  /// A new object of the class, which the caller owns; null if it can't be created dynamically.
  [[nodiscard]] CObject* CreateObject() const {
    return m_pfnCreateObject == nullptr ? nullptr : m_pfnCreateObject();
  }
  /// True if this class is `base` or is derived from it.
  [[nodiscard]] bool IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* one = this; one != nullptr; one = one->m_pBaseClass)
      if (one == base) return true;
    return false;
  }
};

/// The framework's root class: the run-time class, persistence, and two diagnostic operations that
/// do nothing here. The order of the virtual operations is part of the binary interface.
class RASTREL_API CObject {
 public:
  /// The object's own class. Never null.
  virtual CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  /// Reads or writes the object, by the archive's direction. A derived class overrides it; this one
  /// does nothing.
  virtual void Serialize(CArchive& archive);
  /// Does nothing.
  virtual void AssertValid() const;
  /// Does nothing.
  virtual void Dump(CDumpContext& context) const;

  /// The record of CObject itself; it can't be created dynamically.
  static CRuntimeClass classCObject;
  /// The class of CObject itself.
  static CRuntimeClass* GetThisClass();

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

/// Declares GetRuntimeClass, CreateObject, GetThisClass and the class's record. The virtual
/// operation overrides the slot of CObject.
#define RASTREL_DECLARE_DYNCREATE(class_name)            \
  static CRuntimeClass class##class_name;                \
  /** The record of this class. */                       \
  static CRuntimeClass* GetThisClass();                  \
  /** The object's own class. */                         \
  CRuntimeClass* GetRuntimeClass() const override;       \
  /** A new object of this class; the caller owns it. */ \
  static CObject* CreateObject();

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names of classes.
/// Defines the members that RASTREL_DECLARE_DYNCREATE declares. Used in one source, at global
/// scope.
#define RASTREL_IMPLEMENT_DYNCREATE(class_name, base_name)                          \
  CRuntimeClass class_name::class##class_name {                                     \
#class_name, 0xFFFF, class_name::CreateObject, &base_name::class##base_name     \
  };                                                                                \
  CRuntimeClass* class_name::GetThisClass() { return &class##class_name; }          \
  CRuntimeClass* class_name::GetRuntimeClass() const { return &class##class_name; } \
  CObject* class_name::CreateObject() { return new class_name; }
// NOLINTEND(bugprone-macro-parentheses)
