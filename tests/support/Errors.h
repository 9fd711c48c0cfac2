// Checks of how a call fails:
//
//   EXPECT_THAT(canvaro_test::ErrorText<FileException>([&] { in->Read(buffer, 4); }),
//               HasSubstr("unexpected end of data"));
//   canvaro_test::ExpectNotImplemented([&] { doc->Deserialize(serializer); });
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"

namespace canvaro_test {

// The what() text of the `Exception` that `call` throws. A call that returns fails the test; one
// that throws something else lets it escape.
template <class Exception, class Call>
std::string ErrorText(Call&& call) {
  try {
    call();
  } catch (const Exception& e) {
    return e.what();
  }
  ADD_FAILURE() << "no exception";
  return std::string();
}

// The failure of the factories of host classes when nothing is registered for a class: a
// CanvaroException described "Not implemented", without error code or call stack.
template <class Call>
void ExpectNotImplemented(Call&& call) {
  using namespace Kelbra::Canvaro;
  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const CanvaroException& e) {
    const std::string* text = boost::get_error_info<Kelbra::TagDescription>(e);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(*text, "Not implemented");
    EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
    EXPECT_EQ(boost::get_error_info<Kelbra::TagCallStack>(e), nullptr);
  }
}

}  // namespace canvaro_test
