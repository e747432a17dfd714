#include "rastrel/platform/host/color.h"

void CVKColor::SetColor(const double& c, const double& m, const double& y, const double& k,
                        COLORSPACE space) {
  m_Components = {c, m, y, k};
  m_Space = space;
}

void CVKColor::SetColor(const double& r, const double& g, const double& b, COLORSPACE space) {
  m_Components = {r, g, b, 0};
  m_Space = space;
}
