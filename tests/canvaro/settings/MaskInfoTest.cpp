#include "canvaro/settings/MaskInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/PropertyKeys.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Blender::IBlender;
using canvaro_test::KeysOf;
using canvaro_test::TestPainter;
using ::testing::ElementsAre;

IBlender::Initializer SomeBlender() {
  return IBlender::Initializer(static_cast<IBlender::Initializer::MaskType>(1),
                               Proc::Color(10, 20, 30, 40))
      .SetOpacity(100)
      .SetRangeMin(5);
}

void ExpectNotImplemented(const CanvaroException& e) {
  const std::string* text = boost::get_error_info<TagDescription>(e);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(*text, "Not implemented");
  EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
}

TEST(MaskInfoTest, FreshRecordIsTheStateStepsAreReadInto) {
  const MaskInfo info;
  EXPECT_EQ(info.GetLeft(), 0);
  EXPECT_EQ(info.GetRight(), 0);
  EXPECT_EQ(info.GetTop(), 0);
  EXPECT_EQ(info.GetBottom(), 0);
  EXPECT_EQ(info.GetInfoEx().GetPainter(), nullptr);
  EXPECT_EQ(info.GetInfoEx().GetBlender(),
            IBlender::Initializer(IBlender::Initializer::DEFAULT, Proc::Color::Black()));
}

TEST(MaskInfoTest, PainterIsSharedNotCloned) {
  const auto painter = TestPainter::Make(12);
  const MaskInfo::MaskInfoEx ex(painter, SomeBlender());
  EXPECT_EQ(ex.GetPainter(), painter);
  EXPECT_EQ(painter->GetRefCount(), 2);
  const MaskInfo info(1, 2, 3, 4, ex);
  EXPECT_EQ(info.GetInfoEx().GetPainter(), painter);
  EXPECT_EQ(info.GetInfoEx().GetBlender(), SomeBlender());
}

TEST(MaskInfoTest, WithoutPainterWritesRectangleThenBlenderAndReadsBack) {
  const MaskInfo written(10, 50, 20, 60, MaskInfo::MaskInfoEx(SomeBlender()));
  Core::Property tree;
  written.Serialize(Drevin::SerializerProperty::Create(tree));
  EXPECT_THAT(KeysOf(tree), ElementsAre("Left", "Right", "Top", "Bottom", "InfoEx"));
  EXPECT_EQ(tree.GetInt("Right"), 50);
  EXPECT_EQ(tree.GetInt("Top"), 20);
  EXPECT_THAT(KeysOf(tree.GetChild("InfoEx")), ElementsAre("Blender"));
  EXPECT_EQ(tree.GetChild("InfoEx").GetChild("Blender").GetInt("keyBlenderSettingsMaskOpacity"),
            100);

  MaskInfo read;
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetLeft(), 10);
  EXPECT_EQ(read.GetRight(), 50);
  EXPECT_EQ(read.GetTop(), 20);
  EXPECT_EQ(read.GetBottom(), 60);
  EXPECT_EQ(read.GetInfoEx().GetPainter(), nullptr);
  EXPECT_EQ(read.GetInfoEx().GetBlender(), SomeBlender());
}

TEST(MaskInfoTest, PainterIsWrittenBeforeTheBlenderButCannotBeRead) {
  const MaskInfo written(10, 50, 20, 60,
                         MaskInfo::MaskInfoEx(TestPainter::Make(12), SomeBlender()));
  Core::Property tree;
  written.Serialize(Drevin::SerializerProperty::Create(tree));
  const Core::Property& ex = tree.GetChild("InfoEx");
  EXPECT_THAT(KeysOf(ex), ElementsAre("Painter", "Blender"));
  EXPECT_EQ(ex.GetChild("Painter").GetClassId(), "TestPainter");
  EXPECT_EQ(ex.GetChild("Painter").GetInt("BrushSize"), 12);

  MaskInfo read;
  try {
    read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    ExpectNotImplemented(e);
  }
  // The rectangle was read before the failure; the blender was not.
  EXPECT_EQ(read.GetLeft(), 10);
  EXPECT_EQ(read.GetBottom(), 60);
  EXPECT_EQ(read.GetInfoEx().GetBlender(), MaskInfo().GetInfoEx().GetBlender());
}

TEST(MaskInfoTest, AbsentKeysKeepTheCurrentValues) {
  Core::Property tree;
  tree.SetInt("Right", 7);
  MaskInfo read(1, 2, 3, 4, MaskInfo::MaskInfoEx(SomeBlender()));
  read.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
  EXPECT_EQ(read.GetLeft(), 1);
  EXPECT_EQ(read.GetRight(), 7);
  EXPECT_EQ(read.GetBottom(), 4);
  EXPECT_EQ(read.GetInfoEx().GetBlender(), SomeBlender());
}

TEST(MaskInfoTest, PainterFactoryIsNotImplementedForAnyName) {
  for (const char* name : {"TestPainter", ""}) {
    try {
      ISettingsPainter::CreatePainterSettings(name);
      ADD_FAILURE() << "no exception for '" << name << "'";
    } catch (const CanvaroException& e) {
      ExpectNotImplemented(e);
      EXPECT_EQ(boost::get_error_info<TagCallStack>(e), nullptr);
    }
  }
}

}  // namespace
