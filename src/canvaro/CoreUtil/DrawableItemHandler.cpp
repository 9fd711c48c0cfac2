#include "canvaro/CoreUtil/DrawableItemHandler.h"

#include <stdexcept>

#include <boost/assert/source_location.hpp>
#include <boost/exception/enable_error_info.hpp>
#include <boost/throw_exception.hpp>

#include "kelbra/Exception.h"

namespace Kelbra::Canvaro {

namespace {

[[noreturn]] void ThrowUndefinedOperation(const boost::source_location& where) {
  boost::throw_exception(boost::enable_error_info(std::logic_error("Undefined operation"))
                             << TagCallStack(CallStack()),
                         where);
}

}  // namespace

void DrawableItemHandler::SetDrawableFrameInfo(const Conf::FrameInfo& /*info*/) {
  ThrowUndefinedOperation(BOOST_CURRENT_LOCATION);
}

const Conf::FrameInfo& DrawableItemHandler::GetDrawableFrameInfo() const {
  ThrowUndefinedOperation(BOOST_CURRENT_LOCATION);
}

}  // namespace Kelbra::Canvaro
