#include "canvaro/CoreUtil/DrawableItemHandler.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/exception/get_error_info.hpp>
#include <boost/throw_exception.hpp>

#include "kelbra/Exception.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using ::testing::HasSubstr;
using ::testing::Pointee;

// A class that inherits the interface without supporting it.
class Unsupported : public DrawableItemHandler {};

template <class Call>
void ExpectRefused(Call call) {
  try {
    call();
    ADD_FAILURE() << "the call returned";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "Undefined operation");
    EXPECT_NE(boost::get_error_info<TagCallStack>(e), nullptr);
    EXPECT_THAT(boost::get_error_info<boost::throw_file>(e),
                Pointee(HasSubstr("DrawableItemHandler")));
    EXPECT_NE(boost::get_error_info<boost::throw_line>(e), nullptr);
    EXPECT_THAT(boost::get_error_info<boost::throw_function>(e),
                Pointee(HasSubstr("DrawableFrameInfo")));
  }
}

TEST(DrawableItemHandlerTest, TheDefaultBodiesRefuseBothOperations) {
  Unsupported handler;
  ExpectRefused([&] { handler.SetDrawableFrameInfo({640, 480, 1, 1}); });
  ExpectRefused([&] { handler.GetDrawableFrameInfo(); });
}

}  // namespace
