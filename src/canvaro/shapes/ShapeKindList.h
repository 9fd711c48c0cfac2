// The library's own shape kinds, as rows of the kind registry (ShapeInfoBase). Internal: the
// registry reads the list once, on first use.
#pragma once

#include <vector>

#include "canvaro/shapes/ShapeInfoBase.h"

namespace Kelbra::Canvaro::detail {

// The rows in lookup order. The registry puts rows added by ShapeInfoBase::RegisterKind after
// these.
std::vector<ShapeInfoBase::CreatorItem> BuiltInShapeKinds();

}  // namespace Kelbra::Canvaro::detail
