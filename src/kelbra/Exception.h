// The platform's exception base and the error information that travels with it.
//
// Kelbra::Exception is both a std::exception and a boost::exception, so any exception of the
// platform or of the libraries above it carries Boost error-info records:
//
//   throw Kelbra::Core::CoreException() << Kelbra::TagDescription("cannot open 'a.raw'");
//   ...
//   if (auto* text = boost::get_error_info<Kelbra::TagDescription>(e)) show(*text);
//
// AddStack attaches the current call stack (TagCallStack) to an exception before it is thrown.
// what() gives a readable one-line message: the exception's type and, when it has one, its
// description.
#pragma once

#include <exception>
#include <string>

#include <boost/exception/exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>

namespace Kelbra {

// A human-readable description of the failure.
using TagDescription = boost::error_info<struct TagDescriptionTag, std::string>;
// The call stack at the point where the exception was made, as multi-line text.
using TagCallStack = boost::error_info<struct TagCallStackTag, std::string>;

class Exception : public virtual std::exception, public virtual boost::exception {
 public:
  Exception() = default;
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  // "<type>: <description>", or just the type when there is no description. The text is built
  // on each call and stays valid until the next call on the same object.
  const char* what() const noexcept override;

 private:
  mutable std::string message_;
};

// The current call stack, one frame per line (function, and file:line where debug information
// allows). Never throws; gives an empty string if the stack cannot be read.
std::string GetCallStack();

// Attaches GetCallStack() under TagCallStack and returns the same exception, so that it can be
// thrown in one expression: boost::throw_exception(AddStack(MyError()), BOOST_CURRENT_LOCATION).
template <class E>
E&& AddStack(E&& e) {
  e << TagCallStack(GetCallStack());
  return static_cast<E&&>(e);
}

}  // namespace Kelbra
