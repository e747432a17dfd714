#include "rastrel/platform/values/spot_match.h"

void CSpotMatchItem::SetName(const CString& name) { m_Name = name; }

void CSpotMatchItem::SetColor(const CVKColor& color) { m_Color = color; }

void CSpotMatchItem::SetOriginalColor(const CVKColor& color) { m_OriginalColor = color; }

CSpotMatchList::CSpotMatchList() = default;
CSpotMatchList::CSpotMatchList(const CSpotMatchList&) = default;
CSpotMatchList::CSpotMatchList(CSpotMatchList&&) noexcept = default;
CSpotMatchList& CSpotMatchList::operator=(const CSpotMatchList&) = default;
CSpotMatchList& CSpotMatchList::operator=(CSpotMatchList&&) noexcept = default;
CSpotMatchList::~CSpotMatchList() = default;

void CSpotMatchList::push_back(const CSpotMatchItem& item) { m_Items.push_back(item); }
