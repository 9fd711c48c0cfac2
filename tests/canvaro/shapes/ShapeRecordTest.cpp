// What every shape record shares beneath its kind: the position's arithmetic, the kind registry,
// the copy-on-write handle, and the edges of the shared geometry (pictures without area, strokes
// that would scale below one pixel, text fonts). The keys, defaults, round trip, equality
// (positions' included), Reset and the geometry itself are checked over all kinds in
// ShapeInfoTTest.
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/IRenderingType.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "canvaro/shapes/TextInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::kTestShapeType;
using canvaro_test::TestShape;
using canvaro_test::TestShapeRendering;
using ::testing::HasSubstr;
using Kind = Proc::SettingsEffectTranspose;

const TestShapeRendering& As(const ShapeInfo& shape) {
  return static_cast<const TestShape::Record&>(*shape.GetImpl()).GetRendering();
}

PositionType At(double x, double y, double angle) {
  PositionType p;
  p.SetX(x);
  p.SetY(y);
  p.SetAngle(angle);
  return p;
}

TEST(ShapeRecordTest, PositionsFollowQuarterTurnsAndCrops) {
  struct Case {
    Kind::TransposeKind kind;
    double x, y, angle;
  };
  for (const Case& c : {Case{Kind::Rotate90, 0.9, 0.2, 90}, Case{Kind::Rotate180, 0.8, 0.9, 180},
                        Case{Kind::Rotate270, 0.1, 0.8, -90}, Case{Kind::None, 0.2, 0.1, 0}}) {
    PositionType p = At(0.2, 0.1, 0);
    p.Transpose(Kind(c.kind));
    EXPECT_TRUE(p == At(c.x, c.y, c.angle)) << c.kind;
  }
  PositionType p = At(0.3, 0.7, 45);
  for (int i = 0; i < 4; ++i) p.Transpose(Kind(Kind::Rotate90));
  EXPECT_TRUE(p == At(0.3, 0.7, 45));
  PositionType q = At(0.5, 0.5, 170);
  q.Transpose(Kind(Kind::Rotate90));
  EXPECT_DOUBLE_EQ(q.GetAngle(), -100);  // angles stay inside (-180, 180]

  // A crop makes the position relative to the rectangle, without clamping.
  const Conf::FrameInfo frame{1000, 500, 1, 1};
  PositionType outside = At(0.1, 0.9, 30);
  outside.Crop(frame, ROI{250, 100, 500, 200});
  EXPECT_TRUE(outside == At(-0.3, 1.75, 30));
  PositionType empty = At(0.1, 0.9, 0);
  empty.Crop(frame, ROI{0, 0, 0, 0});
  EXPECT_TRUE(empty == At(0.1, 0.9, 0));
}

TEST(ShapeRecordTest, RegistryFindsRowsByExactClassIdAndTypeAndRefusesASecondRow) {
  TestShape::Register();
  const auto* byName = ShapeInfoBase::GetCreatorItem("TestShape");
  ASSERT_NE(byName, nullptr);
  EXPECT_EQ(byName->type, kTestShapeType);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(kTestShapeType), byName);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem("testshape"), nullptr);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(static_cast<ShapeType>(4096)), nullptr);
  EXPECT_FALSE(ShapeInfoBase::RegisterKind({ShapeType::Text, "TestShape", &TestShape::Create}));
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem("TestShape"), byName);
}

