#include "canvaro/shapes/IRenderingType.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "canvaro/shapes/PositionType.h"

namespace Kelbra::Canvaro {

namespace {

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

bool HasArea(const Conf::FrameInfo& frame) { return frame.width > 0 && frame.height > 0; }

}  // namespace

double IRenderingType::GetTransposeAspect(const Conf::FrameInfo& frame,
                                          const Proc::SettingsEffectTranspose& transpose) {
  // Kinds 0 and 2 differ only in bit 1: neither swaps the picture's sides.
  if ((transpose.GetTransposeKind() & ~2) == 0 || !HasArea(frame)) return -1.0;
  return static_cast<double>(frame.height) / frame.width;
}

void IRenderingType::CropImpl(const Conf::FrameInfo& frame, const ROI& roi, double& a, double& b) {
  if (roi.width == 0 || roi.height == 0) return;
  a = a * frame.width / roi.width;
  b = b * frame.height / roi.height;
}

void IRenderingType::ResizeImpl(const Conf::FrameInfo& from, const Conf::FrameInfo& to, double& w,
                                double& h, PositionType& position, unsigned& thickness) {
  if (!HasArea(from) || !HasArea(to)) return;

  const double sx = static_cast<double>(to.width) / from.width;
  const double sy = static_cast<double>(to.height) / from.height;
  const double angle = position.GetAngle();
  const double c = std::cos(angle / kDegreesPerRadian);
  const double s = std::sin(angle / kDegreesPerRadian);

  // The box's own axes, scaled with the picture, are no longer perpendicular; kx and ky are
  // how much each of them stretches.
  const double oldWidth = w * from.width;
  const double oldHeight = h * from.height;
  const double kx = std::hypot(c * sx, s * sy);
  const double ky = std::hypot(s * sx, c * sy);
  const double scaledWidth = oldWidth * kx;
  const double scaledHeight = oldHeight * ky;

  const bool taller = scaledHeight > scaledWidth;
  double r;
  double newWidth;
  double newHeight;
  if (taller) {
    r = sy / ky;
    newWidth = oldWidth * sx * r;
    newHeight = scaledHeight;
  } else {
    r = sx / kx;
    newWidth = scaledWidth;
    newHeight = oldHeight * sy * r;
  }
  w = newWidth / to.width;
  h = newHeight / to.height;

  // c * r is a cosine up to rounding; keep acos inside its domain.
  const double magnitude = std::acos(std::clamp(c * r, -1.0, 1.0)) * kDegreesPerRadian;
  const double newAngle = std::signbit(angle) ? -magnitude : magnitude;
  position.SetAngle(newAngle);

  const double c2 = std::cos(newAngle / kDegreesPerRadian);
  const double s2 = std::sin(newAngle / kDegreesPerRadian);
  const double k = taller ? std::hypot(c2 * sx, s2 * sy) : std::hypot(s2 * sx, c2 * sy);
  const double scaled = std::round(thickness * k);
  constexpr double kMaxThickness = std::numeric_limits<unsigned>::max();
  thickness = scaled < 1.0 ? 1u : static_cast<unsigned>(std::min(scaled, kMaxThickness));
}

}  // namespace Kelbra::Canvaro
