#include "rastrel/platform/values/color.h"

#include <algorithm>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/stream.h"

namespace {

constexpr double ChannelScale = 255.0;
constexpr double Percent = 100.0;
constexpr int KnownLayout = 1;
constexpr std::uint32_t InvisibleFlag = 1;

void Give(double* target, double value) {
  if (target != nullptr) *target = value;
}

// The inks as fractions. One ink of more than all of it can only be a percent.
std::array<double, 4> Fractions(std::array<double, 4> inks) {
  if (std::ranges::none_of(inks, [](double ink) { return ink > 1; })) return inks;
  for (double& ink : inks) ink /= Percent;
  return inks;
}

bool IsKnown(std::uint32_t space) { return space == COLORSPACE_RGB || space == COLORSPACE_CMYK; }

}  // namespace

CVKColor::CVKColor(std::int32_t reference, int space, int correction, int reflectivity)
    : m_Space(static_cast<COLORSPACE>(space)),
      m_Invisible(reference == -1),
      m_Correction(correction),
      m_Reflectivity(reflectivity) {
  if (m_Invisible) return;
  const auto value = static_cast<std::uint32_t>(reference);
  m_Components = {static_cast<double>(value & 0xFF), static_cast<double>(value >> 8 & 0xFF),
                  static_cast<double>(value >> 16 & 0xFF), 0};
}

void CVKColor::SetColor(const double& c, const double& m, const double& y, const double& k,
                        COLORSPACE space) {
  m_Components = {c, m, y, k};
  m_Space = space;
  m_Invisible = false;
}

void CVKColor::SetColor(const double& r, const double& g, const double& b, COLORSPACE space) {
  m_Components = {r, g, b, 0};
  m_Space = space;
  m_Invisible = false;
}

void CVKColor::GetColorChannels(double* r, double* g, double* b, double* unused) const {
  std::array<double, 4> channels = m_Components;
  if (m_Space == COLORSPACE_CMYK) {
    const std::array<double, 4> inks = Fractions(m_Components);
    for (std::size_t index = 0; index < 3; ++index)
      channels.at(index) = ChannelScale * (1 - inks.at(index)) * (1 - inks[3]);
  }
  Give(r, channels[0]);
  Give(g, channels[1]);
  Give(b, channels[2]);
  Give(unused, 0);
}

void CVKColor::GetCMYKcolor(double* c, double* m, double* y, double* k) const {
  std::array<double, 4> inks = Fractions(m_Components);
  if (m_Space != COLORSPACE_CMYK) {
    for (std::size_t index = 0; index < 3; ++index)
      inks.at(index) = 1 - m_Components.at(index) / ChannelScale;
    inks[3] = std::min({inks[0], inks[1], inks[2]});
    const double rest = 1 - inks[3];
    for (std::size_t index = 0; index < 3; ++index)
      inks.at(index) = rest == 0 ? 0 : (inks.at(index) - inks[3]) / rest;
  }
  Give(c, inks[0]);
  Give(m, inks[1]);
  Give(y, inks[2]);
  Give(k, inks[3]);
}

int CVKColor::Save(CStream* stream) const {
  stream->WriteUInt32(static_cast<std::uint32_t>(m_Space));
  stream->WriteUInt32(m_Invisible ? InvisibleFlag : 0);
  stream->WriteInt32(m_Correction);
  stream->WriteInt32(m_Reflectivity);
  for (const double component : m_Components) stream->WriteDouble(component);
  return 1;
}

int CVKColor::Load(CStream* stream, int version) {
  if (version != KnownLayout) return 0;
  CVKColor read;
  const std::uint32_t space = stream->ReadUInt32();
  read.m_Invisible = (stream->ReadUInt32() & InvisibleFlag) != 0;
  read.m_Correction = stream->ReadInt32();
  read.m_Reflectivity = stream->ReadInt32();
  for (double& component : read.m_Components) component = stream->ReadDouble();
  if (!IsKnown(space)) return 0;
  read.m_Space = static_cast<COLORSPACE>(space);
  *this = read;
  return 1;
}

int CVKFullColor::GetColorName(std::wstring& name) const {
  name = m_Name;
  return m_Name.empty() ? 0 : 1;
}

int CVKFullColor::Save(CStream* stream) const {
  CVKColor::Save(stream);
  stream->WriteText(m_Name);
  return 1;
}

int CVKFullColor::Load(CStream* stream, int version) {
  if (version != KnownLayout) return 0;
  CVKColor color;
  const int result = color.Load(stream, version);
  std::wstring name = stream->ReadText();
  if (result == 0) return 0;
  CVKColor::operator=(color);
  m_Name = std::move(name);
  return 1;
}
