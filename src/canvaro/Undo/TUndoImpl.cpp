#include "canvaro/Undo/TUndoImpl.h"

#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro::detail {

void ThrowBadHistoryIndex(std::int64_t index, std::size_t items) {
  ThrowCoded(CanvaroError::InvalidDocument,
             "Saved history index " + std::to_string(index) + " is outside its " +
                 std::to_string(items) + " items",
             BOOST_CURRENT_LOCATION);
}

}  // namespace Kelbra::Canvaro::detail
