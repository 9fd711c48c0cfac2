// The contract every shape kind keeps, checked over all seven kinds: registry row, keys and
// defaults of a new shape, a round trip through the text form, equality, Reset, Remove, and how
// the kind's sizes follow a quarter turn, a crop and a resize of the picture.
#include "canvaro/shapes/ShapeInfoT.h"

#include <cmath>
#include <numbers>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/EllipseInfo.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/MarkerInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "canvaro/shapes/ShapedArrowInfo.h"
#include "canvaro/shapes/TextInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/PropertyKeys.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Transpose = Proc::SettingsEffectTranspose;

using Value = std::variant<std::int32_t, double, std::string>;
struct Entry {
  std::string key;
  Value value;
};

// The sizes of a kind that follow the picture: a box (or a line, as a box of no height) with
// the stroke that scales with it.
struct Box {
  double width;
  double height;
  std::optional<unsigned> thickness;
};

// ---- one traits struct per kind ----

template <class R>
void CustomizeStroke(R& r) {
  r.SetThickness(4);
  r.SetOutlineThickness(1.5);
  r.SetStyle(2);
}

struct LineKind {
  using Shape = LineInfo;
  static constexpr ShapeType kType = ShapeType::Line;
  static constexpr const char* kClassId = "LineInfo";
  static std::vector<Entry> OwnDefaults() {
    return {{"Thickness", 1}, {"OutlineThickness", 0.0}, {"Style", 0}, {"Length", 0.25}};
  }
  static void Customize(Shape::RenderingType& r) {
    CustomizeStroke(r);
    r.SetLength(0.75);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) {
    return Box{r.GetLength(), 0.0, r.GetThickness()};
  }
};

struct ArrowKind {
  using Shape = ArrowInfo;
  static constexpr ShapeType kType = ShapeType::Arrow;
  static constexpr const char* kClassId = "ArrowInfo";
  static std::vector<Entry> OwnDefaults() {
    auto entries = LineKind::OwnDefaults();
    entries.push_back({"ArrowTypeHead", 2});
    entries.push_back({"ArrowTypeTail", 0});
    return entries;
  }
  static void Customize(Shape::RenderingType& r) {
    LineKind::Customize(r);
    r.SetHeadType(3);
    r.SetTailType(1);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) { return LineKind::GetBox(r); }
};

struct ShapedArrowKind {
  using Shape = ShapedArrowInfo;
  static constexpr ShapeType kType = ShapeType::ShapedArrow;
  static constexpr const char* kClassId = "ShapedArrow";
  static std::vector<Entry> OwnDefaults() {
    auto entries = LineKind::OwnDefaults();
    entries.push_back({"ArrowShape", 0});
    return entries;
  }
  static void Customize(Shape::RenderingType& r) {
    LineKind::Customize(r);
    r.SetArrowShape(5);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) { return LineKind::GetBox(r); }
};

struct RectangleKind {
  using Shape = RectangleInfo;
  static constexpr ShapeType kType = ShapeType::Rectangle;
  static constexpr const char* kClassId = "RectangleInfo";
  static std::vector<Entry> OwnDefaults() {
    return {{"Thickness", 1}, {"OutlineThickness", 0.0}, {"Style", 0},
            {"Width", 0.25},  {"Height", 0.25},          {"Radius", 0.0}};
  }
  static void Customize(Shape::RenderingType& r) {
    CustomizeStroke(r);
    r.SetWidth(0.4);
    r.SetHeight(0.1);
    r.SetRadius(3.0);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) {
    return Box{r.GetWidth(), r.GetHeight(), r.GetThickness()};
  }
};

struct EllipseKind {
  using Shape = EllipseInfo;
  static constexpr ShapeType kType = ShapeType::Ellipse;
  static constexpr const char* kClassId = "EllipseInfo";
  static std::vector<Entry> OwnDefaults() {
    return {{"Thickness", 1},
            {"OutlineThickness", 0.0},
            {"Style", 0},
            {"Width", 0.25},
            {"Height", 0.25}};
  }
  static void Customize(Shape::RenderingType& r) {
    CustomizeStroke(r);
    r.SetWidth(0.4);
    r.SetHeight(0.1);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) {
    return Box{r.GetWidth(), r.GetHeight(), r.GetThickness()};
  }
};

