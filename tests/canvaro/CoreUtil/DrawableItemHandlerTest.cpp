#include "canvaro/CoreUtil/DrawableItemHandler.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <boost/exception/get_error_info.hpp>
#include <boost/throw_exception.hpp>

#include "kelbra/Exception.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

// A class that inherits the interface without supporting it.
class Unsupported : public DrawableItemHandler {};

template <class Call>
void ExpectRefused(Call call) {
  try {
    call();
    ADD_FAILURE() << "the call returned";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "Undefined operation");
    const auto* stack = boost::get_error_info<TagCallStack>(e);
    ASSERT_NE(stack, nullptr);
    const auto* file = boost::get_error_info<boost::throw_file>(e);
    ASSERT_NE(file, nullptr);
    EXPECT_NE(std::string(*file).find("DrawableItemHandler"), std::string::npos);
    EXPECT_NE(boost::get_error_info<boost::throw_line>(e), nullptr);
    const auto* function = boost::get_error_info<boost::throw_function>(e);
    ASSERT_NE(function, nullptr);
    EXPECT_NE(std::string(*function).find("DrawableFrameInfo"), std::string::npos);
  }
}

TEST(DrawableItemHandlerTest, TheDefaultBodiesRefuseBothOperations) {
  Unsupported handler;
  ExpectRefused([&] { handler.SetDrawableFrameInfo({640, 480, 1, 1}); });
  ExpectRefused([&] { handler.GetDrawableFrameInfo(); });
}

}  // namespace
