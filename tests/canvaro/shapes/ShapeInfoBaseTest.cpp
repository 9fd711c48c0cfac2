#include "canvaro/shapes/ShapeInfoBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::kTestShapeType;
using canvaro_test::TestShape;
using ::testing::ElementsAre;

TestShape& As(const ShapeInfoBasePtr& shape) { return static_cast<TestShape&>(*shape); }

TEST(ShapeInfoBaseTest, ConstructionSetsTheRecordToolButNotTheCurrentTool) {
  auto shape = TestShape::Create(IToolsId::SHAPE_FRAME);
  EXPECT_EQ(shape->GetTool(), IToolsId::SHAPE_FRAME);
  EXPECT_EQ(shape->GetCurrentToolID(), IToolsId::NONE);
  EXPECT_EQ(shape->GetIndex(), -1);
  EXPECT_TRUE(shape->IsVisible());
  EXPECT_TRUE(shape->GetPosition() == PositionType());
  EXPECT_EQ(shape->GetRefCount(), 1);
}

TEST(ShapeInfoBaseTest, RegistryFindsRowsByClassIdAndType) {
  TestShape::Register();
  const auto* byName = ShapeInfoBase::GetCreatorItem("TestShape");
  ASSERT_NE(byName, nullptr);
  EXPECT_EQ(byName->type, kTestShapeType);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(kTestShapeType), byName);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem("testshape"), nullptr);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(static_cast<ShapeType>(4096)), nullptr);

  auto made = byName->create(IToolsId::TEXT);
  EXPECT_EQ(made->GetShapeType(), kTestShapeType);
  EXPECT_EQ(made->GetClassId(), "TestShape");

  // A second row under a class id already known is refused: the first one answers lookups.
  EXPECT_FALSE(ShapeInfoBase::RegisterKind({ShapeType::Text, "TestShape", &TestShape::Create}));
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem("TestShape"), byName);
}

TEST(ShapeInfoBaseTest, EqualityIgnoresIndexToolChangeTypeAndSaved) {
  auto a = TestShape::Create(IToolsId::TEXT);
  auto b = a->Clone();
  b->SetIndex(4);
  b->SetTool(IToolsId::SHAPE_ARROW);
  b->SetCurrentTool(IToolsId::SHAPE_ARROW);
  b->SetChangeType(3);
  b->SetSaved(true);
  EXPECT_TRUE(*a == *b);

  b->GetPosition().SetX(0.6);
  EXPECT_TRUE(*a != *b);
  b->GetPosition().SetX(0.5);
  As(b).rendering.width = 5;
  EXPECT_TRUE(*a != *b);  // the kind adds its rendering parameters
}

TEST(ShapeInfoBaseTest, ResetKeepsTheDefaultFlagAndTheChangeType) {
  auto shape = TestShape::Create(IToolsId::TEXT);
  shape->GetPosition().SetX(0.1);
  shape->GetPosition().SetDefault(false);
  shape->SetVisible(false);
  shape->SetZValue(300);
  shape->SetChangeType(5);
  shape->Reset();
  EXPECT_EQ(shape->GetPosition().GetX(), 0.5);
  EXPECT_FALSE(shape->GetPosition().IsDefault());
  EXPECT_TRUE(shape->IsVisible());
  EXPECT_EQ(shape->GetZValue(), 0);
  EXPECT_EQ(shape->GetTool(), IToolsId::NONE);
  EXPECT_EQ(shape->GetChangeType(), 5);
  EXPECT_EQ(As(shape).rendering.GetColor(), Proc::Color(0, 0, 0, 255));
}

TEST(ShapeInfoBaseTest, TransformsMoveThePositionAndThenTheRendering) {
  const Conf::FrameInfo frame{800, 600, 1, 1};
  auto shape = TestShape::Create(IToolsId::TEXT);
  shape->GetPosition().SetX(0.25);
  shape->Transpose(frame, Proc::SettingsEffectTranspose(Proc::SettingsEffectTranspose::Rotate270));
  EXPECT_DOUBLE_EQ(shape->GetPosition().GetX(), 0.5);
  EXPECT_DOUBLE_EQ(shape->GetPosition().GetY(), 0.75);
  EXPECT_EQ(As(shape).rendering.turns, 3);

  shape->Crop(frame, ROI{0, 0, 400, 300});
  EXPECT_DOUBLE_EQ(shape->GetPosition().GetX(), 1.0);
  EXPECT_DOUBLE_EQ(shape->GetPosition().GetY(), 1.5);
  EXPECT_DOUBLE_EQ(As(shape).rendering.width, 4.0);

  // Resize leaves the position to the kind (this one moves it to the corner).
  shape->Resize(frame, Conf::FrameInfo{400, 300, 1, 1});
  EXPECT_DOUBLE_EQ(As(shape).rendering.width, 2.0);
  EXPECT_EQ(shape->GetPosition().GetX(), 0.0);
}

TEST(ShapeInfoBaseTest, SerializesBookkeepingThenToolThenPosition) {
  auto shape = TestShape::Create(IToolsId::SHAPE_FRAME);
  shape->SetCurrentTool(IToolsId::SHAPE_LINE);
  shape->GetPosition().SetY(0.125);
  Core::Property tree;
  shape->ShapeInfoBase::Serialize(Drevin::SerializerProperty::Create(tree));
  std::vector<std::string> keys;
  for (const auto& entry : tree.Entries()) keys.push_back(entry.key);
  EXPECT_THAT(keys, ElementsAre("Index", "Visible", "Saved", "InfoTypeBaseToolName", "PresetID",
                                "ZValue", "ChangeType", "ToolName", "PositionX", "PositionY",
                                "RotationAngle", "PositionDefault"));
  EXPECT_EQ(tree.GetString("InfoTypeBaseToolName"), "SHAPE_FRAME");
  EXPECT_EQ(tree.GetString("ToolName"), "SHAPE_LINE");

  auto read = TestShape::Create(IToolsId::NONE);
  read->ShapeInfoBase::Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read->GetTool(), IToolsId::SHAPE_FRAME);
  EXPECT_EQ(read->GetCurrentToolID(), IToolsId::SHAPE_LINE);
  EXPECT_EQ(read->GetPosition().GetY(), 0.125);
}

}  // namespace
