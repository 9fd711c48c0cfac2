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

#include <gtest/gtest.h>

#include "canvaro/shapes/ShapeInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Transpose = Proc::SettingsEffectTranspose;

using Value = std::variant<bool, std::int32_t, double, std::string>;
struct Entry {
  std::string key;
  Value value;
};

// One of a kind's own entries: what a new shape writes, and the value the tests give it.
struct Field {
  std::string key;
  Value initial;
  Value custom;
};

// A shape kind, made through the registry as a document reader makes it.
struct Kind {
  ShapeType type;
  const char* classId;
  std::vector<Field> fields;
};

void PrintTo(const Kind& kind, std::ostream* os) { *os << kind.classId; }

std::vector<Field> Plus(std::vector<Field> fields, const std::vector<Field>& more) {
  fields.insert(fields.end(), more.begin(), more.end());
  return fields;
}

std::vector<Kind> AllKinds() {
  const std::vector<Field> stroke = {
      {"Thickness", 1, 4}, {"OutlineThickness", 0.0, 1.5}, {"Style", 0, 2}};
  const std::vector<Field> box = {{"Width", 0.25, 0.4}, {"Height", 0.25, 0.1}};
  const auto line = Plus(stroke, {{"Length", 0.25, 0.75}});
  const std::vector<Field> text = {
      {"Text", "", "Grüße\n\x01"},    {"TextAlignment", 1, 2},
      {"Font", "", "Helvetica Neue"}, {"FontSize", 96, 40},
      {"FontEffects", 0, 5},          {"OutlineSize", 0.0, 1.25},
      {"BorderSize", 0.0, 2.5},       {"BorderColor", 0xFF, 0x0A141E28},
      {"BorderOpacity", 255, 17},     {"BackgroundColor", 0xFF, 0x643219FF},
      {"BackgroundOpacity", 0, 128},  {"Width", 0.0, 300.0},
      {"Height", 0.0, 80.0}};
  return {
      {ShapeType::Arrow, "ArrowInfo",
       Plus(line, {{"ArrowTypeHead", 2, 3}, {"ArrowTypeTail", 0, 1}})},
      {ShapeType::Ellipse, "EllipseInfo", Plus(stroke, box)},
      {ShapeType::Line, "LineInfo", line},
      {ShapeType::Marker, "MarkerInfo", box},
      {ShapeType::Rectangle, "RectangleInfo", Plus(Plus(stroke, box), {{"Radius", 0.0, 3.0}})},
      {ShapeType::ShapedArrow, "ShapedArrow", Plus(line, {{"ArrowShape", 0, 5}})},
      {ShapeType::Text, "TextInfo", text},
  };
}

// ---- helpers ----

void Put(Core::Property& node, const Entry& entry) {
  if (const auto* b = std::get_if<bool>(&entry.value)) {
    node.SetBool(entry.key, *b);
  } else if (const auto* i = std::get_if<std::int32_t>(&entry.value)) {
    node.SetInt(entry.key, *i);
  } else if (const auto* d = std::get_if<double>(&entry.value)) {
    node.SetDouble(entry.key, *d);
  } else {
    node.SetString(entry.key, std::get<std::string>(entry.value));
  }
}

Core::Property Node(const std::vector<Entry>& entries) {
  Core::Property node;
  for (const Entry& entry : entries) Put(node, entry);
  return node;
}

// Reads `entries` into the shape, as a saved document sets them.
void Read(ShapeInfoBase& shape, const std::vector<Entry>& entries) {
  shape.Deserialize(Drevin::SerializerProperty::Create(Node(entries)));
}

Core::Property Write(const ShapeInfoBase& shape) {
  Core::Property node;
  shape.Serialize(Drevin::SerializerProperty::Create(node));
  return node;
}

std::string Text(const ShapeInfoBase& shape) {
  return Core::PropertySerializer::ToString(Write(shape), false);
}

// What a shape writes apart from its position, which turns and crops move.
std::string Unplaced(const ShapeInfo& shape) {
  Core::Property node = Write(*shape.GetImpl());
  for (const char* key : {"PositionX", "PositionY", "RotationAngle"}) node.Remove(key);
  return Core::PropertySerializer::ToString(node, false);
}

