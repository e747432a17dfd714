#include "cutting/view/knife_way.h"

#include <algorithm>
#include <iterator>

namespace rastrel::cutting {

KnifeWay::KnifeWay(const CutScene& scene) : m_Scene(&scene) {
  Point at{0, 0};
  for (std::size_t i = 0; i < scene.Strokes().size(); ++i) {
    if (!scene.IsShown(i)) continue;
    const CutStroke& stroke = scene.Strokes()[i];
    for (int pass = 1; pass <= stroke.passes; ++pass) {
      const double travel = Distance(at, scene.Start(i));
      m_Steps.push_back({m_Length, m_Length + travel, i, pass, m_Strokes, at});
      m_Travel += travel;
      m_Length += travel + stroke.length;
      at = scene.End(i);
    }
    ++m_Strokes;
  }
}

const KnifeWay::Step& KnifeWay::StepAt(double length) const {
  const auto after = std::ranges::upper_bound(m_Steps, length, {}, &Step::begin);
  return after == m_Steps.begin() ? m_Steps.front() : *std::prev(after);
}

KnifePlace KnifeWay::At(double length) const {
  const double within = std::clamp(length, 0.0, m_Length);
  const Step& step = StepAt(within);
  KnifePlace place;
  place.stroke = step.stroke;
  place.pass = step.pass;
  place.isTravel = within < step.work;
  if (!place.isTravel) {
    place.done = within - step.work;
    place.at = m_Scene->Along(step.stroke, place.done).at;
    return place;
  }
  const Point to = m_Scene->Start(step.stroke);
  const double part = (within - step.begin) / (step.work - step.begin);
  place.at = {step.from.x + (to.x - step.from.x) * part, step.from.y + (to.y - step.from.y) * part};
  return place;
}

double KnifeWay::BeginOf(std::size_t shown) const {
  const auto found = std::ranges::lower_bound(m_Steps, shown, {}, &Step::shown);
  return found == m_Steps.end() ? m_Length : found->work;
}

std::size_t KnifeWay::CountAt(double length) const {
  return m_Steps.empty() ? 0 : StepAt(std::clamp(length, 0.0, m_Length)).shown + 1;
}

}  // namespace rastrel::cutting
