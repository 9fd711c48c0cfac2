// A whole document saved to its text form and loaded into a fresh document on the same swap
// directory, compared step by step; saves without a step list; what cannot be loaded.
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CanvaroUndoFixture.h"
#include "canvaro/foundation/CanvaroException.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "kelbra/Core/FileSystem.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/TestEffect.h"
#include "support/TestPainter.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using namespace canvaro_test;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;

ShapeInfo Line(double x) {
  auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
  line->GetPosition().SetX(x);
  return ShapeInfo(*line);
}

// Everything a host can see of the step in force.
struct Snapshot {
  unsigned item = 0;
  unsigned maskIndex = 0;
  std::int32_t step = 0;
  std::string picture;
  Conf::FrameInfo info;
  std::string package;
  std::string mask;
  std::int32_t maskLeft = 0;
  std::uint64_t painted = 0;
  std::vector<ShapeInfo> shapes;
  std::string shapePicture;

  bool operator==(const Snapshot&) const = default;
};

void PrintTo(const Snapshot& s, std::ostream* out) {
  *out << "item " << s.item << ", mask " << s.maskIndex << ", step " << s.step << ", package "
       << s.package << ", painted " << s.painted << ", shapes " << s.shapes.size();
}

Snapshot Take(ICanvaroUndo& document) {
  Snapshot s;
  s.item = document.GetCurrentIndex();
  s.maskIndex = document.GetCurrentMaskIndex();
  s.step = document.GetUndoManager().GetCurrentStep();
  s.picture = Pixels(document.GetVideo(kCurrent));
  s.info = document.GetVideoInfo(kCurrent);
  s.package = document.GetSettings(kCurrent).GetEffectsSettings().GetPackage().GetName();
  s.mask = Pixels(document.GetMask(kCurrent));
  s.maskLeft = document.GetMaskInfo(kCurrent).GetLeft();
  s.painted = document.GetMaskPixelCount({});
  s.shapes = document.GetShapeActiveItems(ShapeType::All);
  if (document.GetShapeItemCount(ShapeType::All) > 0) {
    s.shapePicture = Pixels(document.GetShapeItemVideo(0, kCurrent));
  }
  return s;
}

// The state after every step, from the first, walking back and forth; leaves the document
// where it was.
std::vector<Snapshot> Walk(ICanvaroUndo& document) {
  std::size_t back = 0;
  while (document.IsUndoEnabled()) {
    document.Undo();
    ++back;
  }
  std::vector<Snapshot> states{Take(document)};
  while (document.IsRedoEnabled()) {
    document.Redo();
    states.push_back(Take(document));
  }
  const std::size_t forward = states.size() - 1 - back;
  for (std::size_t i = 0; i < forward; ++i) document.Undo();
  return states;
}

class CanvaroUndoSerializeTest : public DocumentTest {
 protected:
  // Three items, two strokes on the second, a shape with a picture, a second shape and a
  // removal; every step has settings without effects and strokes without painters.
  void Edit() {
    doc->Add(Settings("Source", 0), Picture(1), nullptr, NoMask());
    doc->Add(Settings("Brush", 1), Picture(2, 6, 4), MaskPicture(0, 2, 0, 2, 90, 6, 4),
             Mask(0, 2, 0, 2));
    const auto firstStroke = MaskPicture(0, 4, 0, 3, 90, 6, 4);
    doc->AddMask(firstStroke, Mask(0, 4, 0, 3));
    doc->SetShape(Line(0.2), Picture(9, 2, 2));
    doc->AddMask(Painted(firstStroke, 2, 6, 1, 4, 7), Mask(2, 6, 1, 4));
    doc->SetShape(ShapeInfo(*RectangleInfo::Create(IToolsId::SHAPE_FRAME)), nullptr);
    doc->RemoveShapeAll(ShapeType::Rectangle);
    doc->Add(Settings("Sharpen", 2), Picture(3), nullptr, NoMask());
  }

  // The document in its text form, with every swap file written.
  std::string Save(ICanvaroUndo& document) {
    Core::Property tree;
    document.Serialize(Drevin::SerializerProperty::Create(tree));
    document.WaitForPendingSaves();
    return Core::PropertySerializer::ToString(tree);
  }