// Expects the shape to write `entries`: writing them over what it writes changes nothing.
void ExpectWrites(const ShapeInfoBase& shape, const std::vector<Entry>& entries) {
  Core::Property expected = Write(shape);
  for (const Entry& entry : entries) Put(expected, entry);
  EXPECT_EQ(Text(shape), Core::PropertySerializer::ToString(expected, false));
}

// Writes the shape as a child object, turns the tree into text and back, and reads a new
// handle from it, as a saved document would.
ShapeInfo ThroughText(const ShapeInfo& shape) {
  Core::Property tree;
  Drevin::SerializerProperty::Create(tree)->WriteObject("Shape", shape);
  const Core::Property read =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree));
  ShapeInfo result;
  result.Deserialize(Drevin::SerializerProperty::Create(read)->GetChild("Shape"));
  return result;
}

// The sizes of a kind that follow the picture, as written: a box (a line is a box of no height)
// with the stroke that scales with it. Text has none: it scales its font instead.
struct Box {
  double width;
  double height;
  std::optional<int> thickness;
};
std::optional<Box> BoxOf(const ShapeInfo& shape) {
  const Core::Property node = Write(*shape.GetImpl());
  if (node.Has("Text")) return std::nullopt;
  Box box{0.0, 0.0, std::nullopt};
  if (node.Has("Thickness")) box.thickness = node.GetInt("Thickness");
  box.width = node.GetDouble(node.Has("Length") ? "Length" : "Width");
  if (node.Has("Height")) box.height = node.GetDouble("Height");
  return box;
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
  const bool upKept = Norm(up) > Norm(side);
  const double kept = upKept ? Norm(up) : Norm(side);
  // The direction of the resized box's width.
  const Vec along = upKept ? Vec{up.y, -up.x} : side;
  const double n = std::atan2(along.y, along.x);
  const Vec across =
      upKept ? Vec{std::cos(n) * sx, std::sin(n) * sy} : Vec{-std::sin(n) * sx, std::cos(n) * sy};
  return {upKept ? area / kept : kept, upKept ? kept : area / kept, n * 180 / kPi, Norm(across)};
}

class ShapeKindTest : public ::testing::TestWithParam<Kind> {
 protected:
  // A new shape of the kind with `entries` read into it, as a saved document sets them.
  static ShapeInfoBasePtr Make(const std::vector<Entry>& entries = {},
                               IToolsId::Value tool = IToolsId::SHAPE_FRAME) {
    auto shape = ShapeInfoBase::GetCreatorItem(GetParam().classId)->create(tool);
    Read(*shape, entries);
    return shape;
  }
  // The kind's own values, all away from their defaults.
  static std::vector<Entry> Custom() {
    std::vector<Entry> entries;
    for (const Field& field : GetParam().fields) entries.push_back({field.key, field.custom});
    return entries;
  }
  // A shape with the kind's own values and then `more`.
  static ShapeInfoBasePtr Customized(std::vector<Entry> more = {}) {
    auto entries = Custom();
    entries.insert(entries.end(), more.begin(), more.end());
    return Make(entries);
  }
};

INSTANTIATE_TEST_SUITE_P(AllKinds, ShapeKindTest, ::testing::ValuesIn(AllKinds()),
                         [](const auto& info) { return std::string(info.param.classId); });

TEST_P(ShapeKindTest, ANewShapeWritesItsKeysInOrderWithTheDefaults) {
  // Every kind starts centred, white with a transparent outline, and opaque.
  std::vector<Entry> expected = {{"Index", -1},          {"Visible", true},
                                 {"Saved", false},       {"InfoTypeBaseToolName", "SHAPE_FRAME"},
                                 {"PresetID", ""},       {"ZValue", 0.0},
                                 {"ChangeType", 0},      {"ToolName", "NONE"},
                                 {"PositionX", 0.5},     {"PositionY", 0.5},
                                 {"RotationAngle", 0.0}, {"PositionDefault", true},
                                 {"TextColor", -1},      {"OutlineColor", 0},
                                 {"Opacity", 255}};
  for (const Field& field : GetParam().fields) expected.push_back({field.key, field.initial});
  EXPECT_EQ(Text(*Make()), Core::PropertySerializer::ToString(Node(expected), false));
}