struct MarkerKind {
  using Shape = MarkerInfo;
  static constexpr ShapeType kType = ShapeType::Marker;
  static constexpr const char* kClassId = "MarkerInfo";
  static std::vector<Entry> OwnDefaults() { return {{"Width", 0.25}, {"Height", 0.25}}; }
  static void Customize(Shape::RenderingType& r) {
    r.SetWidth(0.4);
    r.SetHeight(0.1);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType& r) {
    return Box{r.GetWidth(), r.GetHeight(), std::nullopt};
  }
};

struct TextKind {
  using Shape = TextInfo;
  static constexpr ShapeType kType = ShapeType::Text;
  static constexpr const char* kClassId = "TextInfo";
  static std::vector<Entry> OwnDefaults() {
    return {{"Text", std::string()},  {"TextAlignment", 1},
            {"Font", std::string()},  {"FontSize", 96},
            {"FontEffects", 0},       {"OutlineSize", 0.0},
            {"BorderSize", 0.0},      {"BorderColor", 0xFF},
            {"BorderOpacity", 255},   {"BackgroundColor", 0xFF},
            {"BackgroundOpacity", 0}, {"Width", 0.0},
            {"Height", 0.0}};
  }
  static void Customize(Shape::RenderingType& r) {
    r.SetText(
        "Gr\xC3\xBC\xC3\x9F"
        "e\n\x01");
    r.SetTextAlignment(2);
    r.SetFont("Helvetica Neue");
    r.SetFontSize(40);
    r.SetFontEffects(5);
    r.SetOutlineSize(1.25);
    r.SetBorderSize(2.5);
    r.SetBorderColor(Proc::Color(10, 20, 30, 40));
    r.SetBorderOpacity(17);
    r.SetBackgroundColor(Proc::Color(200, 100, 50, 255));
    r.SetBackgroundOpacity(128);
    r.SetWidth(300.0);
    r.SetHeight(80.0);
  }
  static std::optional<Box> GetBox(const Shape::RenderingType&) { return std::nullopt; }
};

// ---- helpers ----

template <class Kind>
boost::intrusive_ptr<typename Kind::Shape> Make(IToolsId::Value tool = IToolsId::SHAPE_FRAME) {
  return boost::static_pointer_cast<typename Kind::Shape>(Kind::Shape::Create(tool));
}

Core::Property Write(const ShapeInfoBase& shape) {
  Core::Property node;
  shape.Serialize(Drevin::SerializerProperty::Create(node));
  return node;
}

// Writes the shape as a child object, turns the tree into text and back, and reads a new
// handle from it, as a saved document would.
ShapeInfo ThroughText(const ShapeInfo& shape) {
  struct Holder : Drevin::ISerializableBase {
    explicit Holder(const ShapeInfo& s) : shape(s) {}
    void Serialize(const Drevin::ISerializerPtr& s) const override {
      s->WriteObject("Shape", shape);
    }
    const ShapeInfo& shape;
  } holder(shape);
  Core::Property tree;
  holder.Serialize(Drevin::SerializerProperty::Create(tree));
  const Core::Property read =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree));
  ShapeInfo result;
  result.Deserialize(Drevin::SerializerProperty::Create(read)->GetChild("Shape"));
  return result;
}

void ExpectEntry(const Core::Property& node, const Entry& entry) {
  SCOPED_TRACE(entry.key);
  if (const auto* i = std::get_if<std::int32_t>(&entry.value)) {
    EXPECT_EQ(node.GetInt(entry.key), *i);
  } else if (const auto* d = std::get_if<double>(&entry.value)) {
    EXPECT_EQ(node.GetDouble(entry.key), *d);
  } else {
    EXPECT_EQ(node.GetString(entry.key), std::get<std::string>(entry.value));
  }
}

constexpr double kPi = std::numbers::pi;

struct Vec {
  double x;
  double y;
};
double Norm(Vec v) { return std::hypot(v.x, v.y); }

