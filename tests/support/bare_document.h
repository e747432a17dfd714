#pragma once

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"

/// A document of a host that overrides only the operations that it must: all others are the
/// defaults. The overrides count their calls, so that a test sees which of them a default makes.
namespace rastrel::test {

class BareItem : public CGenericItem {
 public:
  int Add(int, int, int, host::ObjectHandle&) override { return 0; }
};

class BareElement : public DBElement {
 public:
  CGenericItem* GetPlaceholderItem() override { return nullptr; }
  bool IsFilled() const override { return false; }
};

class BareStore : public host::ObjectStore {
 public:
  using ObjectHandle = host::ObjectHandle;
  using ListHandle = host::ListHandle;

  void UNOpenStep(const wchar_t*) override { ++m_Calls; }
  void UNCloseStep() override { ++m_Calls; }
  ListHandle DBCreateList(ObjectHandle, int, ObjFilter) override { return ++m_Calls, List; }
  ListHandle DSCreateSelectedList() override { return ++m_Calls, List; }
  void DBDestroyList(ListHandle) override { ++m_Calls; }
  ObjectHandle DBGetFirstMember(ListHandle) override { return ++m_Calls, Object; }
  ObjectHandle DBGetNextMember(ListHandle) override { return ++m_Calls, Object; }
  ObjectHandle DBGetLastMember(ListHandle) override { return ++m_Calls, Object; }
  ObjectHandle DBInsertElement(const ELEMENT_ATTRIBUTES*, int, const host::ElementData&, int, int,
                               int, int, bool) override {
    return ++m_Calls, Object;
  }
  DBElement* DBGetObjectElement(ObjectHandle) override { return ++m_Calls, nullptr; }
  int DSAddObject(ObjectHandle) override { return ++m_Calls, 1; }
  int DSAddSourceObject(ObjectHandle, int, ObjectHandle) override { return ++m_Calls, 1; }
  void DBDeselectAll() override { ++m_Calls; }
  void DBSetLayer(ObjectHandle, const CVKColor&) override { ++m_Calls; }
  void DBSetLineColor(ObjectHandle, const CVKColor&) override { ++m_Calls; }
  int DBGetLineStyle(ObjectHandle, LINESTYLE&) override { return ++m_Calls, 1; }
  void DBSetLineStyle(ObjectHandle, const LINESTYLE&) override { ++m_Calls; }
  int DBGetSheetLayer(ObjectHandle) override { return ++m_Calls, 1; }
  void DBSetSheetLayer(ObjectHandle, int) override { ++m_Calls; }
  VK_PAGE_RANGE DBGetPageRange(ObjectHandle) override { return ++m_Calls, VK_PAGE_RANGE(); }
  void DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) override {
    ++m_Calls;
    m_Object = object;
    m_Pages = pages;
  }
  void DBSetTrait(ObjectHandle, int, int) override { ++m_Calls; }
  void DBInvalidateBounds(ObjectHandle) override { ++m_Calls; }
  void DBValidateBounds(ObjectHandle) override { ++m_Calls; }
  void InvalidateObject(ObjectHandle, int) override { ++m_Calls; }

  static constexpr ObjectHandle Object = 2;
  static constexpr ListHandle List{7};

  int m_Calls = 0;            ///< of the overrides
  ObjectHandle m_Object = 0;  ///< of the last DBSetPageRange
  VK_PAGE_RANGE m_Pages;      ///< of the last DBSetPageRange
};

class BareText : public host::TextCompose {
 public:
  void SetOpenParagraphInfo(ParagraphInfo&, int) override { ++m_Calls; }
  int OpenParagraph(int, const ParagraphInfo&, const NewWorldPt&, const NewWorldPt&) override {
    return ++m_Calls, 0;
  }
  void GetCurParagraph(CurrentParagraph&) override { ++m_Calls; }
  void CloseParagraph(int, const ParagraphInfo&) override { ++m_Calls; }
  void SetTextLineJustifyMode(paragraphStruct*, list_s*, int) override { ++m_Calls; }
  void SetTextLineJustification(paragraphStruct*, list_s*, int) override { ++m_Calls; }
  CWorldRect GetTextFrame(const paragraphStruct*) override { return ++m_Calls, CWorldRect(); }
  void FitTextToFrame(paragraphStruct*, list_s*) override { ++m_Calls; }
  void GetDefaultAttributes(ELEMENT_ATTRIBUTES&) override { ++m_Calls; }
  const FontRecord* AddFont(int, int, const wchar_t*, int, int) override {
    return ++m_Calls, nullptr;
  }
  void edPasteString(const wchar_t*, int, int, const void*, bool) override { ++m_Calls; }

  int m_Calls = 0;  ///< of the overrides
};

class BareFontReplacement : public CFontReplacement {
 public:
  const FontRecord* GetReplacementFont(const wchar_t*, int, int) override { return nullptr; }
};

class BareApplication : public host::Application {
 public:
  int FindPaletteColor(const wchar_t*, CVKFullColor&) override { return ++m_Calls, 1; }
  using host::Application::FindPaletteColor;
  void GetSignBlankSize(double&, double&) override { ++m_Calls; }
  void SetSignBlankSize(double, double, int) override { ++m_Calls; }
  int GetOriginPosIndex() override { return ++m_Calls, 1; }
  int GetDisplayPage() override { return ++m_Calls, 1; }
  int WhatisMaxNumberofPages(int) override { return ++m_Calls, 1; }
  void UpdatePageWindow(int) override { ++m_Calls; }
  int GetNextEmptyLayer() override { return ++m_Calls, 1; }
  void AddNewSheetLayer(int) override { ++m_Calls; }
  std::unique_ptr<CGenericPlateObject> NewGenericPlateObject(int, double, double, const CWorldRect&,
                                                             double, double) override {
    return ++m_Calls, nullptr;
  }
  void SetPlateObjectParameters(const CWorldRect&, double, double) override { ++m_Calls; }
  host::ObjectHandle AdjustPlateObjects(int, int, int) override { return ++m_Calls, 2; }
  void SetXMLDrillPoint(int, double) override { ++m_Calls; }
  void SetDrillPointObj(const NewWorldPt&) override { ++m_Calls; }

  int m_Calls = 0;  ///< of the overrides
};

}  // namespace rastrel::test
