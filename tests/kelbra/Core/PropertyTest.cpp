// The property tree, its JSON text and the serializer adapter that records read and write it
// through.
#include "kelbra/Core/Property.h"

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Errors.h"
#include "support/TempDir.h"

namespace {

using namespace Kelbra;
using canvaro_test::ErrorText;
using Core::Property;
using Core::PropertyException;
using Core::PropertySerializer;
using Core::WrongTypeIsRequested;
using Drevin::ISerializerConstPtr;
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

// The serializer adapter reads through the same checks.
TEST(PropertyTest, TypedReadersAndTheSerializerAdapterRefuseOtherTypesNamingKeyAndBothTypes) {
  Property node;
  auto writer = Drevin::SerializerProperty::Create(node);
  writer->WriteInt("ZValue", 3);
  writer->WriteString("S", "text");
  EXPECT_THAT(ErrorText<WrongTypeIsRequested>([&] { node.GetDouble("ZValue"); }),
              AllOf(HasSubstr("'ZValue'"), HasSubstr("type int"), HasSubstr("type double")));
  EXPECT_THROW(node.GetInt64("ZValue"), WrongTypeIsRequested);
  EXPECT_THROW(node.GetChild("ZValue"), WrongTypeIsRequested);
  EXPECT_THROW(node.GetInt("missing"), PropertyException);
  const ISerializerConstPtr reader = Drevin::SerializerProperty::Create(std::as_const(node));
  EXPECT_THROW(reader->ReadDouble("ZValue", 0.0), WrongTypeIsRequested);
  EXPECT_THROW(reader->ReadInt64("ZValue", 0), WrongTypeIsRequested);
  EXPECT_THROW(reader->ReadBool("S", false), WrongTypeIsRequested);
  EXPECT_THROW(reader->GetCollection("S"), WrongTypeIsRequested);
  EXPECT_EQ(reader->ReadInt("ZValue", 0), 3);
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

// ---- the serializer adapter ----

// A record with no fields: enough to ask for a child that is not there.
class NoFields : public virtual Drevin::ISerializable {
 public:
  void Serialize(const Drevin::ISerializerPtr&) const override {}
  void Deserialize(const ISerializerConstPtr&) override {}
};

TEST(SerializerPropertyTest, MissingChildAndItemAreReportedByName) {
  Property tree;
  const auto reader = Drevin::SerializerProperty::Create(std::as_const(tree));
  NoFields record;
  EXPECT_THAT(ErrorText<PropertyException>([&] { reader->ReadObject("Anchor", record); }),
              HasSubstr("'Anchor'"));
  EXPECT_EQ(reader->GetCollection("Corners"), nullptr);
  Drevin::SerializerProperty::Create(tree)->CreateCollection("L")->AddItem()->WriteInt("n", 1);
  const auto list = reader->GetCollection("L");
  ASSERT_EQ(list->GetCount(), 1u);
  EXPECT_EQ(list->GetItem(0)->ReadInt("n", 0), 1);
  EXPECT_THROW(list->GetItem(1), PropertyException);
}

// ---- the JSON text ----

// A tree that uses every entry type with awkward values, doubles of random bits among them.
Property MakeAwkwardTree() {
  Property root("Root");
  root.SetString("empty", "");
  root.SetString("utf8", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80 \"quoted\" \\ \n\t");
  root.SetString("latin1", std::string("caf\xE9", 4));
  root.SetString("nul", std::string("a\0b", 3));
  root.SetString("lone surrogate", "\xED\xA0\x80");
  root.SetInt("int min", INT32_MIN);
  root.SetInt("int max", INT32_MAX);
  root.SetInt("minus one", -1);
  root.SetInt64("int64 min", INT64_MIN);
  root.SetInt64("int64 max", INT64_MAX);
  root.SetInt64("int64 small", 5);
  root.SetBool("yes", true);
  root.SetBool("no", false);
  const double payloadNaN = std::bit_cast<double>(std::uint64_t{0xFFF0000000000123});
  const double doubles[] = {0.0,       -0.0,     0.1,        1.0 / 3.0,    -2.5e-300,   1e308,
                            DBL_MAX,   -DBL_MAX, DBL_MIN,    DBL_TRUE_MIN, DBL_EPSILON, HUGE_VAL,
                            -HUGE_VAL, NAN,      payloadNaN, 2147483547.0, 1073741723.5};
  int i = 0;
  for (double d : doubles) root.SetDouble("double " + std::to_string(i++), d);
  // A sweep of random bit patterns catches any shortest-representation mistake.
  std::uint64_t state = 0x9E3779B97F4A7C15ull;
  for (int n = 0; n < 2000; ++n) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    root.SetDouble("random " + std::to_string(n), std::bit_cast<double>(state));
  }

  Property& child = root.AddChild("child");
  child.SetClassId("Child\xFF");  // class ids keep their bytes too
  child.SetInt("inner", 7);
  child.AddChild("grandchild").SetString("deep", "yes");
  root.AddChild("empty child");

  root.AddCollection("empty list");
  Property::Collection& list = root.AddCollection("list");
  list.emplace_back().AddChild("Item").SetInt("n", 1);
  list.emplace_back();  // an empty item node
  Property& third = list.emplace_back();
  third.SetClassId("Third");
  third.AddCollection("nested").emplace_back().SetDouble("x", 0.5);
  root.SetString(std::string("key\x80", 4), "non-UTF-8 key");
  return root;
}

// Equality is ordered, typed and compares doubles by bits (PropertyTest), so one comparison
// covers every entry's key, type and value.
TEST(PropertySerializerTest, RoundTripIsExactForEveryEntryType) {
  const Property tree = MakeAwkwardTree();
  for (const bool pretty : {true, false}) {
    EXPECT_EQ(PropertySerializer::FromString(PropertySerializer::ToString(tree, pretty)), tree);
  }
}

TEST(PropertySerializerTest, PrettyTextIsReadable) {
  Property tree("Doc");
  tree.SetInt("Index", 2);
  tree.AddChild("Info").SetString("Name", "x");
  EXPECT_EQ(PropertySerializer::ToString(tree, true),
            "{\n"
            "  \"class\": \"Doc\",\n"
            "  \"entries\": [\n"
            "    {\"key\": \"Index\", \"int\": 2},\n"
            "    {\"key\": \"Info\", \"node\": {\n"
            "      \"entries\": [\n"
            "        {\"key\": \"Name\", \"string\": \"x\"}\n"
            "      ]\n"
            "    }}\n"
            "  ]\n"
            "}\n");
  EXPECT_EQ(PropertySerializer::ToString(Property(), false), "{\"entries\":[]}");
}

TEST(PropertySerializerTest, MalformedTextThrowsPropertyExceptionNamingThePlace) {
  struct Case {
    const char* text;
    const char* expected;  // part of the message
  };
  const Case cases[] = {
      {"", "parse error"},
      {"{\"entries\": [", "parse error"},
      {"[]", "at $: a node must be an object"},
      {"{}", "missing field 'entries'"},
      {"{\"entries\": {}}", "$.entries: must be an array"},
      {"{\"entries\": [], \"extra\": 1}", "unknown field 'extra'"},
      {"{\"class\": 5, \"entries\": []}", "'class' must be a string"},
      {"{\"entries\": [5]}", "$.entries[0]: an entry must be an object"},
      {"{\"entries\": [{\"int\": 1}]}", "missing field 'key'"},
      {"{\"entries\": [{\"key\": \"a\"}]}", "the entry has no value"},
      {"{\"entries\": [{\"key\": \"a\", \"int\": 1, \"bool\": true}]}", "exactly one value"},
      {"{\"entries\": [{\"key\": \"a\", \"float\": 1}]}", "unknown value type 'float'"},
      {"{\"entries\": [{\"key\": \"a\", \"int\": 2147483648}]}", "out of range"},
      {"{\"entries\": [{\"key\": \"a\", \"int\": 1.5}]}", "must be a JSON integer"},
      {"{\"entries\": [{\"key\": \"a\", \"int64\": 18446744073709551615}]}", "out of range"},
      {"{\"entries\": [{\"key\": \"a\", \"bool\": 1}]}", "true or false"},
      {"{\"entries\": [{\"key\": \"a\", \"double\": \"huge\"}]}", "a double value"},
      {"{\"entries\": [{\"key\": \"a\", \"double\": \"nan(0x0000000000000001)\"}]}",
       "a double value"},
      {"{\"entries\": [{\"key\": \"a\", \"bytes\": \"!!!\"}]}", "not valid base64"},
      {"{\"entries\": [{\"key\": \"a\", \"string\": 3}]}", "JSON string"},
      {"{\"entries\": [{\"key\": \"a\", \"node\": []}]}", "('a').node: a node must be an object"},
      {"{\"entries\": [{\"key\": \"a\", \"collection\": [{\"entries\": 1}]}]}",
       "$.entries[0] ('a').collection[0].entries: must be an array"},
      {"{\"entries\": [{\"key\": \"a\", \"int\": 1}, {\"key\": \"a\", \"int\": 2}]}",
       "occurs twice"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT(ErrorText<PropertyException>([&] { PropertySerializer::FromString(c.text); }),
                HasSubstr(c.expected));
  }
}

TEST(PropertySerializerTest, DeepNestingIsRefusedNotOverflowed) {
  std::string text;
  const int depth = PropertySerializer::kMaxDepth + 5;
  for (int i = 0; i < depth; ++i) text += "{\"entries\": [{\"key\": \"k\", \"node\": ";
  text += "{\"entries\": []}";
  for (int i = 0; i < depth; ++i) text += "}]}";
  EXPECT_THROW(PropertySerializer::FromString(text), PropertyException);
}

TEST(PropertySerializerTest, ReadsFromFileWhatItWroteAndRefusesATruncatedFile) {
  canvaro_test::TempDir dir;
  const ioPath file = dir / "doc.json";
  {
    auto out = Core::DataOutputFile::Create(file);
    PropertySerializer::Serialize(MakeAwkwardTree(), out, true);
    out->Close();
  }
  Property copy;
  PropertySerializer::Deserialize(copy, Core::DataInputFile::Create(file));
  EXPECT_EQ(copy, MakeAwkwardTree());

  std::filesystem::resize_file(file.native(), std::filesystem::file_size(file.native()) / 2);
  Property tree("Untouched");
  tree.SetInt("kept", 1);
  const Property before = tree;
  EXPECT_THAT(ErrorText<PropertyException>([&] {
                PropertySerializer::Deserialize(tree, Core::DataInputFile::Create(file));
              }),
              HasSubstr(file.string()));
  EXPECT_EQ(tree, before);
}

}  // namespace
