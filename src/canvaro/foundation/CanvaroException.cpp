#include "canvaro/foundation/CanvaroException.h"

namespace Kelbra::Canvaro {

// Anchors the vtable and type information in the library.
CanvaroException::~CanvaroException() = default;

const char* CanvaroException::what() const noexcept {
  if (const std::string* description = boost::get_error_info<TagDescription>(*this)) {
    return description->c_str();
  }
  return Kelbra::Exception::what();
}

}  // namespace Kelbra::Canvaro
