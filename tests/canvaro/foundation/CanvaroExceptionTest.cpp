#include "canvaro/foundation/CanvaroException.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception_ptr.hpp>

#include "canvaro/foundation/Throw.h"
#include "support/Errors.h"

namespace {

using namespace Kelbra::Canvaro;
using ::testing::HasSubstr;

TEST(CanvaroExceptionTest, CodedFailureCarriesCodeStackAndThrowSite) {
  try {
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    const CanvaroError* code = boost::get_error_info<TagCanvaroErrorCode>(e);
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(static_cast<int>(*code), 1);
    EXPECT_NE(boost::get_error_info<Kelbra::TagCallStack>(e), nullptr);
    const char* const* file = boost::get_error_info<boost::throw_file>(e);
    ASSERT_NE(file, nullptr);
    EXPECT_THAT(*file, HasSubstr("CanvaroExceptionTest.cpp"));
    // The code has no name table: diagnostics show it as raw bytes.
    EXPECT_THAT(boost::diagnostic_information(e), HasSubstr("size: 4, dump: 01 00 00 00 ]"));
    EXPECT_STREQ(e.what(), "Kelbra::Canvaro::CanvaroException");
  }
}

TEST(CanvaroExceptionTest, CodedFailureTravelsToAnotherThreadAsExceptionPtr) {
  boost::exception_ptr captured;
  std::thread worker([&captured] {
    try {
      ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
    } catch (...) {
      captured = boost::current_exception();
    }
  });
  worker.join();
  ASSERT_TRUE(captured);
  try {
    boost::rethrow_exception(captured);
  } catch (const CanvaroException& e) {
    EXPECT_NE(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
  }
}

TEST(CanvaroExceptionTest, NotImplementedHasOnlyItsDescription) {
  canvaro_test::ExpectNotImplemented([] { ThrowNotImplemented(); });
}

}  // namespace
