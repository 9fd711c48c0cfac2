#include "kelbra/Exception.h"

#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <boost/stacktrace.hpp>

namespace Kelbra {

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
  try {
    message_ = boost::core::demangle(typeid(*this).name());
    if (const std::string* description = boost::get_error_info<TagDescription>(*this)) {
      message_ += ": ";
      message_ += *description;
    }
    return message_.c_str();
  } catch (...) {
    return "Kelbra::Exception";
  }
}

std::string GetCallStack() {
  try {
    // Skip this function itself; the caller's frame comes first.
    return boost::stacktrace::to_string(boost::stacktrace::stacktrace(1, 64));
  } catch (...) {
    return {};
  }
}

}  // namespace Kelbra
