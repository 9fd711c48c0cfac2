/// \file
/// The platform's exception base and the error information that travels with it.
///
/// Kelbra::Exception is both a std::exception and a boost::exception, so any exception of the
/// platform or of the libraries above it carries Boost error-info records:
///
///   throw Kelbra::Core::CoreException() << Kelbra::TagDescription("cannot open 'a.raw'");
///   ...
///   if (auto* text = boost::get_error_info<Kelbra::TagDescription>(e)) show(*text);
///
/// AddStack attaches the current call stack (TagCallStack) to an exception before it is thrown.
/// Capturing a stack costs a few microseconds: only the return addresses are recorded at the
/// throw, and they are turned into text (function names, files and lines) when first read.
/// what() gives a readable one-line message: the exception's type and, when it has one, its
/// description.
#pragma once

#include <exception>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include <boost/exception/exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>

namespace Kelbra {

/// A human-readable description of the failure.
using TagDescription = boost::error_info<struct TagDescriptionTag, std::string>;

/// A call stack captured as return addresses; rendered to text on first use and then kept.
/// Copies share the captured frames and the rendered text. Safe to read from several threads.
class CallStack {
 public:
  /// Captures the stack of the calling thread, leaving out `skip` innermost frames (besides
  /// this constructor's own). Never throws; an unreadable stack is empty.
  explicit CallStack(std::size_t skip = 0) noexcept;

  /// The stack, one frame per line (function, and file:line where debug information allows).
  /// Rendered on the first call (which may take milliseconds); valid as long as any copy lives.
  const std::string& str() const;
  operator const std::string&() const { return str(); }
  bool empty() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};
std::ostream& operator<<(std::ostream& out, const CallStack& stack);

/// The call stack at the point where the exception was made. Read it with str().
using TagCallStack = boost::error_info<struct TagCallStackTag, CallStack>;

class Exception : public virtual std::exception, public virtual boost::exception {
 public:
  Exception() = default;
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  /// "<type>: <description>", or just the type when there is no description. The text is built
  /// on each call and stays valid until the next call on the same object.
  const char* what() const noexcept override;

 private:
  mutable std::string message_;
};

/// The current call stack as text, one frame per line (function, and file:line where debug
/// information allows). Renders at once, which takes milliseconds; AddStack defers that. Never
/// throws; gives an empty string if the stack cannot be read.
std::string GetCallStack();

/// Attaches GetCallStack() under TagCallStack and returns the same exception, so that it can be
/// thrown in one expression: boost::throw_exception(AddStack(MyError()), BOOST_CURRENT_LOCATION).
template <class E>
E&& AddStack(E&& e) {
  e << TagCallStack(CallStack(1));
  return static_cast<E&&>(e);
}

}  // namespace Kelbra
