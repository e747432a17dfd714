#include "rastrel/platform/host/sheet_layer.h"

CSheetLayerPalette::~CSheetLayerPalette() = default;
