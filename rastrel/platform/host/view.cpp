#include "rastrel/platform/host/view.h"

CVelumark5Doc::~CVelumark5Doc() = default;
CVelumark5View::~CVelumark5View() = default;
