// What is particular to text: a resize scales its font with the measured box, cut to whole
// points and never below 10. How turned text scales under uneven resizes, that the host is asked
// to measure again, and that text keeps its size through turns and crops, is checked over every
// kind in ShapeInfoTTest.
#include "canvaro/shapes/TextInfo.h"

#include <gtest/gtest.h>

#include "canvaro/shapes/ShapeInfo.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

const TextInfo::RenderingType& Rendering(const ShapeInfo& shape) {
  return static_cast<const TextInfo&>(*shape.GetImpl()).GetRendering();
}

boost::intrusive_ptr<TextInfo> MeasuredText(double width, int fontSize) {
  auto text = boost::static_pointer_cast<TextInfo>(TextInfo::Create(IToolsId::TEXT));
  text->GetRendering().SetText("Label");
  text->GetRendering().SetWidth(width);
  text->GetRendering().SetHeight(width / 4);
  text->GetRendering().SetFontSize(fontSize);
  return text;
}

TEST(TextInfoTest, ResizeScalesTheFontCutToWholePointsAndNeverBelowTen) {
  struct Case {
    int fontSize;
    double width;  // of the measured box; 0 when unmeasured
    int side;      // of the resized picture, from 1000
    int expected;
  };
  // 96 * 0.7 = 67.2 and 14 * 0.75 = 10.5 are cut, 14 / 2 = 7 becomes 10, and an unmeasured box
  // still scales the font.
  const Case cases[] = {{96, 300, 500, 48}, {96, 300, 700, 67}, {14, 300, 500, 10},
                        {14, 300, 750, 10}, {14, 300, 800, 11}, {40, 0, 3000, 120}};
  for (const Case& c : cases) {
    const ShapeInfo text(*MeasuredText(c.width, c.fontSize));
    const ShapeInfo resized = text.Resize({1000, 1000, 1, 1}, {c.side, c.side, 1, 1});
    EXPECT_EQ(Rendering(resized).GetFontSize(), c.expected) << c.fontSize << " to " << c.side;
    EXPECT_EQ(Rendering(resized).GetText(), "Label");
    EXPECT_EQ(Rendering(text).GetWidth(), c.width) << "the original is untouched";
  }
}

}  // namespace
