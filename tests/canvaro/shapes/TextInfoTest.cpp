// What is particular to text: a resize scales its font with the measured box (never below 10)
// and asks the host to measure again. How turned text scales under uneven resizes, and that it
// keeps its size through turns and crops, is checked over every kind in ShapeInfoTTest.
#include "canvaro/shapes/TextInfo.h"

#include <gtest/gtest.h>

#include "canvaro/shapes/ShapeInfo.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

const TextInfo::RenderingType& Rendering(const ShapeInfo& shape) {
  return static_cast<const TextInfo&>(*shape.GetImpl()).GetRendering();
}

boost::intrusive_ptr<TextInfo> MeasuredText(double width, double height, int fontSize) {
  auto text = boost::static_pointer_cast<TextInfo>(TextInfo::Create(IToolsId::TEXT));
  text->GetRendering().SetText("Label");
  text->GetRendering().SetWidth(width);
  text->GetRendering().SetHeight(height);
  text->GetRendering().SetFontSize(fontSize);
  return text;
}

TEST(TextInfoTest, UniformResizeScalesTheFontAndClearsTheMeasuredBox) {
  const ShapeInfo text(*MeasuredText(300, 80, 96));
  const ShapeInfo half = text.Resize({1000, 800, 1, 1}, {500, 400, 1, 1});
  EXPECT_EQ(Rendering(half).GetFontSize(), 48);
  EXPECT_EQ(Rendering(half).GetWidth(), 0);
  EXPECT_EQ(Rendering(half).GetHeight(), 0);
  EXPECT_EQ(Rendering(half).GetText(), "Label");
  EXPECT_EQ(Rendering(text).GetWidth(), 300) << "the original is untouched";

  // 96 * 0.7 = 67.2: the size is cut, not rounded.
  EXPECT_EQ(Rendering(text.Resize({1000, 800, 1, 1}, {700, 560, 1, 1})).GetFontSize(), 67);
}

TEST(TextInfoTest, TheFontNeverDropsBelowTen) {
  const ShapeInfo text(*MeasuredText(300, 80, 14));
  // 14 / 2 = 7 becomes 10.
  EXPECT_EQ(Rendering(text.Resize({1000, 1000, 1, 1}, {500, 500, 1, 1})).GetFontSize(), 10);
  // 14 * 0.75 = 10.5 is cut to 10 as well; 14 * 0.8 = 11.2 gives 11.
  EXPECT_EQ(Rendering(text.Resize({1000, 1000, 1, 1}, {750, 750, 1, 1})).GetFontSize(), 10);
  EXPECT_EQ(Rendering(text.Resize({1000, 1000, 1, 1}, {800, 800, 1, 1})).GetFontSize(), 11);

  // An unmeasured box still scales the font.
  const ShapeInfo unmeasured(*MeasuredText(0, 0, 40));
  EXPECT_EQ(Rendering(unmeasured.Resize({100, 100, 1, 1}, {300, 300, 1, 1})).GetFontSize(), 120);
}

}  // namespace
