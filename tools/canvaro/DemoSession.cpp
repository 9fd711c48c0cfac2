#include "DemoSession.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/settings/Blender.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/EllipseInfo.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/MarkerInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "canvaro/shapes/ShapedArrowInfo.h"
#include "canvaro/shapes/TextInfo.h"

namespace canvaro_tool {

namespace Proc = Kelbra::Proc;
using namespace Kelbra::Canvaro;

namespace {

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

MaskInfo MaskSettings(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom,
                      const Proc::Color& colour) {
  Blender::IBlender::Initializer blender(Blender::IBlender::Initializer::DEFAULT, colour);
  blender.SetOpacity(200);
  return MaskInfo(left, right, top, bottom, MaskInfo::MaskInfoEx(blender));
}

MaskInfo NoMask() { return MaskSettings(0, 0, 0, 0, Proc::Color::Black()); }

// A shape of one kind at (x, y), turned by `angle`, placed by the user.
ShapeInfoBasePtr Place(ShapeInfoBase::Creator create, IToolsId::Value tool, double x, double y,
                       double angle, const std::string& preset) {
  ShapeInfoBasePtr shape = create(tool);
  shape->GetPosition().SetX(x);
  shape->GetPosition().SetY(y);
  shape->GetPosition().SetAngle(angle);
  shape->GetPosition().SetDefault(false);
  shape->SetPresetId(preset);
  return shape;
}

// A copy of `shape` moved by (dx, dy) and turned by `dAngle` degrees.
ShapeInfo Moved(const ShapeInfo& shape, double dx, double dy, double dAngle) {
  ShapeInfoBasePtr copy = shape->Clone();
  PositionType& position = copy->GetPosition();
  position.SetX(std::clamp(position.GetX() + dx, 0.05, 0.95));
  position.SetY(std::clamp(position.GetY() + dy, 0.05, 0.95));
  double angle = position.GetAngle() + dAngle;
  if (angle > 180) angle -= 360;
  position.SetAngle(angle);
  return ShapeInfo(*copy);
}

// The rendered text box a host would keep with a text shape: a white label with a dark frame.
Proc::IDataVideoPtr MakeLabel(std::int32_t width, std::int32_t height) {
  auto label = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {width, height, 1, 1});
  auto plane = label->GetPlane(0);
  for (std::int32_t y = 0; y < height; ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, static_cast<std::size_t>(y));
    for (std::int32_t x = 0; x < width; ++x) {
      const bool frame = x < 3 || y < 3 || x >= width - 3 || y >= height - 3;
      const std::uint8_t value = frame ? 30 : 250;
      std::memset(row + x * 4, value, 3);
      row[x * 4 + 3] = 255;
    }
  }
  return label;
}

// A number in [0, 1) that jumps about with `seed`.
double Scatter(unsigned seed, double factor) {
  const double value = seed * factor;
  return value - std::floor(value);
}

}  // namespace

DemoSession::DemoSession(ICanvaroUndo& document, OperationTimes& times)
    : document_(document), times_(times) {}

void DemoSession::Start(const Proc::IDataVideoPtr& source, const std::string& sourceName) {
  times_.Time("add step", [&] {
    document_.Add(MakeSourceSettings("Source: " + sourceName), source, nullptr, NoMask());
  });
  effects_.assign(1, nullptr);
}

ToolEffectPtr DemoSession::EffectFor(int step) {
  switch (step % 4) {
    case 1:
      return ToolEffect::Make(ToolEffect::Kind::Brightness, 20 + 5 * (step % 5));
    case 2:
      return ToolEffect::Make(ToolEffect::Kind::Blur, 1 + step % 3);
    case 3:
      return ToolEffect::Make(ToolEffect::Kind::Invert, 0);
    default:
      return ToolEffect::Make(ToolEffect::Kind::Brightness, -25);
  }
}

