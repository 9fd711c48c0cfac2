#include "kelbra/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"

namespace {

using ::testing::HasSubstr;

TEST(ExceptionTest, WhatNamesTheTypeAndIncludesTheDescription) {
  Kelbra::Core::FileException withText("Cannot open file 'x': denied");
  EXPECT_THAT(withText.what(), HasSubstr("FileException"));
  EXPECT_THAT(withText.what(), HasSubstr("Cannot open file 'x': denied"));
  Kelbra::Core::CoreException bare;
  EXPECT_THAT(bare.what(), HasSubstr("CoreException"));
}

TEST(ExceptionTest, PlatformExceptionsAreStdAndBoostExceptions) {
  try {
    throw Kelbra::Core::PropertyException("bad");
  } catch (const boost::exception& e) {
    const std::string* text = boost::get_error_info<Kelbra::TagDescription>(e);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(*text, "bad");
    EXPECT_NE(dynamic_cast<const std::exception*>(&e), nullptr);
  }
}

[[gnu::noinline]] void ThrowFromHelper() {
  throw Kelbra::AddStack(Kelbra::Core::CoreException("with stack"));
}

TEST(ExceptionTest, AddStackAttachesAReadableMultiLineStack) {
  const std::string stack = Kelbra::GetCallStack();
  EXPECT_GE(std::count(stack.begin(), stack.end(), '\n'), 2);
  try {
    ThrowFromHelper();
  } catch (const Kelbra::Exception& e) {
    const Kelbra::CallStack* attached = boost::get_error_info<Kelbra::TagCallStack>(e);
    ASSERT_NE(attached, nullptr);
    EXPECT_THAT(attached->str(), HasSubstr("ThrowFromHelper"));
  }
}

}  // namespace
