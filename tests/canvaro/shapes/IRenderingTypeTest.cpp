// The geometry the shape kinds share: the aspect change of a quarter turn, sizes under a crop,
// and the resize of a turned box with its stroke.
#include "canvaro/shapes/IRenderingType.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "canvaro/shapes/PositionType.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Transpose = Proc::SettingsEffectTranspose;

TEST(IRenderingTypeTest, OnlyQuarterTurnsChangeTheAspect) {
  const Conf::FrameInfo frame{200, 100, 1, 1};
  EXPECT_EQ(IRenderingType::GetTransposeAspect(frame, Transpose(Transpose::None)), -1);
  EXPECT_EQ(IRenderingType::GetTransposeAspect(frame, Transpose(Transpose::Rotate180)), -1);
  EXPECT_EQ(IRenderingType::GetTransposeAspect(frame, Transpose(Transpose::Rotate90)), 0.5);
  EXPECT_EQ(IRenderingType::GetTransposeAspect(frame, Transpose(Transpose::Rotate270)), 0.5);
  // A picture without area has no aspect to change.
  EXPECT_EQ(IRenderingType::GetTransposeAspect({0, 100, 1, 1}, Transpose(Transpose::Rotate90)), -1);
  EXPECT_EQ(IRenderingType::GetTransposeAspect({100, 0, 1, 1}, Transpose(Transpose::Rotate90)), -1);
}

// How a turned box and its stroke scale is checked over every kind in ShapeInfoTTest.
TEST(IRenderingTypeTest, TheStrokeNeverGetsThinnerThanOnePixel) {
  PositionType position;
  double w = 0.5;
  double h = 0.5;
  unsigned none = 0;
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {400, 300, 1, 1}, w, h, position, none);
  EXPECT_EQ(none, 1u);
  unsigned thin = 1;
  IRenderingType::ResizeImpl({4000, 3000, 1, 1}, {400, 300, 1, 1}, w, h, position, thin);
  EXPECT_EQ(thin, 1u);
  unsigned huge = std::numeric_limits<unsigned>::max();
  IRenderingType::ResizeImpl({100, 100, 1, 1}, {1000, 1000, 1, 1}, w, h, position, huge);
  EXPECT_EQ(huge, std::numeric_limits<unsigned>::max());
}

TEST(IRenderingTypeTest, EmptyFramesChangeNothing) {
  PositionType position;
  position.SetAngle(30);
  double w = 0.5;
  double h = 0.5;
  unsigned thickness = 3;
  IRenderingType::ResizeImpl({0, 300, 1, 1}, {400, 300, 1, 1}, w, h, position, thickness);
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {400, 0, 1, 1}, w, h, position, thickness);
  EXPECT_EQ(w, 0.5);
  EXPECT_EQ(h, 0.5);
  EXPECT_EQ(position.GetAngle(), 30);
  EXPECT_EQ(thickness, 3u);
}

}  // namespace
