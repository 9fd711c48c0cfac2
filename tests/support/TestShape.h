// A small shape kind for tests of the shape model and of everything that carries shapes.
//
//   auto shape = canvaro_test::TestShape::Create(IToolsId::SHAPE_FRAME);   // registered on use
//   ShapeInfo handle(*shape);
//
// Its rendering parameters add a stroke width to the common colours. They follow the picture
// visibly, so tests can see that the record passed the operation on: Transpose adds the quarter
// turns to `turns`, Resize scales the width by the change of picture width and moves the
// position to the top-left corner, Crop scales the width by frame width / crop width. They are
// compared, but only the colours are written.
// Class id "TestShape", ShapeType bit 1024 (no kind of the library uses it).
#pragma once

#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"

namespace canvaro_test {

namespace Canvaro = Kelbra::Canvaro;

inline constexpr Canvaro::ShapeType kTestShapeType = static_cast<Canvaro::ShapeType>(1024);

class TestShapeRendering : public Canvaro::RenderingTypeBaseToolIdRemovable {
 public:
  static constexpr Canvaro::ShapeType kShapeType = kTestShapeType;

  bool operator==(const TestShapeRendering& other) const {
    return RenderingTypeBase::operator==(other) && width == other.width && turns == other.turns;
  }

  void Transpose(const Kelbra::Conf::FrameInfo&,
                 const Kelbra::Proc::SettingsEffectTranspose& transpose) override {
    turns += transpose.GetTransposeKind();
  }
  void Resize(const Kelbra::Conf::FrameInfo& from, const Kelbra::Conf::FrameInfo& to,
              Canvaro::PositionType& position) override {
    width = width * to.width / from.width;
    position.SetX(0.0);
    position.SetY(0.0);
  }
  void Crop(const Kelbra::Conf::FrameInfo& frame, const Kelbra::ROI& roi) override {
    width = width * frame.width / roi.width;
  }

  double width = 2.0;
  int turns = 0;
};

class TestShape {
 public:
  // The records of the kind.
  using Record = Canvaro::ShapeInfoT<TestShapeRendering>;

  // Registers the kind (once) and makes a record.
  static Canvaro::ShapeInfoBasePtr Create(Canvaro::IToolsId::Value tool) {
    Register();
    return Record::Create(tool);
  }
  // Registers the kind; safe to call often.
  static void Register() {
    Canvaro::ShapeInfoBase::RegisterKind({kTestShapeType, "TestShape", &Record::Create});
  }
};

}  // namespace canvaro_test