  ICanvaroUndoPtr Load(const Core::Property& tree) {
    ICanvaroUndoPtr loaded = MakeDocument("loaded_");
    loaded->Deserialize(Drevin::SerializerProperty::Create(tree));
    return loaded;
  }
};

TEST_F(CanvaroUndoSerializeTest, ALoadedDocumentMatchesStepByStep) {
  Edit();
  doc->Undo();
  doc->Undo();  // two steps back, so that the save holds redo steps
  const std::vector<Snapshot> expected = Walk(*doc);
  const Snapshot inForce = Take(*doc);
  const std::size_t steps = Steps();
  const std::string text = Save(*doc);
  doc.reset();  // the host closes the document; its swap files stay

  ICanvaroUndoPtr loaded = Load(Core::PropertySerializer::FromString(text));
  EXPECT_EQ(loaded->GetVideoCount(), 3u);
  EXPECT_EQ(loaded->GetUndoManager().GetStepCount(), steps);
  EXPECT_EQ(Take(*loaded), inForce);
  for (unsigned i = 0; i < 3; ++i) {
    EXPECT_EQ(loaded->GetSettings(i).GetEffectsSettings().GetPackage().GetPackageIndex(),
              static_cast<std::int32_t>(i));
  }
  EXPECT_EQ(Walk(*loaded), expected);

  // Saving and loading again neither grows the frame list nor changes a step.
  const Index frames = loaded->GetFrameStorage().GetCount();
  for (int cycle = 0; cycle < 3; ++cycle) {
    loaded = Load(Core::PropertySerializer::FromString(Save(*loaded)));
    EXPECT_EQ(loaded->GetFrameStorage().GetCount(), frames) << cycle;
    EXPECT_EQ(Walk(*loaded), expected) << cycle;
  }

  // The loaded document goes on like the original: a new step drops the redo steps.
  loaded->Add(Settings("After"), Picture(4), nullptr, NoMask());
  EXPECT_FALSE(loaded->IsRedoEnabled());
  EXPECT_EQ(Pixels(loaded->GetVideo(kCurrent)), Pixels(Picture(4)));
}

TEST_F(CanvaroUndoSerializeTest, TheTextFormHoldsThePartsInOrder) {
  Edit();
  const std::string text = Save(*doc);
  const auto shape = text.find("\"Shape\"");
  const auto manager = text.find("\"UndoManager\"");
  const auto frames = text.find("\"Frames\"");
  const auto items = text.find("\"Items\"", frames);
  ASSERT_NE(shape, std::string::npos);
  EXPECT_LT(shape, manager);
  EXPECT_LT(manager, frames);
  EXPECT_LT(frames, items);
  EXPECT_NE(text.find("\"Mask\""), std::string::npos);
  EXPECT_NE(text.find("\"CanvaroUndo\""), std::string::npos);
}

TEST_F(CanvaroUndoSerializeTest, ASaveWithoutStepListGetsAStepPerItemAndStroke) {
  Edit();
  const std::vector<Snapshot> items = {Take(*doc)};
  Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));
  ASSERT_TRUE(tree.Remove("UndoManager"));
  doc.reset();

  ICanvaroUndoPtr loaded = Load(tree);
  // Three items and two strokes; the shapes' steps are not rebuilt.
  EXPECT_EQ(loaded->GetUndoManager().GetStepCount(), 5u);
  EXPECT_EQ(loaded->GetUndoManager().GetCurrentStep(), 4);
  Snapshot last = Take(*loaded);
  last.step = items[0].step;
  EXPECT_EQ(last, items[0]);

  // Undo walks the rebuilt steps: the last item, then the strokes, then the item under them.
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentIndex(), 1u);
  EXPECT_EQ(loaded->GetCurrentMaskIndex(), 2u);
  loaded->Undo();
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentMaskIndex(), 0u);
  loaded->Undo();
  EXPECT_EQ(loaded->GetCurrentIndex(), 0u);
  EXPECT_EQ(Pixels(loaded->GetVideo(kCurrent)), Pixels(Picture(1)));
  EXPECT_FALSE(loaded->IsUndoEnabled());
}

