#include "canvaro/foundation/Throw.h"

#include <utility>

namespace Kelbra::Canvaro {

void ThrowCoded(CanvaroError code, const boost::source_location& where) {
  boost::throw_exception(AddStack(CanvaroException(code)), where);
}

void ThrowCoded(CanvaroError code, const std::string& description,
                const boost::source_location& where) {
  CanvaroException e(code);
  e << TagDescription(description);
  boost::throw_exception(AddStack(std::move(e)), where);
}

void ThrowNotImplemented() {
  CanvaroException e;
  e << TagDescription("Not implemented");
  throw e;
}

}  // namespace Kelbra::Canvaro