TEST(ShapeRecordTest, HandlesCloneRecordsShareCopiesAndTransformIntoNewHandles) {
  auto record = TestShape::Create(IToolsId::TEXT);
  ShapeInfo handle(*record);
  EXPECT_NE(handle.GetImpl(), record.get());
  EXPECT_EQ(record->GetRefCount(), 1);
  ShapeInfo copy = handle;
  EXPECT_EQ(copy.GetImpl(), handle.GetImpl());
  EXPECT_EQ(handle->GetRefCount(), 3);  // two handles and the pointer operator-> returned

  // Position first, then the kind's rendering; the original stays as it was.
  const Conf::FrameInfo frame{800, 600, 1, 1};
  handle->GetPosition().SetX(0.25);
  const ShapeInfo moved(ShapeInfoBaseConstPtr(handle.GetImpl()));
  const ShapeInfo turned = moved.Transpose(frame, Kind(Kind::Rotate270));
  EXPECT_TRUE(turned->GetPosition() == At(0.5, 0.75, -90));
  EXPECT_EQ(As(turned).turns, 3);
  const ShapeInfo cropped = turned.Crop(frame, ROI{0, 0, 400, 300});
  EXPECT_TRUE(cropped->GetPosition() == At(1.0, 1.5, -90));
  EXPECT_DOUBLE_EQ(As(cropped).width, 4.0);
  const ShapeInfo resized = cropped.Resize(frame, Conf::FrameInfo{400, 300, 1, 1});
  EXPECT_DOUBLE_EQ(As(resized).width, 2.0);
  EXPECT_EQ(resized->GetPosition().GetX(), 0.0);  // the kind moves it
  EXPECT_EQ(As(turned).width, 2.0);
  EXPECT_EQ(moved->GetPosition().GetX(), 0.25);
}

TEST(ShapeRecordTest, EmptyHandlesAreHarmlessAndUnknownOrMissingClassIdsAreRefused) {
  ShapeInfo empty;
  EXPECT_FALSE(empty);
  EXPECT_TRUE(empty == ShapeInfo());
  EXPECT_FALSE(empty == ShapeInfo(*TestShape::Create(IToolsId::TEXT)));
  EXPECT_EQ(empty.GetClassId(), "");
  EXPECT_FALSE(empty.Transpose({}, {}));
  EXPECT_FALSE(empty.Crop({}, {}));
  EXPECT_FALSE(empty.Resize({}, {}));
  EXPECT_FALSE(ShapeInfo(ShapeInfoBaseConstPtr()));

  // An empty handle writes no class id; reading that, or an unknown one, throws naming it and
  // leaves the handle read into as it was.
  Core::Property nameless;
  empty.Serialize(Drevin::SerializerProperty::Create(nameless));
  Core::Property unknown("CircleInfo");
  unknown.SetInt("Index", 1);
  for (const Core::Property* node : {&nameless, &unknown}) {
    ShapeInfo read(*TestShape::Create(IToolsId::TEXT));
    const ShapeInfoBase* kept = read.GetImpl();
    const std::string text = canvaro_test::ErrorText<CanvaroException>(
        [&] { read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(*node))); });
    EXPECT_THAT(text, HasSubstr(node == &unknown ? "'CircleInfo'" : "class id ''"));
    EXPECT_EQ(read.GetImpl(), kept);
  }
}

TEST(ShapeRecordTest, APictureWithoutAreaHasNoAspectToChange) {
  EXPECT_EQ(IRenderingType::GetTransposeAspect({0, 100, 1, 1}, Kind(Kind::Rotate90)), -1);
  EXPECT_EQ(IRenderingType::GetTransposeAspect({100, 0, 1, 1}, Kind(Kind::Rotate90)), -1);
}

TEST(ShapeRecordTest, TheStrokeNeverGetsThinnerThanOnePixel) {
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

// A resize scales a text's font with the measured box (how turned text scales under uneven
// resizes is checked over every kind).
TEST(ShapeRecordTest, ResizeScalesTheFontCutToWholePointsAndNeverBelowTen) {
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
    auto measured = boost::static_pointer_cast<TextInfo>(TextInfo::Create(IToolsId::TEXT));
    measured->GetRendering().SetText("Label");
    measured->GetRendering().SetWidth(c.width);
    measured->GetRendering().SetHeight(c.width / 4);
    measured->GetRendering().SetFontSize(c.fontSize);
    const ShapeInfo text(*measured);
    const ShapeInfo resized = text.Resize({1000, 1000, 1, 1}, {c.side, c.side, 1, 1});
    const auto rendering = [](const ShapeInfo& shape) {
      return static_cast<const TextInfo&>(*shape.GetImpl()).GetRendering();
    };
    EXPECT_EQ(rendering(resized).GetFontSize(), c.expected) << c.fontSize << " to " << c.side;
    EXPECT_EQ(rendering(resized).GetText(), "Label");
    EXPECT_EQ(rendering(text).GetWidth(), c.width) << "the original is untouched";
  }
}

}  // namespace
