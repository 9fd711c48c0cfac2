#include "canvaro/foundation/CanvaroException.h"

namespace Kelbra::Canvaro {

// Anchors the vtable and type information in the library.
CanvaroException::~CanvaroException() = default;

}  // namespace Kelbra::Canvaro
