#include "kelbra/Exception.h"

#include <string_view>
#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <boost/stacktrace.hpp>

namespace Kelbra {

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
  try {
    message_ = boost::core::demangle(typeid(*this).name());
    // Exceptions thrown with boost::throw_exception arrive wrapped; name the exception itself.
    constexpr std::string_view kWrapper = "boost::wrapexcept<";
    if (message_.starts_with(kWrapper) && message_.ends_with('>')) {
      message_ = message_.substr(kWrapper.size(), message_.size() - kWrapper.size() - 1);
    }
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
