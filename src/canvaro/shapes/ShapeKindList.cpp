#include "canvaro/shapes/ShapeKindList.h"

namespace Kelbra::Canvaro::detail {

std::vector<ShapeInfoBase::CreatorItem> BuiltInShapeKinds() {
  // Each kind of the library adds its row here, in lookup order, as
  //   {ShapeType::Arrow, "ArrowInfo", &ArrowInfo::Create},
  return {};
}

}  // namespace Kelbra::Canvaro::detail
