#include "rastrel/platform/host/placed_graphics.h"

CGenericEPS::~CGenericEPS() = default;
CGenericPS::~CGenericPS() = default;
CGenericPDF::~CGenericPDF() = default;
CGenericCFPlane::~CGenericCFPlane() = default;
CVKBitmap::~CVKBitmap() = default;
