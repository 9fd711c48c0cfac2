#include "kelbra/Drevin/SerializerProperty.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/PropertySerializer.h"
#include "support/Errors.h"

namespace {

using namespace Kelbra;
using Drevin::ISerializerConstPtr;
using Drevin::ISerializerPtr;
using ::testing::HasSubstr;

// A small record as the library writes them. Records round trip through this adapter in every
// record's own tests (the settings and shape suites, the documents), which also show the default
// class ids (the unqualified class names); here: what the adapter adds on its own.
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
  EXPECT_THAT(
      canvaro_test::ErrorText<Core::PropertyException>([&] { reader->ReadObject("Anchor", p); }),
      HasSubstr("'Anchor'"));
  EXPECT_EQ(reader->GetCollection("Corners"), nullptr);

  Core::Property withList;
  Drevin::SerializerProperty::Create(withList)->CreateCollection("L")->AddItem()->WriteInt("n", 1);
  auto list = Drevin::SerializerProperty::Create(std::as_const(withList))->GetCollection("L");
  ASSERT_EQ(list->GetCount(), 1u);
  EXPECT_EQ(list->GetItem(0)->ReadInt("n", 0), 1);
  EXPECT_THROW(list->GetItem(1), Core::PropertyException);
}

}  // namespace
