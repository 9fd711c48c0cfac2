#include "kelbra/Drevin/SerializerProperty.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/PropertySerializer.h"

namespace {

using namespace Kelbra;
using Drevin::ISerializerConstPtr;
using Drevin::ISerializerPtr;
using ::testing::HasSubstr;

// A small record as the library writes them: scalars, a member child, a list of children.
class Point : public virtual Drevin::ISerializable {
 public:
  int x = 0;
  double y = 0.5;
  std::string GetClassId() const override { return "Point"; }
  void Serialize(const ISerializerPtr& s) const override {
    s->WriteInt("X", x);
    s->WriteDouble("Y", y);
  }
  void Deserialize(const ISerializerConstPtr& s) override {
    x = s->ReadInt("X", x);
    y = s->ReadDouble("Y", y);
  }
};

class Shape : public virtual Drevin::ISerializable {
 public:
  std::string name = "none";
  bool visible = true;
  std::int64_t pixels = 0;
  Point anchor;
  std::vector<Point> corners;

  void Serialize(const ISerializerPtr& s) const override {
    s->WriteString("Name", name);
    s->WriteBool("Visible", visible);
    s->WriteInt64("Pixels", pixels);
    s->WriteObject("Anchor", anchor);
    auto list = s->CreateCollection("Corners");
    for (const Point& p : corners) list->WriteObject("Corner", p);
  }
  void Deserialize(const ISerializerConstPtr& s) override {
    name = s->ReadString("Name", name);
    visible = s->ReadBool("Visible", visible);
    pixels = s->ReadInt64("Pixels", pixels);
    if (s->Has("Anchor")) s->ReadObject("Anchor", anchor);
    corners.clear();
    if (auto list = s->GetCollection("Corners")) {
      for (std::size_t i = 0; i < list->GetCount(); ++i) {
        auto item = list->GetItem(i);
        EXPECT_EQ(item->GetChild("Corner")->GetClassId(), "Point");
        Point p;
        item->ReadObject("Corner", p);
        corners.push_back(p);
      }
    }
  }
};

TEST(SerializerPropertyTest, RecordRoundTripsThroughTreeAndText) {
  Shape shape;
  shape.name = "arrow";
  shape.visible = false;
  shape.pixels = std::int64_t{1} << 40;
  shape.anchor.x = -3;
  shape.corners = {Point(), Point()};
  shape.corners[1].y = 0.25;

  Core::Property tree;
  shape.Serialize(Drevin::SerializerProperty::Create(tree));
  const Core::Property loaded =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree));
  EXPECT_EQ(loaded.GetChild("Anchor").GetClassId(), "Point");

  Shape copy;
  copy.Deserialize(Drevin::SerializerProperty::Create(loaded));
  EXPECT_EQ(copy.name, "arrow");
  EXPECT_FALSE(copy.visible);
  EXPECT_EQ(copy.pixels, std::int64_t{1} << 40);
  EXPECT_EQ(copy.anchor.x, -3);
  ASSERT_EQ(copy.corners.size(), 2u);
  EXPECT_EQ(copy.corners[1].y, 0.25);
}

TEST(SerializerPropertyTest, AbsentKeysKeepTheCurrentValues) {
  Shape shape;
  shape.name = "kept";
  shape.anchor.y = 0.75;
  shape.corners = {Point()};
  const Core::Property empty;
  shape.Deserialize(Drevin::SerializerProperty::Create(empty));
  EXPECT_EQ(shape.name, "kept");
  EXPECT_EQ(shape.anchor.y, 0.75);
  EXPECT_TRUE(shape.corners.empty());  // an absent list reads as empty
}

TEST(SerializerPropertyTest, WrongTypeThrowsWrongTypeIsRequested) {
  Core::Property tree;
  auto writer = Drevin::SerializerProperty::Create(tree);
  writer->WriteInt("Z", 4);
  writer->WriteString("S", "text");
  const ISerializerConstPtr reader = Drevin::SerializerProperty::Create(std::as_const(tree));
  EXPECT_THROW(reader->ReadDouble("Z", 0.0), Core::WrongTypeIsRequested);
  EXPECT_THROW(reader->ReadInt64("Z", 0), Core::WrongTypeIsRequested);
  EXPECT_THROW(reader->ReadBool("S", false), Core::WrongTypeIsRequested);
  EXPECT_THROW(reader->GetCollection("S"), Core::WrongTypeIsRequested);
  EXPECT_EQ(reader->ReadInt("Z", 0), 4);
}

TEST(SerializerPropertyTest, MissingChildAndItemAreReportedByName) {
  const Core::Property tree;
  const auto reader = Drevin::SerializerProperty::Create(tree);
  Point p;
  try {
    reader->ReadObject("Anchor", p);
    FAIL() << "no exception";
  } catch (const Core::PropertyException& e) {
    EXPECT_THAT(e.what(), HasSubstr("'Anchor'"));
  }
  EXPECT_EQ(reader->GetCollection("Corners"), nullptr);

  Core::Property withList;
  Drevin::SerializerProperty::Create(withList)->CreateCollection("L")->AddItem()->WriteInt("n", 1);
  auto list = Drevin::SerializerProperty::Create(std::as_const(withList))->GetCollection("L");
  ASSERT_EQ(list->GetCount(), 1u);
  EXPECT_EQ(list->GetItem(0)->ReadInt("n", 0), 1);
  EXPECT_THROW(list->GetItem(1), Core::PropertyException);
}

TEST(SerializerPropertyTest, DefaultClassIdIsTheUnqualifiedClassName) {
  Shape shape;
  EXPECT_EQ(static_cast<const Drevin::ISerializableBase&>(shape).GetClassId(), "Shape");
  Core::Property tree;
  Drevin::SerializerProperty::Create(tree)->WriteObject("S", shape);
  EXPECT_EQ(tree.GetChild("S").GetClassId(), "Shape");
}

}  // namespace
