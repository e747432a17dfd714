#include <algorithm>

#include "tests/support/recording_document.h"

namespace rastrel::test {

RecordingPlate::RecordingPlate(RecordingStore& store, std::string name, int count, double width,
                               double height, const CWorldRect& margins, double horizontalGap,
                               double verticalGap)
    : m_Store(store),
      m_Name(std::move(name)),
      m_Count(count),
      m_Width(width),
      m_Height(height),
      m_Margins(margins),
      m_HorizontalGap(horizontalGap),
      m_VerticalGap(verticalGap) {}

RecordingPlate::~RecordingPlate() {
  if (!m_InDocument) m_Store.m_Calls.Write(m_Name + " deleted");
}

int RecordingPlate::Add(int visible, int selectable, int reserved, host::ObjectHandle& object) {
  const std::string name = m_Name + ".Add";
  if (m_Store.m_Calls.Answer("Add", 1) == 0) {
    m_Store.m_Calls.Answered(NameText{"failed"}, name, visible, selectable, reserved);
    return 0;
  }
  object = m_Store.Make(0, false);
  RecordedObject& made = *m_Store.Find(object);
  made.item.reset(this);
  made.sheetLayer = 0;
  m_InDocument = true;
  m_Store.m_Calls.Answered(ObjectText{object}, name, visible, selectable, reserved);
  return 1;
}

int RecordingPlate::CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width,
                                                 double height) {
  return CreatePanes("CreatePanesWithOriginTopLeft", start, width, height, true);
}

int RecordingPlate::CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                                    double height) {
  return CreatePanes("CreatePanesWithOriginBottomLeft", start, width, height, false);
}

int RecordingPlate::CreatePanes(const char* name, const CWorldPoint& start, double width,
                                double height, bool downward) {
  m_Count = std::min(m_Count, m_Store.m_Calls.Answer(name, m_Count));
  m_TopLeft = {.x = start.x, .y = downward ? start.y : start.y + m_Height};
  return m_Store.m_Calls.Answered(m_Count, m_Name + '.' + name, start, width, height);
}

void RecordingPlate::ResetData(int count, double width, double height, const CWorldRect& margins,
                               double horizontalGap, double verticalGap,
                               const std::vector<host::ObjectHandle>& objects, int flag) {
  m_Store.m_Calls.Told(m_Name + ".ResetData", count, width, height, margins, horizontalGap,
                       verticalGap, NameText{"{" + std::string(objects.size(), '#') + "}"}, flag);
  m_Count = count;
  m_Width = width;
  m_Height = height;
  m_Margins = margins;
  m_HorizontalGap = horizontalGap;
  m_VerticalGap = verticalGap;
}

int RecordingPlate::GetPaneCount() const {
  return m_Store.m_Calls.Answered(m_Count, m_Name + ".GetPaneCount");
}

double RecordingPlate::GetPaneWidth() const {
  return m_Store.m_Calls.Answered(m_Width, m_Name + ".GetPaneWidth");
}

double RecordingPlate::GetPaneHeight() const {
  return m_Store.m_Calls.Answered(m_Height, m_Name + ".GetPaneHeight");
}

CWorldRect RecordingPlate::GetMargins() const {
  return m_Store.m_Calls.Answered(m_Margins, m_Name + ".GetMargins");
}

double RecordingPlate::GetHorizontalGap() const {
  return m_Store.m_Calls.Answered(m_HorizontalGap, m_Name + ".GetHorizontalGap");
}

double RecordingPlate::GetVerticalGap() const {
  return m_Store.m_Calls.Answered(m_VerticalGap, m_Name + ".GetVerticalGap");
}

CWorldRect RecordingPlate::BoundsOf(int pane) const {
  const double left = m_TopLeft.x + pane * (m_Width + m_HorizontalGap);
  return {
      .left = left, .top = m_TopLeft.y, .right = left + m_Width, .bottom = m_TopLeft.y - m_Height};
}

CWorldRect RecordingPlate::GetLastPaneBounds() const {
  return m_Store.m_Calls.Answered(m_Store.m_LastPaneBounds.value_or(BoundsOf(m_Count - 1)),
                                  m_Name + ".GetLastPaneBounds");
}

CPane* RecordingPlate::GetFirstPane() {
  m_Walk = 0;
  return GetNextPane();
}

CPane* RecordingPlate::GetNextPane() {
  if (m_Walk >= m_Count) {
    m_Store.m_Calls.Write(m_Name + " has no further pane");
    return nullptr;
  }
  const int pane = m_Walk++;
  m_Pane = std::make_unique<RecordingPane>(
      BoundsOf(pane), m_Store.m_PlateOfPane ? m_Store.m_PlateOfPane(m_Name, pane + 1) : 0);
  m_Store.m_Calls.Write(m_Name + " gives pane " + std::to_string(m_Walk));
  return m_Pane.get();
}

}  // namespace rastrel::test
