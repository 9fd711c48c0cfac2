#include "canvaro/shapes/EllipseInfo.h"

namespace Kelbra::Canvaro {

template class ShapeInfoT<EllipseInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
