#include "rastrel/platform/host/generic_item.h"

CGenericItem::~CGenericItem() = default;

int CGenericItem::CreatePreviewBmp(const wchar_t*) { return 0; }

DBElement::~DBElement() = default;

ParagraphEle* DBElement::GetParagraph() { return nullptr; }