TEST_P(ShapeKindTest, RoundTripsThroughTheTextFormAndMissingKeysChangeNothing) {
  const std::vector<Entry> common = {{"Index", 3},
                                     {"ZValue", 1073741723.5},
                                     {"PresetID", "preset-7"},
                                     {"ToolName", "SHAPE_LINE"},
                                     {"TextColor", 0x01020304},
                                     {"Opacity", 99},
                                     {"RotationAngle", -33.5}};
  auto shape = Customized(common);
  ExpectWrites(*shape, Custom());
  ExpectWrites(*shape, common);
  const ShapeInfo original(*shape);
  ASSERT_FALSE(original == ShapeInfo(*Make()));
  EXPECT_EQ(Make({{"ZValue", 120}})->GetZValue(), 120.0) << "older writers stored an integer";

  const ShapeInfo read = ThroughText(original);

  ASSERT_TRUE(read);
  EXPECT_EQ(read->GetShapeType(), GetParam().type);
  // The registry finds the row that made it by its type too.
  EXPECT_EQ(ShapeInfoBase::GetCreatorItem(GetParam().type),
            ShapeInfoBase::GetCreatorItem(GetParam().classId));
  EXPECT_TRUE(read == original);
  // Everything written comes back, not only what equality looks at.
  EXPECT_EQ(Text(*read.GetImpl()), Text(*shape));

  // A node without keys changes nothing but the tool: a missing tool name reads as no tool.
  shape->Deserialize(Drevin::SerializerProperty::Create(Core::Property()));
  EXPECT_EQ(shape->GetCurrentToolID(), IToolsId::NONE);
  shape->SetCurrentTool(IToolsId::SHAPE_LINE);
  EXPECT_EQ(Text(*shape), Text(*original.GetImpl()));
}

TEST_P(ShapeKindTest, EqualityLooksAtVisibilityPresetZValuePositionAndParametersOfOneKind) {
  const auto a = Make({{"Visible", false}, {"PresetID", "preset-α"}, {"ZValue", 150.25}});
  auto b = a->Clone();
  EXPECT_NE(a.get(), b.get());
  EXPECT_EQ(b->GetRefCount(), 1);
  // Neither index, tools, change type nor saved flag count, nor differences within 1e-5.
  Read(*b, {{"ZValue", 150.25001},
            {"PositionX", 0.50001},
            {"PositionY", 0.49999},
            {"RotationAngle", 0.00001},
            {"Index", 1},
            {"ToolName", "SHAPE_ARROW"},
            {"ChangeType", 9},
            {"Saved", true}});
  b->SetTool(IToolsId::TEXT);
  EXPECT_TRUE(*a == *b);

  const std::vector<std::vector<Entry>> changes = {
      {{"ZValue", 150.2501}},     {{"PresetID", "preset-a"}},
      {{"Visible", true}},        {{"PositionX", 0.5001}},
      {{"RotationAngle", 0.001}}, {{"PositionDefault", false}},
      {{"Opacity", 254}},         Custom()};
  for (const auto& change : changes) {
    auto c = a->Clone();
    Read(*c, change);
    EXPECT_FALSE(*a == *c) << change[0].key;
    EXPECT_TRUE(*c != *a) << change[0].key;
  }

  for (const Kind& other : AllKinds()) {
    const bool same = other.type == GetParam().type;
    const auto plain = ShapeInfoBase::GetCreatorItem(other.classId)->create(IToolsId::NONE);
    EXPECT_EQ(*Make() == *plain, same) << other.classId;
    EXPECT_EQ(*plain == *Make(), same) << other.classId;
  }
}

// Reset brings back a new shape without a tool, but keeps the kind's parameters, the change
// type and the position's default flag, and turns the colours black.
TEST_P(ShapeKindTest, ResetRestoresTheBookkeepingAndTurnsColoursBlack) {
  auto shape = Customized({{"Index", 7},
                           {"Visible", false},
                           {"Saved", true},
                           {"PresetID", "preset-α"},
                           {"ZValue", 150.25},
                           {"ChangeType", 9},
                           {"PositionX", 0.1},
                           {"PositionY", 0.2},
                           {"PositionDefault", false}});
  const std::int32_t black = 0xFF;
  auto expected = Customized({{"ChangeType", 9},
                              {"PositionDefault", false},
                              {"TextColor", black},
                              {"OutlineColor", black}});
  expected->SetTool(IToolsId::NONE);

  shape->Reset();

  EXPECT_EQ(Text(*shape), Text(*expected));
}

