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

TEST(IRenderingTypeTest, CropScalesEachSizeByItsOwnSide) {
  double a = 0.25;
  double b = 0.5;
  IRenderingType::CropImpl({200, 100, 1, 1}, {50, 20, 100, 25}, a, b);
  EXPECT_DOUBLE_EQ(a, 0.5);  // 50 of 200 pixels is half of the 100 kept
  EXPECT_DOUBLE_EQ(b, 2.0);  // 50 of 100 pixels is twice the 25 kept
  IRenderingType::CropImpl({200, 100, 1, 1}, {0, 0, 0, 25}, a, b);
  EXPECT_DOUBLE_EQ(a, 0.5) << "an empty crop changes nothing";
}

TEST(IRenderingTypeTest, UniformResizeKeepsFractionsAndAngleAndScalesTheStroke) {
  PositionType position;
  position.SetAngle(-37);
  double w = 0.3;
  double h = 0.2;
  unsigned thickness = 5;
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {1200, 900, 1, 1}, w, h, position, thickness);
  EXPECT_NEAR(w, 0.3, 1e-12);
  EXPECT_NEAR(h, 0.2, 1e-12);
  EXPECT_NEAR(position.GetAngle(), -37, 1e-9);
  EXPECT_EQ(thickness, 15u);
}

TEST(IRenderingTypeTest, AnUnturnedBoxStretchesAlongTheAxes) {
  PositionType position;
  double w = 0.5;  // 200 of 400 pixels
  double h = 0.5;  // 150 of 300 pixels
  unsigned thickness = 4;
  // Twice as wide, as high as before: the box keeps its fractions; the wider box keeps its
  // width, and the stroke across it (vertical) keeps its size.
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {800, 300, 1, 1}, w, h, position, thickness);
  EXPECT_DOUBLE_EQ(w, 0.5);
  EXPECT_DOUBLE_EQ(h, 0.5);
  EXPECT_EQ(position.GetAngle(), 0);
  EXPECT_EQ(thickness, 4u);

  // A tall box in a picture made three times taller: the stroke across its height
  // (horizontal) keeps its size too.
  double tw = 0.1;
  double th = 0.9;
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {400, 900, 1, 1}, tw, th, position, thickness);
  EXPECT_DOUBLE_EQ(tw, 0.1);
  EXPECT_DOUBLE_EQ(th, 0.9);
  EXPECT_EQ(thickness, 4u);
}

TEST(IRenderingTypeTest, ABoxAtFortyFiveDegreesBecomesASquareAlongTheDiagonal) {
  // A 100 x 100 pixel square at 45 degrees in a picture stretched 3:1 horizontally: its side
  // vectors (70.7, 70.7) and (-70.7, 70.7) become (212.1, 70.7) and (-212.1, 70.7), both
  // 223.6 long; the area triples to 30000, so the other side is 30000 / 223.6 = 134.2, and the
  // kept side points at atan(70.7 / 212.1) = 18.43 degrees.
  PositionType position;
  position.SetAngle(45);
  double w = 0.25;     // 100 of 400
  double h = 1.0 / 3;  // 100 of 300
  unsigned thickness = 10;
  IRenderingType::ResizeImpl({400, 300, 1, 1}, {1200, 300, 1, 1}, w, h, position, thickness);
  const double kept =
      std::sqrt(212.13203435596427 * 212.13203435596427 + 70.710678118654755 * 70.710678118654755);
  EXPECT_NEAR(w * 1200, kept, 1e-9);
  EXPECT_NEAR(h * 300, 30000 / kept, 1e-9);
  EXPECT_NEAR(position.GetAngle(), 18.434948822922010, 1e-9);
  // Across the kept side: (-sin 18.43 * 3, cos 18.43) has length 1.342.
  EXPECT_EQ(thickness, 13u);
}

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
