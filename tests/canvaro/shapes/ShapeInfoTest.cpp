#include "canvaro/shapes/ShapeInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::TestShape;
using ::testing::HasSubstr;

const TestShape& As(const ShapeInfo& shape) {
  return static_cast<const TestShape&>(*shape.GetImpl());
}

TEST(ShapeInfoTest, BuildingFromARecordClonesAndCopyingShares) {
  auto record = TestShape::Create(IToolsId::TEXT);
  ShapeInfo handle(*record);
  EXPECT_NE(handle.GetImpl(), record.get());
  EXPECT_TRUE(handle == ShapeInfo(ShapeInfoBaseConstPtr(record)));
  EXPECT_EQ(record->GetRefCount(), 1);

  ShapeInfo copy = handle;
  EXPECT_EQ(copy.GetImpl(), handle.GetImpl());
  EXPECT_EQ(handle->GetRefCount(), 3);  // two handles and the pointer operator-> returned

  copy->SetZValue(500);  // edits through a shared handle show in both: callers clone first
  EXPECT_EQ(handle->GetZValue(), 500);
  EXPECT_EQ(record->GetZValue(), 0);
}

TEST(ShapeInfoTest, EmptyHandlesAreHarmless) {
  ShapeInfo empty;
  EXPECT_FALSE(empty);
  EXPECT_TRUE(empty == ShapeInfo());
  EXPECT_FALSE(empty == ShapeInfo(*TestShape::Create(IToolsId::TEXT)));
  EXPECT_EQ(empty.GetClassId(), "");
  EXPECT_FALSE(empty.Transpose({}, {}));
  EXPECT_FALSE(empty.Crop({}, {}));
  EXPECT_FALSE(empty.Resize({}, {}));
  EXPECT_FALSE(ShapeInfo(ShapeInfoBaseConstPtr()));

  // An empty handle writes no class id, and a record without one is refused: every saved shape
  // names its kind. The handle read into stays as it was.
  struct Holder : Drevin::ISerializableBase {
    void Serialize(const Drevin::ISerializerPtr& s) const override { s->WriteObject("S", shape); }
    ShapeInfo shape;
  } holder;
  Core::Property tree;
  holder.Serialize(Drevin::SerializerProperty::Create(tree));
  ShapeInfo read(*TestShape::Create(IToolsId::TEXT));
  EXPECT_THROW(
      read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree))->GetChild("S")),
      CanvaroException);
  EXPECT_TRUE(read);
}

TEST(ShapeInfoTest, TransformsReturnNewHandlesAndLeaveTheOriginal) {
  const Conf::FrameInfo frame{100, 100, 1, 1};
  ShapeInfo shape(*TestShape::Create(IToolsId::TEXT));
  const ShapeInfo before(ShapeInfoBaseConstPtr(shape.GetImpl()));

  ShapeInfo turned = shape.Transpose(
      frame, Proc::SettingsEffectTranspose(Proc::SettingsEffectTranspose::Rotate90));
  ShapeInfo cropped = shape.Crop(frame, ROI{0, 0, 50, 50});
  ShapeInfo resized = shape.Resize(frame, Conf::FrameInfo{200, 200, 1, 1});

  EXPECT_TRUE(shape == before);
  EXPECT_EQ(turned->GetPosition().GetAngle(), 90);
  EXPECT_EQ(As(turned).rendering.turns, 1);
  EXPECT_EQ(cropped->GetPosition().GetX(), 1.0);
  EXPECT_EQ(As(resized).rendering.width, 4.0);
  EXPECT_NE(turned.GetImpl(), shape.GetImpl());
}

TEST(ShapeInfoTest, DeserializeRecreatesTheKindFromItsClassId) {
  auto record = TestShape::Create(IToolsId::SHAPE_FRAME);
  record->SetIndex(3);
  record->SetZValue(101.5);
  static_cast<TestShape&>(*record).rendering.width = 7.5;
  ShapeInfo shape(*record);

  struct Holder : Drevin::ISerializableBase {
    void Serialize(const Drevin::ISerializerPtr& s) const override { s->WriteObject("S", *shape); }
    const ShapeInfo* shape = nullptr;
  } holder;
  holder.shape = &shape;
  Core::Property tree;
  holder.Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_EQ(tree.GetChild("S").GetClassId(), "TestShape");

  ShapeInfo read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree))->GetChild("S"));
  ASSERT_TRUE(read);
  EXPECT_TRUE(read == shape);
  EXPECT_EQ(read->GetIndex(), 3);
  EXPECT_EQ(read->GetTool(), IToolsId::SHAPE_FRAME);
  EXPECT_EQ(As(read).rendering.width, 7.5);
}

TEST(ShapeInfoTest, DeserializeOfAnUnknownClassIdThrowsNamingIt) {
  Core::Property node("CircleInfo");
  node.SetInt("Index", 1);
  ShapeInfo shape(*TestShape::Create(IToolsId::TEXT));
  const ShapeInfoBase* before = shape.GetImpl();
  try {
    shape.Deserialize(Drevin::SerializerProperty::Create(std::as_const(node)));
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    const std::string* text = boost::get_error_info<TagDescription>(e);
    ASSERT_NE(text, nullptr);
    EXPECT_THAT(*text, HasSubstr("'CircleInfo'"));
  }
  EXPECT_EQ(shape.GetImpl(), before);
}

}  // namespace
