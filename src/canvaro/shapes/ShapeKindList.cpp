#include "canvaro/shapes/ShapeKindList.h"

#include "canvaro/shapes/ArrowInfo.h"
#include "canvaro/shapes/EllipseInfo.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/MarkerInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "canvaro/shapes/ShapedArrowInfo.h"
#include "canvaro/shapes/TextInfo.h"

namespace Kelbra::Canvaro::detail {

std::vector<ShapeInfoBase::CreatorItem> BuiltInShapeKinds() {
  // Lookups scan front to back; the order is part of the registry's contract.
  return {
      {ShapeType::Arrow, "ArrowInfo", &ArrowInfo::Create},
      {ShapeType::Ellipse, "EllipseInfo", &EllipseInfo::Create},
      {ShapeType::Line, "LineInfo", &LineInfo::Create},
      {ShapeType::Marker, "MarkerInfo", &MarkerInfo::Create},
      {ShapeType::Rectangle, "RectangleInfo", &RectangleInfo::Create},
      {ShapeType::ShapedArrow, "ShapedArrow", &ShapedArrowInfo::Create},
      {ShapeType::Text, "TextInfo", &TextInfo::Create},
  };
}

}  // namespace Kelbra::Canvaro::detail
