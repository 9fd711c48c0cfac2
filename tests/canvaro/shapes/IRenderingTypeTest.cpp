// The edges of the geometry the shape kinds share: pictures without area, and strokes that would
// scale below one pixel. The geometry itself, and that a resize from or to a picture without area
// changes nothing, are checked over every kind in ShapeInfoTTest.
#include "canvaro/shapes/IRenderingType.h"

#include <limits>

#include <gtest/gtest.h>

#include "canvaro/shapes/PositionType.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Transpose = Proc::SettingsEffectTranspose;

TEST(IRenderingTypeTest, APictureWithoutAreaHasNoAspectToChange) {
  EXPECT_EQ(IRenderingType::GetTransposeAspect({0, 100, 1, 1}, Transpose(Transpose::Rotate90)), -1);
  EXPECT_EQ(IRenderingType::GetTransposeAspect({100, 0, 1, 1}, Transpose(Transpose::Rotate90)), -1);
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

}  // namespace
