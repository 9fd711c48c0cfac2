#include "canvaro/Undo/TUndoImpl.h"

#include <string>
#include <string_view>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using ::testing::ElementsAre;

// A small settings record.
struct Note : Drevin::ISerializable {
  Note() = default;
  explicit Note(std::string t) : text(std::move(t)) {}
  void Serialize(const Drevin::ISerializerPtr& s) const override { s->WriteString("Text", text); }
  void Deserialize(const Drevin::ISerializerConstPtr& s) override {
    text = s->ReadString("Text", text);
  }
  std::string GetClassId() const override { return "Note"; }
  std::string text;
};

struct Stroke {
  int id = 0;
};

using History = TUndoImpl<Note, Stroke>;

std::vector<std::string> Texts(const History& history) {
  std::vector<std::string> texts;
  for (Index i = 0; i < history.GetItemCount(); ++i) texts.push_back(history.Get(i).GetInfo().text);
  return texts;
}

TEST(TUndoImplTest, MaxIndexTreatsNoIndexAsNone) {
  EXPECT_EQ(MaxIndex(kNoIndex, kNoIndex), kNoIndex);
  EXPECT_EQ(MaxIndex(kNoIndex, 3), 3u);
  EXPECT_EQ(MaxIndex(5, kNoIndex), 5u);
  EXPECT_EQ(MaxIndex(5, 7), 7u);
  EXPECT_EQ(MaxIndex(0, kNoIndex), 0u);
}

TEST(TUndoImplTest, LastActiveFrameLooksUpToTheCursorOnly) {
  History history(nullptr);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
  history.Push(Note("a"));
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
  history.Get(0).SetFrameIndex(4);
  history.Push(Note("b"));  // no frame of its own
  history.Push(Note("c"));
  history.Get(2).SetFrameIndex(2);
  history.Push(Note("d"));
  history.Get(3).SetFrameIndex(9);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), 9u);
  history.UndoImpl();
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), 4u);
  history.UndoImpl();
  history.UndoImpl();
  history.Get(0).SetFrameIndex(kNoIndex);
  EXPECT_EQ(history.GetLastActiveFrameIndexImpl(), kNoIndex);
}

TEST(TUndoImplTest, IncompleteOrBadSavesLeaveTheHistoryAlone) {
  History history(nullptr);
  history.Push(Note("a"));
  history.Push(Note("b"));
  const auto load = [&](std::string_view text) {
    const Core::Property tree = Core::PropertySerializer::FromString(text);
    history.Deserialize(Drevin::SerializerProperty::Create(tree));
  };

  // Without items, without an index or without a record at all: ignored.
  load(R"({"entries": [{"key": "Index", "int": 0}]})");
  load(R"({"entries": [{"key": "Items", "collection": [{"entries": []}]}]})");
  history.Deserialize(nullptr);
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));
  EXPECT_EQ(history.GetCurrentIndexImpl(), 1u);

  // An index past the items: refused.
  EXPECT_THROW(load(R"({"entries": [{"key": "Index", "int": 1}, {"key": "Items", "collection": [
                   {"entries": [{"key": "Info", "node": {"entries": [
                     {"key": "Text", "string": "x"}]}}]}]}]})"),
               CanvaroException);
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));

  load(R"({"entries": [{"key": "Index", "int": -1}, {"key": "Items", "collection": []}]})");
  EXPECT_EQ(history.GetItemCount(), 0u);
  EXPECT_EQ(history.GetCurrentIndexImpl(), kNoIndex);
}

}  // namespace