std::string DemoSession::RunStep(int step) {
  const ToolEffectPtr effect = EffectFor(step);
  const Proc::IDataVideoPtr previous = document_.GetVideo(kCurrent);
  const Proc::IDataVideoPtr picture =
      times_.Time("render", [&] { return effect->Apply(*previous); });
  ++counts_.renders;
  times_.Time("add step",
              [&] { document_.Add(effect->MakeStepSettings(), picture, nullptr, NoMask()); });
  const unsigned item = document_.GetCurrentIndex();
  effects_.resize(item);
  effects_.push_back(effect);

  const int strokes = 1 + step % 2;
  for (int k = 0; k < strokes; ++k) {
    PaintStroke(kBrushes[static_cast<std::size_t>(step + k) % 3],
                static_cast<unsigned>(step * 7 + k * 3));
  }

  std::string shapes;
  if (step == 1) {
    PlaceEveryKind();
    shapes = "placed 7 shapes";
  } else if (step % 3 == 2) {
    MoveShapes(step);
    shapes = "moved shapes";
  } else if (step % 3 == 0) {
    RemoveAndStepBack();
    shapes = "removed shapes, undo x2, redo";
  } else {
    PlaceMoreShapes(step);
    shapes = "placed 2 shapes";
  }
  return effect->Describe() + ", " + std::to_string(strokes) + " stroke(s), " + shapes;
}

void DemoSession::Finish() { Undo(); }

void DemoSession::PaintStroke(std::uint8_t brush, unsigned seed) {
  const Kelbra::Conf::FrameInfo info = document_.GetVideoInfo(kCurrent);
  const Proc::IDataVideoPtr current = document_.GetMask(kCurrent);
  Proc::IDataVideoPtr mask;
  if (current) {
    mask = Proc::CopyDataVideo(*current);
  } else {
    mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {info.width, info.height, 1, 1});
    auto plane = mask->GetPlane(0);
    for (std::size_t y = 0; y < plane.GetRowCount(); ++y) {
      std::memset(plane.GetOffsetPtr(0, y), 0, plane.GetRowLength());
    }
  }
  const std::int32_t radius = std::max<std::int32_t>(
      2, static_cast<std::int32_t>(std::min(info.width, info.height) * (0.06 + 0.03 * (seed % 3))));
  const auto cx =
      static_cast<std::int32_t>(info.width * (0.15 + 0.7 * Scatter(seed, 0.6180339887)));
  const auto cy =
      static_cast<std::int32_t>(info.height * (0.15 + 0.7 * Scatter(seed, 0.7548776662)));
  const std::int32_t left = std::max(0, cx - radius);
  const std::int32_t right = std::min(info.width, cx + radius + 1);
  const std::int32_t top = std::max(0, cy - radius);
  const std::int32_t bottom = std::min(info.height, cy + radius + 1);
  auto plane = mask->GetPlane(0);
  for (std::int32_t y = top; y < bottom; ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, static_cast<std::size_t>(y));
    for (std::int32_t x = left; x < right; ++x) {
      const std::int64_t dx = x - cx, dy = y - cy;
      if (dx * dx + dy * dy <= std::int64_t{radius} * radius) row[x] = brush;
    }
  }
  const Proc::Color colour(static_cast<std::uint8_t>(brush * 37),
                           static_cast<std::uint8_t>(brush * 91),
                           static_cast<std::uint8_t>(brush * 53), 255);
  times_.Time("mask stroke",
              [&] { document_.AddMask(mask, MaskSettings(left, right, top, bottom, colour)); });
  ++counts_.strokes;
}

