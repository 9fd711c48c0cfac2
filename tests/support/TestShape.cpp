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

void TestShape::Register() {
  Canvaro::ShapeInfoBase::RegisterKind({kTestShapeType, "TestShape", &Record::Create});
}

Canvaro::ShapeInfoBasePtr TestShape::Create(Canvaro::IToolsId::Value tool) {
  Register();
  return Record::Create(tool);
}

}  // namespace canvaro_test
