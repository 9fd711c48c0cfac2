#include "canvaro/Undo/TUndoImpl.h"

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestShape.h"

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

  Core::Property noItems;
  noItems.SetInt("Index", 0);
  history.Deserialize(Drevin::SerializerProperty::Create(std::as_const(noItems)));
  history.Deserialize(nullptr);
  Core::Property noIndex;
  noIndex.AddCollection("Items").emplace_back();
  history.Deserialize(Drevin::SerializerProperty::Create(std::as_const(noIndex)));
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));
  EXPECT_EQ(history.GetCurrentIndexImpl(), 1u);

  Core::Property outside;
  outside.SetInt("Index", 1);
  outside.AddCollection("Items").emplace_back().AddChild("Info").SetString("Text", "x");
  EXPECT_THROW(history.Deserialize(Drevin::SerializerProperty::Create(std::as_const(outside))),
               CanvaroException);
  EXPECT_THAT(Texts(history), ElementsAre("a", "b"));

  Core::Property empty;
  empty.SetInt("Index", -1);
  empty.AddCollection("Items");
  history.Deserialize(Drevin::SerializerProperty::Create(std::as_const(empty)));
  EXPECT_EQ(history.GetItemCount(), 0u);
  EXPECT_EQ(history.GetCurrentIndexImpl(), kNoIndex);
}

}  // namespace
