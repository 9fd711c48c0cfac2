#include "canvaro/shapes/PositionType.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using Kind = Proc::SettingsEffectTranspose;

PositionType At(double x, double y, double angle) {
  PositionType p;
  p.SetX(x);
  p.SetY(y);
  p.SetAngle(angle);
  return p;
}

TEST(PositionTypeTest, ResetKeepsTheDefaultFlag) {
  PositionType p = At(0.1, 0.2, 30);
  EXPECT_TRUE(p.IsDefault());
  p.SetDefault(false);
  p.Reset();
  EXPECT_EQ(p.GetX(), 0.5);
  EXPECT_EQ(p.GetY(), 0.5);
  EXPECT_EQ(p.GetAngle(), 0.0);
  EXPECT_FALSE(p.IsDefault());
}

TEST(PositionTypeTest, ComparesWithinTolerance) {
  EXPECT_TRUE(At(0.5, 0.25, 90) == At(0.50001, 0.24999, 90.00001));
  EXPECT_FALSE(At(0.5, 0.25, 90) == At(0.5001, 0.25, 90));
  EXPECT_FALSE(At(0.5, 0.25, 90) == At(0.5, 0.25, 90.001));
  PositionType other = At(0.5, 0.25, 90);
  other.SetDefault(false);
  EXPECT_FALSE(At(0.5, 0.25, 90) == other);
}

TEST(PositionTypeTest, TransposeMapsEachQuarterTurn) {
  struct Case {
    Kind::TransposeKind kind;
    double x, y, angle;
  };
  for (const Case& c : {Case{Kind::Rotate90, 0.9, 0.2, 90}, Case{Kind::Rotate180, 0.8, 0.9, 180},
                        Case{Kind::Rotate270, 0.1, 0.8, -90}, Case{Kind::None, 0.2, 0.1, 0}}) {
    PositionType p = At(0.2, 0.1, 0);
    p.Transpose(Kind(c.kind));
    EXPECT_THAT(p.GetX(), DoubleNear(c.x, 1e-12)) << c.kind;
    EXPECT_THAT(p.GetY(), DoubleNear(c.y, 1e-12)) << c.kind;
    EXPECT_THAT(p.GetAngle(), DoubleNear(c.angle, 1e-12)) << c.kind;
  }
}

TEST(PositionTypeTest, FourQuarterTurnsComeBackAndAnglesStayInRange) {
  PositionType p = At(0.3, 0.7, 45);
  for (int i = 0; i < 4; ++i) p.Transpose(Kind(Kind::Rotate90));
  EXPECT_TRUE(p == At(0.3, 0.7, 45));

  PositionType q = At(0.5, 0.5, 170);
  q.Transpose(Kind(Kind::Rotate90));
  EXPECT_DOUBLE_EQ(q.GetAngle(), -100);
  PositionType r = At(0.5, 0.5, 0);
  r.Transpose(Kind(Kind::Rotate180));
  EXPECT_DOUBLE_EQ(r.GetAngle(), 180);  // 180 stays, it is inside (-180, 180]
}

TEST(PositionTypeTest, CropIsRelativeToTheRectangleWithoutClamping) {
  const Conf::FrameInfo frame{1000, 500, 1, 1};
  PositionType p = At(0.5, 0.5, 30);
  p.SetDefault(false);
  p.Crop(frame, ROI{250, 100, 500, 200});
  EXPECT_DOUBLE_EQ(p.GetX(), 0.5);
  EXPECT_DOUBLE_EQ(p.GetY(), 0.75);
  EXPECT_EQ(p.GetAngle(), 30);
  EXPECT_FALSE(p.IsDefault());

  PositionType outside = At(0.1, 0.9, 0);
  outside.Crop(frame, ROI{250, 100, 500, 200});
  EXPECT_DOUBLE_EQ(outside.GetX(), -0.3);
  EXPECT_DOUBLE_EQ(outside.GetY(), 1.75);

  PositionType empty = At(0.1, 0.9, 0);
  empty.Crop(frame, ROI{0, 0, 0, 0});
  EXPECT_TRUE(empty == At(0.1, 0.9, 0));
}

TEST(PositionTypeTest, SerializesFourKeys) {
  PositionType p = At(0.25, 0.75, -45);
  p.SetDefault(false);
  Core::Property tree;
  p.Serialize(Drevin::SerializerProperty::Create(tree));
  std::vector<std::string> keys;
  for (const auto& entry : tree.Entries()) keys.push_back(entry.key);
  EXPECT_THAT(keys, ElementsAre("PositionX", "PositionY", "RotationAngle", "PositionDefault"));

  PositionType read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_TRUE(read == p);

  PositionType untouched = p;
  untouched.Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_TRUE(untouched == p);
}

}  // namespace