// What a resize should do to a box of a x b pixels turned by `degrees`, worked out from the
// scaled box's sides: the longer scaled side is kept with its direction, the other side makes
// up the scaled area, and the stroke scales as a unit vector across the kept side does.
struct Expected {
  double width;   // pixels
  double height;  // pixels
  double degrees;
  double strokeScale;
};
Expected ScaleTurnedBox(double a, double b, double degrees, double sx, double sy) {
  const double t = degrees * kPi / 180;
  const Vec side{a * std::cos(t) * sx, a * std::sin(t) * sy};
  const Vec up{-b * std::sin(t) * sx, b * std::cos(t) * sy};
  const double area = a * b * sx * sy;
  Expected e{};
  if (Norm(up) > Norm(side)) {
    e.height = Norm(up);
    e.width = area / e.height;
    e.degrees = std::atan2(-up.x, up.y) * 180 / kPi;
    const double n = e.degrees * kPi / 180;
    e.strokeScale = Norm({std::cos(n) * sx, std::sin(n) * sy});
  } else {
    e.width = Norm(side);
    e.height = area / e.width;
    e.degrees = std::atan2(side.y, side.x) * 180 / kPi;
    const double n = e.degrees * kPi / 180;
    e.strokeScale = Norm({-std::sin(n) * sx, std::cos(n) * sy});
  }
  return e;
}

template <class Kind>
class ShapeKindTest : public ::testing::Test {};

using Kinds = ::testing::Types<ArrowKind, EllipseKind, LineKind, MarkerKind, RectangleKind,
                               ShapedArrowKind, TextKind>;
TYPED_TEST_SUITE(ShapeKindTest, Kinds);

TYPED_TEST(ShapeKindTest, IsRegisteredUnderItsClassIdAndType) {
  const auto* row = ShapeInfoBase::GetCreatorItem(std::string(TypeParam::kClassId));
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->type, TypeParam::kType);
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(TypeParam::kType), row);

  auto made = row->create(IToolsId::SHAPE_ARROW);
  ASSERT_NE(dynamic_cast<typename TypeParam::Shape*>(made.get()), nullptr);
  EXPECT_EQ(made->GetShapeType(), TypeParam::kType);
  EXPECT_EQ(made->GetClassId(), TypeParam::kClassId);
  EXPECT_EQ(made->GetTool(), IToolsId::SHAPE_ARROW);
  EXPECT_EQ(made->GetCurrentToolID(), IToolsId::NONE);
}

TYPED_TEST(ShapeKindTest, ANewShapeWritesItsKeysInOrderWithTheDefaults) {
  const Core::Property node = Write(*Make<TypeParam>());

  std::vector<std::string> expected = {
      "Index",     "Visible",      "Saved",         "InfoTypeBaseToolName",
      "PresetID",  "ZValue",       "ChangeType",    "ToolName",
      "PositionX", "PositionY",    "RotationAngle", "PositionDefault",
      "TextColor", "OutlineColor", "Opacity"};
  for (const auto& entry : TypeParam::OwnDefaults()) expected.push_back(entry.key);
  EXPECT_THAT(canvaro_test::KeysOf(node), ::testing::ElementsAreArray(expected));

  // The colours of a new shape of every kind: white, transparent outline, opaque.
  EXPECT_EQ(node.GetInt("TextColor"), static_cast<std::int32_t>(0xFFFFFFFFu));
  EXPECT_EQ(node.GetInt("OutlineColor"), 0);
  EXPECT_EQ(node.GetInt("Opacity"), 255);
  EXPECT_EQ(node.GetString("InfoTypeBaseToolName"), "SHAPE_FRAME");
  for (const auto& entry : TypeParam::OwnDefaults()) ExpectEntry(node, entry);
}

TYPED_TEST(ShapeKindTest, RoundTripsThroughTheTextForm) {
  auto shape = Make<TypeParam>();
  TypeParam::Customize(shape->GetRendering());
  shape->SetIndex(3);
  shape->SetZValue(1073741723.5);
  shape->SetPresetId("preset-7");
  shape->SetCurrentTool(IToolsId::SHAPE_LINE);
  shape->GetRendering().SetColor(Proc::Color(1, 2, 3, 4));
  shape->GetRendering().SetOpacity(99);
  shape->GetPosition().SetAngle(-33.5);
  const ShapeInfo original(*shape);
  ASSERT_FALSE(original == ShapeInfo(*Make<TypeParam>()));  // the customising shows

  const ShapeInfo read = ThroughText(original);

  ASSERT_TRUE(read);
  EXPECT_NE(dynamic_cast<const typename TypeParam::Shape*>(read.GetImpl()), nullptr);
  EXPECT_TRUE(read == original);
  EXPECT_EQ(read->GetIndex(), 3);
  EXPECT_EQ(read->GetCurrentToolID(), IToolsId::SHAPE_LINE);
  // Everything written comes back, not only what equality looks at.
  EXPECT_EQ(Write(*read.GetImpl()), Write(*original.GetImpl()));
}

