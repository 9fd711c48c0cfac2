#include "kelbra/Exception.h"

#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"

namespace {

using ::testing::HasSubstr;

// Platform exceptions are std and boost exceptions at once.
static_assert(std::is_base_of_v<std::exception, Kelbra::Core::PropertyException>);

TEST(ExceptionTest, WhatNamesTheTypeAndIncludesTheDescription) {
  const Kelbra::Core::FileException withText("Cannot open file 'x': denied");
  EXPECT_THAT(withText.what(), HasSubstr("FileException"));
  EXPECT_THAT(withText.what(), HasSubstr("Cannot open file 'x': denied"));
  const std::string* text = boost::get_error_info<Kelbra::TagDescription>(withText);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(*text, "Cannot open file 'x': denied");
  Kelbra::Core::CoreException bare;
  EXPECT_THAT(bare.what(), HasSubstr("CoreException"));
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
