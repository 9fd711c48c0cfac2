// Checks that a call fails as the factories of host classes fail when nothing is registered for
// a class: a CanvaroException described "Not implemented", without error code or call stack.
//
//   canvaro_test::ExpectNotImplemented([&] { doc->Deserialize(serializer); });
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"

namespace canvaro_test {

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
