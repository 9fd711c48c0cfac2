#include "canvaro/shapes/RenderingTypeBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::TestShape;
using canvaro_test::TestShapeRendering;
using ::testing::ElementsAre;

TEST(RenderingTypeBaseTest, ConstructorAndResetGiveDifferentColours) {
  TestShapeRendering rendering;
  EXPECT_EQ(rendering.GetColor(), Proc::Color(255, 255, 255, 255));
  EXPECT_EQ(rendering.GetOutlineColor(), Proc::Color(0, 0, 0, 0));
  EXPECT_EQ(rendering.GetOpacity(), 255);

  rendering.SetOpacity(10);
  rendering.Reset();
  EXPECT_EQ(rendering.GetColor(), Proc::Color(0, 0, 0, 255));
  EXPECT_EQ(rendering.GetOutlineColor(), Proc::Color(0, 0, 0, 255));
  EXPECT_EQ(rendering.GetOpacity(), 255);
}

TEST(RenderingTypeBaseTest, ColoursAreStoredAsPackedRgbaUnderTextColor) {
  TestShapeRendering rendering;
  rendering.SetColor(Proc::Color(0xFF, 0x80, 0x10, 0xC0));
  rendering.SetOutlineColor(Proc::Color(1, 2, 3, 4));
  rendering.SetOpacity(77);
  Core::Property tree;
  rendering.RenderingTypeBase::Serialize(Drevin::SerializerProperty::Create(tree));
  std::vector<std::string> keys;
  for (const auto& entry : tree.Entries()) keys.push_back(entry.key);
  EXPECT_THAT(keys, ElementsAre("TextColor", "OutlineColor", "Opacity"));
  EXPECT_EQ(static_cast<std::uint32_t>(tree.GetInt("TextColor")), 0xFF8010C0u);
  EXPECT_EQ(tree.GetInt("OutlineColor"), 0x01020304);
  EXPECT_EQ(tree.GetInt("Opacity"), 77);

  TestShapeRendering read;
  read.RenderingTypeBase::Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_TRUE(read == rendering);
  EXPECT_FALSE(read == TestShapeRendering());
}

TEST(RenderingTypeBaseTest, RemoveHidesAndClearsSavedAndResetsTheToolOnlyWhenAsked) {
  auto shape = TestShape::Create(IToolsId::SHAPE_LINE);
  shape->SetCurrentTool(IToolsId::SHAPE_LINE);
  shape->SetSaved(true);
  shape->Remove(false);
  EXPECT_FALSE(shape->IsVisible());
  EXPECT_FALSE(shape->IsSaved());
  EXPECT_EQ(shape->GetCurrentToolID(), IToolsId::SHAPE_LINE);

  shape->Remove(true);
  EXPECT_EQ(shape->GetCurrentToolID(), IToolsId::NONE);
  EXPECT_EQ(shape->GetTool(), IToolsId::SHAPE_LINE);  // the record's own tool stays

  // The plain base never touches the tool.
  auto other = TestShape::Create(IToolsId::TEXT);
  other->SetCurrentTool(IToolsId::TEXT);
  TestShapeRendering rendering;
  rendering.RenderingTypeBase::Remove(*other, true);
  EXPECT_FALSE(other->IsVisible());
  EXPECT_EQ(other->GetCurrentToolID(), IToolsId::TEXT);
}

}  // namespace