TEST_P(ShapeKindTest, RemoveHidesUnsavesAndClearsTheToolOnlyWhenAsked) {
  auto shape = Make({{"ToolName", "SHAPE_MARKER"}, {"Saved", true}});
  EXPECT_TRUE(shape->IsSaved());
  auto kept = shape->Clone();

  kept->Remove(false);
  shape->Remove(true);

  EXPECT_FALSE(kept->IsSaved());
  ExpectWrites(*kept, {{"Visible", false}, {"Saved", false}, {"ToolName", "SHAPE_MARKER"}});
  // The record's own tool stays.
  ExpectWrites(*shape,
               {{"Visible", false}, {"ToolName", "NONE"}, {"InfoTypeBaseToolName", "SHAPE_FRAME"}});
}

TEST_P(ShapeKindTest, QuarterTurnsAndCropsKeepSizesInPixels) {
  const Conf::FrameInfo frame{200, 100, 1, 1};  // aspect 0.5
  const ShapeInfo start(*Customized());
  const auto box = BoxOf(start);

  for (auto kind :
       {Transpose::None, Transpose::Rotate90, Transpose::Rotate180, Transpose::Rotate270}) {
    const ShapeInfo turned = start.Transpose(frame, Transpose(kind));
    if (!box || kind == Transpose::None || kind == Transpose::Rotate180) {
      EXPECT_EQ(Unplaced(turned), Unplaced(start)) << kind;
      continue;
    }
    // 0.4 of 200 pixels is 80 pixels, which is 0.8 of the turned picture's 100.
    EXPECT_DOUBLE_EQ(BoxOf(turned)->width, box->width * 2) << kind;
    EXPECT_DOUBLE_EQ(BoxOf(turned)->height, box->height / 2) << kind;
  }

  const ShapeInfo cropped = start.Crop(frame, ROI{20, 10, 50, 40});
  EXPECT_DOUBLE_EQ(cropped->GetPosition().GetX(), (0.5 * 200 - 20) / 50);
  if (!box) {
    EXPECT_EQ(Unplaced(cropped), Unplaced(start));
    return;
  }
  EXPECT_DOUBLE_EQ(BoxOf(cropped)->width, box->width * 200 / 50);
  EXPECT_DOUBLE_EQ(BoxOf(cropped)->height, box->height * 100 / 40);
}

// A box keeps its area in pixels and stays rectangular; text scales as a line along it does.
TEST_P(ShapeKindTest, ResizeKeepsTurnedBoxesRectangular) {
  const Conf::FrameInfo from{400, 300, 1, 1};
  // Pictures without area change nothing.
  const ShapeInfo turned(*Customized({{"RotationAngle", 30.0}}));
  EXPECT_EQ(Text(*turned.Resize({0, 300, 1, 1}, from).GetImpl()), Text(*turned.GetImpl()));
  EXPECT_EQ(Text(*turned.Resize(from, {400, 0, 1, 1}).GetImpl()), Text(*turned.GetImpl()));
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
    const ShapeInfo shape(*Customized({{"RotationAngle", c.degrees}}));
    const std::optional<Box> box = BoxOf(shape);

    const ShapeInfo resized = shape.Resize(from, c.to);

    const double sx = double(c.to.width) / from.width;
    const double sy = double(c.to.height) / from.height;
    const Expected e =
        box ? ScaleTurnedBox(box->width * from.width, box->height * from.height, c.degrees, sx, sy)
            : ScaleTurnedBox(1.0, 0.0, c.degrees, sx, sy);
    EXPECT_NEAR(resized->GetPosition().GetAngle(), e.degrees, 1e-7);
    EXPECT_DOUBLE_EQ(resized->GetPosition().GetX(), 0.5);
    if (!box) {
      // The font is cut to whole points, and the host measures the box again.
      const int font = Write(*shape.GetImpl()).GetInt("FontSize");
      const auto scaled = static_cast<std::int32_t>(std::trunc(font * e.width + 1e-9));
      ExpectWrites(*resized.GetImpl(), {{"FontSize", scaled}, {"Width", 0.0}, {"Height", 0.0}});
      continue;
    }
    const Box after = *BoxOf(resized);
    EXPECT_NEAR(after.width, e.width / c.to.width, 1e-9);
    EXPECT_NEAR(after.height, e.height / c.to.height, 1e-9);
    if (box->thickness) {
      EXPECT_EQ(*after.thickness, std::lround(*box->thickness * e.strokeScale));
    }
  }
}

}  // namespace
