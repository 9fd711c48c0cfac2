#include "BuiltInPicture.h"

#include <algorithm>
#include <cmath>

namespace canvaro_tool {

namespace Proc = Kelbra::Proc;

Proc::IDataVideoPtr MakeBuiltInPicture(std::int32_t width, std::int32_t height) {
  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {width, height, 1, 1});
  auto plane = picture->GetPlane(0);
  const double w = width, h = height;
  const double sunX = 0.72 * w, sunY = 0.28 * h, sunR = 0.11 * std::min(w, h);
  static const std::uint8_t kBars[7][3] = {{230, 40, 40},  {240, 150, 30}, {240, 220, 40},
                                           {60, 180, 70},  {40, 120, 220}, {110, 60, 200},
                                           {240, 240, 240}};
  for (std::int32_t y = 0; y < height; ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, static_cast<std::size_t>(y));
    const double fy = y / h;
    for (std::int32_t x = 0; x < width; ++x) {
      const double fx = x / w;
      double r = 70 + 120 * fy, g = 130 + 90 * fy, b = 230 - 30 * fy;  // sky
      const double dx = x - sunX, dy = y - sunY;
      const double d = std::sqrt(dx * dx + dy * dy);
      if (d < sunR) {
        r = 255, g = 215, b = 90;
      } else if (d < sunR * 1.6) {  // glow
        const double t = (d - sunR) / (sunR * 0.6);
        r = r * t + 255 * (1 - t), g = g * t + 230 * (1 - t), b = b * t + 150 * (1 - t);
      }
      const double hill = 0.62 + 0.06 * std::sin(fx * 9.0) + 0.03 * std::sin(fx * 23.0 + 1.0);
      if (fy > hill) {
        const bool stripe = static_cast<int>((fx + fy) * 40) % 2 == 0;
        r = stripe ? 60 : 50, g = stripe ? 150 : 130, b = stripe ? 60 : 50;
      }
      if (fy > 0.88) {
        const auto& bar = kBars[std::min(6, static_cast<int>(fx * 7))];
        r = bar[0], g = bar[1], b = bar[2];
      }
      row[x * 4 + 0] = static_cast<std::uint8_t>(r);
      row[x * 4 + 1] = static_cast<std::uint8_t>(g);
      row[x * 4 + 2] = static_cast<std::uint8_t>(b);
      row[x * 4 + 3] = 255;
    }
  }
  return picture;
}

}  // namespace canvaro_tool
