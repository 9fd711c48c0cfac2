#include "canvaro/foundation/CanvaroException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/exception/diagnostic_information.hpp>

#include "canvaro/foundation/Throw.h"

namespace {

using namespace Kelbra::Canvaro;
using ::testing::HasSubstr;
using ::testing::Pointee;

// (That a coded failure keeps its code on the way from the swap worker to the caller is checked
// with the storage; the uncoded "Not implemented" failure with the factories that throw it.)
TEST(CanvaroExceptionTest, CodedFailureCarriesCodeStackAndThrowSite) {
  try {
    ThrowCoded(CanvaroError::SwapFileFailure, BOOST_CURRENT_LOCATION);
    FAIL() << "no exception";
  } catch (const CanvaroException& e) {
    EXPECT_THAT(boost::get_error_info<TagCanvaroErrorCode>(e),
                Pointee(CanvaroError::SwapFileFailure));
    EXPECT_NE(boost::get_error_info<Kelbra::TagCallStack>(e), nullptr);
    EXPECT_THAT(boost::get_error_info<boost::throw_file>(e),
                Pointee(HasSubstr("CanvaroExceptionTest.cpp")));
    // The code has no name table: diagnostics show it as raw bytes.
    EXPECT_THAT(boost::diagnostic_information(e), HasSubstr("size: 4, dump: 01 00 00 00 ]"));
    EXPECT_STREQ(e.what(), "Kelbra::Canvaro::CanvaroException");
  }
}

}  // namespace