// Effects and painters are the host's classes: a document holding them reloads equal with the
// host's creators registered, and is refused with "Not implemented" without them.
TEST_F(CanvaroUndoSerializeTest, StepsWithEffectsAndPaintersLoadWithTheHostsCreators) {
  doc->Add(Settings("Source", 0), Picture(1), nullptr, NoMask());
  SettingsCore blurred(TestEffect::Make("Blur", 2));
  blurred.GetEffectsSettings().SetEffectsConst(
      {TestEffect::Make("Blur", 2), TestEffect::Make("Invert", 5)});
  doc->Add(blurred, Picture(2), nullptr, NoMask());
  doc->AddMask(MaskPicture(0, 2, 0, 2, 90), Mask(0, 2, 0, 2, TestPainter::Make(12)));
  const Core::Property tree = Core::PropertySerializer::FromString(Save(*doc));

  const auto expectNotImplemented = [&] {
    try {
      Load(tree);
      ADD_FAILURE() << "loaded steps holding a host's effects and painters";
    } catch (const CanvaroException& e) {
      const std::string* description = boost::get_error_info<TagDescription>(e);
      ASSERT_NE(description, nullptr);
      EXPECT_EQ(*description, "Not implemented");
      EXPECT_EQ(boost::get_error_info<TagCanvaroErrorCode>(e), nullptr);
    }
  };
  expectNotImplemented();

  IEffectSettings::RegisterEffectCreator("TestEffect", [] { return TestEffect::Make(""); });
  expectNotImplemented();  // the painter still has no creator
  ISettingsPainter::RegisterPainterCreator("TestPainter", [] { return TestPainter::Make(0); });
  const ICanvaroUndoPtr loaded = Load(tree);
  EXPECT_EQ(Walk(*loaded), Walk(*doc));
  EXPECT_EQ(loaded->GetSettings(1), doc->GetSettings(1));
  const auto* painter =
      dynamic_cast<const TestPainter*>(loaded->GetMaskInfo(1).GetInfoEx().GetPainter().get());
  ASSERT_NE(painter, nullptr);
  EXPECT_EQ(painter->GetBrushSize(), 12);

  EXPECT_TRUE(IEffectSettings::UnregisterEffectCreator("TestEffect"));
  EXPECT_TRUE(ISettingsPainter::UnregisterPainterCreator("TestPainter"));
  expectNotImplemented();
}

TEST_F(CanvaroUndoSerializeTest, AMissingSwapFileFailsWithTheSwapFileCode) {
  doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
  doc->Add(Settings("Next"), Picture(2), nullptr, NoMask());
  const std::string text = Save(*doc);
  const ioPath file = doc->GetFrameStorage().GetFileName(doc->GetUsedFrameIndexList()[0]);
  ASSERT_FALSE(file.empty());
  doc.reset();
  Core::RemoveFile(dir / file);

  ICanvaroUndoPtr loaded = MakeDocument("loaded_");
  const Core::Property tree = Core::PropertySerializer::FromString(text);
  try {
    loaded->Deserialize(Drevin::SerializerProperty::Create(tree));
    FAIL() << "loaded a document whose swap file is gone";
  } catch (const CanvaroException& e) {
    const CanvaroError* code = boost::get_error_info<TagCanvaroErrorCode>(e);
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(*code, CanvaroError::SwapFileFailure);
  }
}

TEST_F(CanvaroUndoSerializeTest, AStepNamingAnUnsavedPictureIsRefused) {
  doc->Add(Settings("Source"), Picture(1), nullptr, NoMask());
  std::string text = Save(*doc);
  // The first "FrameIndex" after the frames is that of the settings step.
  const auto key = text.find("\"FrameIndex\"", text.find("\"Frames\""));
  ASSERT_NE(key, std::string::npos);
  const auto value = text.find_first_of("0123456789-", key + 12);
  const auto end = text.find_first_not_of("0123456789-", value);
  text.replace(value, end - value, "99");
  EXPECT_THROW(Load(Core::PropertySerializer::FromString(text)), CanvaroException);
}

}  // namespace
