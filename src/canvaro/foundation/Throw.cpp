#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

void ThrowCoded(CanvaroError code, const boost::source_location& where) {
  boost::throw_exception(AddStack(CanvaroException(code)), where);
}

void ThrowNotImplemented() {
  CanvaroException e;
  e << TagDescription("Not implemented");
  throw e;
}

}  // namespace Kelbra::Canvaro
