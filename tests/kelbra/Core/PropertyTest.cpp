#include "kelbra/Core/Property.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "support/Errors.h"

namespace {

using Kelbra::Core::Property;
using Kelbra::Core::PropertyException;
using Kelbra::Core::WrongTypeIsRequested;
using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(PropertyTest, EntriesKeepFirstWriteOrderAndRewritesReplaceInPlace) {
  Property node;
  node.SetInt("b", 1);
  node.SetString("a", "x");
  node.SetDouble("c", 2.0);
  node.SetBool("a", true);  // same key, other type: replaced where it stood
  ASSERT_EQ(node.Entries().size(), 3u);
  EXPECT_EQ(node.Entries()[0].key, "b");
  EXPECT_EQ(node.Entries()[1].key, "a");
  EXPECT_EQ(node.Entries()[1].type(), Property::Type::Bool);
  EXPECT_TRUE(node.GetBool("a"));
  EXPECT_TRUE(node.Remove("b"));
  EXPECT_FALSE(node.Remove("b"));
  EXPECT_FALSE(node.Has("b"));
}

TEST(PropertyTest, TypedReadersRefuseOtherTypesNamingKeyAndBothTypes) {
  Property node;
  node.SetInt("ZValue", 3);
  EXPECT_THAT(canvaro_test::ErrorText<WrongTypeIsRequested>([&] { node.GetDouble("ZValue"); }),
              AllOf(HasSubstr("'ZValue'"), HasSubstr("type int"), HasSubstr("type double")));
  EXPECT_THROW(node.GetInt64("ZValue"), WrongTypeIsRequested);
  EXPECT_THROW(node.GetChild("ZValue"), WrongTypeIsRequested);
  EXPECT_THROW(node.GetInt("missing"), PropertyException);
}

TEST(PropertyTest, CopiesAreDeepAndChildReferencesSurviveGrowth) {
  Property root;
  Property& child = root.AddChild("child");
  for (int i = 0; i < 100; ++i) root.SetInt("k" + std::to_string(i), i);  // entries reallocate
  child.SetInt("still", 1);                                               // reference still valid
  Property::Collection& list = root.AddCollection("list");
  Property& first = list.emplace_back();
  for (int i = 0; i < 100; ++i) list.emplace_back();
  first.SetString("x", "y");

  Property copy = root;
  EXPECT_EQ(copy, root);
  copy.GetChild("child").SetInt("still", 2);
  EXPECT_EQ(root.GetChild("child").GetInt("still"), 1);
  EXPECT_FALSE(copy == root);
  EXPECT_EQ(root.GetCollection("list")[0].GetString("x"), "y");
  EXPECT_THROW(root.GetCollection("list").at(101), PropertyException);
}

TEST(PropertyTest, EqualityIsStructuralAndComparesDoublesByBits) {
  Property a, b;
  a.SetDouble("d", std::numeric_limits<double>::quiet_NaN());
  b.SetDouble("d", std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(a, b);
  a.SetDouble("z", 0.0);
  b.SetDouble("z", -0.0);
  EXPECT_FALSE(a == b);
  Property c, d;
  c.SetInt("x", 1);
  d.SetInt64("x", 1);
  EXPECT_FALSE(c == d);  // same number, different entry type
  d.SetInt("y", 1);
  c.SetInt("y", 1);
  EXPECT_FALSE(c == d);  // same entries, different order
  Property e("A"), f("B");
  EXPECT_FALSE(e == f);
}

}  // namespace