TYPED_TEST(ShapeKindTest, MissingKeysLeaveTheKindsFieldsAlone) {
  auto shape = Make<TypeParam>();
  TypeParam::Customize(shape->GetRendering());
  const ShapeInfo before(*shape);
  Core::Property empty;
  shape->Deserialize(Drevin::SerializerProperty::Create(std::as_const(empty)));
  EXPECT_TRUE(ShapeInfo(*shape) == before);
}

TYPED_TEST(ShapeKindTest, EqualityComparesTheKindsParametersAndNeverCastsAcrossKinds) {
  auto a = Make<TypeParam>();
  auto b = a->Clone();
  EXPECT_NE(a.get(), b.get());
  EXPECT_EQ(b->GetRefCount(), 1);
  EXPECT_TRUE(*a == *b);
  TypeParam::Customize(a->GetRendering());
  EXPECT_FALSE(*a == *b);
  EXPECT_TRUE(*a != *b);
  auto faint = Make<TypeParam>();
  faint->GetRendering().SetOpacity(254);
  EXPECT_FALSE(*faint == *Make<TypeParam>()) << "opacity counts";

  const std::vector<ShapeInfoBasePtr> all = {
      ArrowInfo::Create(IToolsId::NONE),     EllipseInfo::Create(IToolsId::NONE),
      LineInfo::Create(IToolsId::NONE),      MarkerInfo::Create(IToolsId::NONE),
      RectangleInfo::Create(IToolsId::NONE), ShapedArrowInfo::Create(IToolsId::NONE),
      TextInfo::Create(IToolsId::NONE)};
  auto plain = Make<TypeParam>(IToolsId::NONE);
  int sameKind = 0;
  for (const auto& other : all) {
    const bool same = other->GetShapeType() == TypeParam::kType;
    sameKind += same;
    EXPECT_EQ(*plain == *other, same) << other->GetClassId();
    EXPECT_EQ(*other == *plain, same) << other->GetClassId();
  }
  EXPECT_EQ(sameKind, 1);
}

TYPED_TEST(ShapeKindTest, ResetTurnsColoursBlackAndKeepsTheKindsParameters) {
  auto shape = Make<TypeParam>();
  TypeParam::Customize(shape->GetRendering());
  shape->GetPosition().SetDefault(false);
  shape->GetPosition().SetX(0.1);
  shape->SetZValue(500);
  auto expected = Make<TypeParam>();
  TypeParam::Customize(expected->GetRendering());
  expected->GetPosition().SetDefault(false);
  expected->GetRendering().SetColor(Proc::Color::Black());
  expected->GetRendering().SetOutlineColor(Proc::Color::Black());

  shape->Reset();

  EXPECT_TRUE(*shape == *expected);
  EXPECT_EQ(shape->GetRendering().GetColor(), Proc::Color::Black());
  EXPECT_EQ(shape->GetRendering().GetOutlineColor(), Proc::Color::Black());
  EXPECT_EQ(shape->GetZValue(), 0);
}

TYPED_TEST(ShapeKindTest, RemoveHidesUnsavesAndClearsTheToolOnlyWhenAsked) {
  auto shape = Make<TypeParam>();
  shape->SetCurrentTool(IToolsId::SHAPE_MARKER);
  shape->SetSaved(true);
  EXPECT_TRUE(shape->IsSaved());

  auto kept = shape->Clone();
  kept->Remove(false);
  EXPECT_FALSE(kept->IsVisible());
  EXPECT_FALSE(kept->IsSaved());
  EXPECT_EQ(kept->GetCurrentToolID(), IToolsId::SHAPE_MARKER);

  shape->Remove(true);
  EXPECT_FALSE(shape->IsVisible());
  EXPECT_EQ(shape->GetCurrentToolID(), IToolsId::NONE);
  EXPECT_EQ(shape->GetTool(), IToolsId::SHAPE_FRAME);  // the record's own tool stays
}

