// The library's two ways of throwing. No code throws CanvaroException any other way.
#pragma once

#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/throw_exception.hpp>

#include "canvaro/foundation/CanvaroException.h"

namespace Kelbra::Canvaro {

// A coded failure: CanvaroException(code) with the call stack, thrown through
// boost::throw_exception so that it records the throw site and can travel in an exception_ptr.
// Pass BOOST_CURRENT_LOCATION as `where`.
[[noreturn]] void ThrowCoded(CanvaroError code, const boost::source_location& where);

// A coded failure that also says what happened: CanvaroException(code) with `description` under
// Kelbra::TagDescription, the call stack and the throw site. Used for refused calls and damaged
// documents as well as swap-file failures whose cause is known.
[[noreturn]] void ThrowCoded(CanvaroError code, const std::string& description,
                             const boost::source_location& where);

// The failure of a factory that only the host can implement: a plain CanvaroException with the
// description "Not implemented" and nothing else.
[[noreturn]] void ThrowNotImplemented();

}  // namespace Kelbra::Canvaro
