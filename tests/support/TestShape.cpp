#include "support/TestShape.h"

namespace canvaro_test {

bool TestShapeRendering::operator==(const TestShapeRendering& other) const {
  return RenderingTypeBase::operator==(other) && width == other.width && turns == other.turns;
}

void TestShapeRendering::Transpose(const Kelbra::Conf::FrameInfo&,
                                   const Kelbra::Proc::SettingsEffectTranspose& transpose) {
  turns += transpose.GetTransposeKind();
}

void TestShapeRendering::Resize(const Kelbra::Conf::FrameInfo& from,
                                const Kelbra::Conf::FrameInfo& to,
                                Canvaro::PositionType& position) {
  width = width * to.width / from.width;
  position.SetX(0.0);
  position.SetY(0.0);
}

void TestShapeRendering::Crop(const Kelbra::Conf::FrameInfo& frame, const Kelbra::ROI& roi) {
  width = width * frame.width / roi.width;
}

void TestShapeRendering::Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const {
  serializer->WriteDouble("Width", width);
  RenderingTypeBase::Serialize(serializer);
}

void TestShapeRendering::Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) {
  width = serializer->ReadDouble("Width", width);
  RenderingTypeBase::Deserialize(serializer);
}

void TestShape::Register() {
  Canvaro::ShapeInfoBase::RegisterKind({kTestShapeType, "TestShape", &TestShape::Create});
}

Canvaro::ShapeInfoBasePtr TestShape::Create(Canvaro::IToolsId::Value tool) {
  Register();
  return Canvaro::ShapeInfoBasePtr(new TestShape(tool));
}

bool TestShape::operator==(const Canvaro::ShapeInfoBase& other) const {
  const auto* same = dynamic_cast<const TestShape*>(&other);
  return same != nullptr && ShapeInfoBase::operator==(other) && rendering == same->rendering;
}

Canvaro::ShapeInfoBasePtr TestShape::Clone() const {
  return Canvaro::ShapeInfoBasePtr(new TestShape(*this));
}

void TestShape::Reset() {
  ShapeInfoBase::Reset();
  rendering.Reset();
}

void TestShape::Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const {
  ShapeInfoBase::Serialize(serializer);
  rendering.Serialize(serializer);
}

void TestShape::Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) {
  ShapeInfoBase::Deserialize(serializer);
  rendering.Deserialize(serializer);
}

}  // namespace canvaro_test