TYPED_TEST(ShapeKindTest, QuarterTurnsKeepSizesInPixels) {
  const Conf::FrameInfo frame{200, 100, 1, 1};  // aspect 0.5
  auto shape = Make<TypeParam>();
  TypeParam::Customize(shape->GetRendering());
  const ShapeInfo start(*shape);
  const auto box = TypeParam::GetBox(shape->GetRendering());

  for (auto kind : {Transpose::None, Transpose::Rotate180}) {
    ShapeInfo turned = start.Transpose(frame, Transpose(kind));
    EXPECT_TRUE(static_cast<const typename TypeParam::Shape&>(*turned.GetImpl()).GetRendering() ==
                shape->GetRendering())
        << kind;
  }
  for (auto kind : {Transpose::Rotate90, Transpose::Rotate270}) {
    ShapeInfo turned = start.Transpose(frame, Transpose(kind));
    const auto& r = static_cast<const typename TypeParam::Shape&>(*turned.GetImpl()).GetRendering();
    const auto after = TypeParam::GetBox(r);
    if (!box) {
      EXPECT_TRUE(r == shape->GetRendering()) << "text keeps its size";
      continue;
    }
    // 0.4 of 200 pixels is 80 pixels, which is 0.8 of the turned picture's 100.
    EXPECT_DOUBLE_EQ(after->width, box->width * 2) << kind;
    EXPECT_DOUBLE_EQ(after->height, box->height / 2) << kind;
  }
}

TYPED_TEST(ShapeKindTest, CropMakesSizesRelativeToTheCrop) {
  const Conf::FrameInfo frame{200, 100, 1, 1};
  const ROI roi{20, 10, 50, 40};
  auto shape = Make<TypeParam>();
  TypeParam::Customize(shape->GetRendering());
  const auto box = TypeParam::GetBox(shape->GetRendering());

  const ShapeInfo cropped = ShapeInfo(*shape).Crop(frame, roi);

  const auto& r = static_cast<const typename TypeParam::Shape&>(*cropped.GetImpl()).GetRendering();
  EXPECT_DOUBLE_EQ(cropped->GetPosition().GetX(), (0.5 * 200 - 20) / 50);
  if (!box) {
    EXPECT_TRUE(r == shape->GetRendering());
    return;
  }
  const auto after = TypeParam::GetBox(r);
  EXPECT_DOUBLE_EQ(after->width, box->width * 200 / 50);
  EXPECT_DOUBLE_EQ(after->height, box->height * 100 / 40);
}

TYPED_TEST(ShapeKindTest, ResizeKeepsTurnedBoxesRectangular) {
  if (!TypeParam::GetBox(Make<TypeParam>()->GetRendering())) {
    GTEST_SKIP() << "text scales its font instead (TextInfoTest)";
  }
  const Conf::FrameInfo from{400, 300, 1, 1};
  struct Case {
    Conf::FrameInfo to;
    double degrees;
  };
  // Wider and narrower pictures, boxes turned either way, and a square picture scaled evenly.
  const Case cases[] = {{{800, 300, 1, 1}, 30.0},  {{400, 900, 1, 1}, -60.0},
                        {{200, 600, 1, 1}, 135.0}, {{1000, 200, 1, 1}, -170.0},
                        {{800, 600, 1, 1}, 45.0},  {{600, 300, 1, 1}, 0.0},
                        {{400, 600, 1, 1}, 90.0},  {{200, 1200, 1, 1}, 20.0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.to << " at " << c.degrees);
    auto shape = Make<TypeParam>();
    TypeParam::Customize(shape->GetRendering());
    shape->GetPosition().SetAngle(c.degrees);
    const Box box = *TypeParam::GetBox(shape->GetRendering());

    const ShapeInfo resized = ShapeInfo(*shape).Resize(from, c.to);

    const double sx = double(c.to.width) / from.width;
    const double sy = double(c.to.height) / from.height;
    const Expected e =
        ScaleTurnedBox(box.width * from.width, box.height * from.height, c.degrees, sx, sy);
    const auto& r =
        static_cast<const typename TypeParam::Shape&>(*resized.GetImpl()).GetRendering();
    const Box after = *TypeParam::GetBox(r);
    EXPECT_NEAR(after.width, e.width / c.to.width, 1e-9);
    EXPECT_NEAR(after.height, e.height / c.to.height, 1e-9);
    EXPECT_NEAR(resized->GetPosition().GetAngle(), e.degrees, 1e-7);
    EXPECT_DOUBLE_EQ(resized->GetPosition().GetX(), 0.5);
    if (box.thickness) {
      EXPECT_EQ(*after.thickness,
                static_cast<unsigned>(std::lround(*box.thickness * e.strokeScale)));
    }
  }
}

}  // namespace