void DemoSession::PlaceEveryKind() {
  const Kelbra::Conf::FrameInfo info = document_.GetVideoInfo(kCurrent);
  times_.Time("shape edit", [&] {
    // Four shapes as one step, as a host places a template.
    RAII::UndoTransactionGuard guard(document_.GetTransactionManager(), /*commit=*/false);
    document_.SetShape(
        ShapeInfo(*Place(&LineInfo::Create, IToolsId::SHAPE_LINE, 0.3, 0.5, 30, "thin line")),
        nullptr);
    document_.SetShape(
        ShapeInfo(*Place(&ArrowInfo::Create, IToolsId::SHAPE_ARROW, 0.6, 0.4, -45, "arrow")),
        nullptr);
    document_.SetShape(
        ShapeInfo(*Place(&RectangleInfo::Create, IToolsId::SHAPE_FRAME, 0.5, 0.7, 0, "frame")),
        nullptr);
    // The shape with a picture goes last: the undo manager truncates the storage at every
    // SetShape after the last frame of the committed steps, which would drop a picture added
    // earlier in the same open transaction.
    ShapeInfoBasePtr text = Place(&TextInfo::Create, IToolsId::TEXT, 0.2, 0.12, 0, "title");
    static_cast<TextInfo&>(*text).GetRendering().SetText("canvaro demo");
    document_.SetShape(ShapeInfo(*text),
                       MakeLabel(std::max(8, info.width / 5), std::max(8, info.height / 12)));
    guard.SetCommit(true);
  });
  times_.Time("shape edit", [&] {
    document_.SetShapes(
        {ShapeInfo(*Place(&EllipseInfo::Create, IToolsId::SHAPE_FRAME, 0.75, 0.3, 0, "ring")),
         ShapeInfo(*Place(&MarkerInfo::Create, IToolsId::SHAPE_MARKER, 0.15, 0.8, 0, "marker")),
         ShapeInfo(*Place(&ShapedArrowInfo::Create, IToolsId::SHAPE_ARROW, 0.85, 0.75, 135,
                          "fat arrow"))});
  });
  counts_.shapeEdits += 2;
}

void DemoSession::MoveShapes(int step) {
  const std::vector<ShapeInfo> visible = document_.GetShapeActiveItems(ShapeType::All);
  if (visible.empty()) return;
  const std::size_t n = visible.size();
  times_.Time("shape edit", [&] {
    RAII::UndoTransactionGuard guard(document_.GetTransactionManager(), /*commit=*/false);
    document_.SetShape(Moved(visible[static_cast<std::size_t>(step) % n], 0.03, -0.02, 15),
                       nullptr);
    if (n > 1) {
      document_.SetShape(Moved(visible[static_cast<std::size_t>(step + 1) % n], -0.02, 0.03, -10),
                         nullptr);
    }
    guard.SetCommit(true);
  });
  // A restyle that replaces the state in force without a step of its own.
  ShapeInfoBasePtr restyled = visible[static_cast<std::size_t>(step + 2) % n]->Clone();
  restyled->SetPresetId("restyled at step " + std::to_string(step));
  times_.Time("shape edit", [&] { document_.OverwriteShape(ShapeInfo(*restyled)); });
  counts_.shapeEdits += 2;
}

void DemoSession::RemoveAndStepBack() {
  times_.Time("shape edit",
              [&] { document_.RemoveShapeAll(ShapeType::Marker | ShapeType::Ellipse); });
  ++counts_.shapeEdits;
  Undo();
  Undo();
  Redo();
}

void DemoSession::PlaceMoreShapes(int step) {
  const double x = 0.1 + 0.8 * Scatter(static_cast<unsigned>(step), 0.381966);
  times_.Time("shape edit", [&] {
    RAII::UndoTransactionGuard guard(document_.GetTransactionManager(), /*commit=*/false);
    document_.SetShape(
        ShapeInfo(*Place(&MarkerInfo::Create, IToolsId::SHAPE_MARKER, x, 0.6, 0, "marker")),
        nullptr);
    document_.SetShape(ShapeInfo(*Place(&LineInfo::Create, IToolsId::SHAPE_LINE, 1 - x, 0.35,
                                        step * 10.0, "line")),
                       nullptr);
    guard.SetCommit(true);
  });
  ++counts_.shapeEdits;
}

void DemoSession::Undo() {
  if (!document_.IsUndoEnabled()) return;
  times_.Time("undo", [&] { document_.Undo(); });
  ++counts_.undos;
}

void DemoSession::Redo() {
  if (!document_.IsRedoEnabled()) return;
  times_.Time("redo", [&] { document_.Redo(); });
  ++counts_.redos;
}

}  // namespace canvaro_tool
