#include "support/SampleDocuments.h"

#include <cstdint>
#include <functional>

#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/Undo/IUndoManager.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "canvaro/shapes/LineInfo.h"
#include "canvaro/shapes/RectangleInfo.h"
#include "canvaro/shapes/TextInfo.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/Documents.h"
#include "support/Pictures.h"

namespace canvaro_test {

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

constexpr std::int32_t kWidth = 8;
constexpr std::int32_t kHeight = 6;

ICanvaroUndoPtr MakeDocument(const ioPath& dir, const std::string& session) {
  return ICanvaroUndo::Create(dir, [session, n = 0]() mutable {
    return "sample_" + session + "_" + std::to_string(n++) + ".raw";
  });
}

std::string Save(ICanvaroUndo& document, const std::function<void(Core::Property&)>& edit = {}) {
  Core::Property tree;
  document.Serialize(Drevin::SerializerProperty::Create(tree));
  document.WaitForPendingSaves();
  if (edit) edit(tree);
  return Core::PropertySerializer::ToString(tree, false);
}

void Edit(ICanvaroUndo& doc) {
  const auto picture = [](std::uint8_t seed) {
    return MakePatternPicture(Proc::PixFmt::RGBA, {kWidth, kHeight, 1, 1}, seed);
  };
  doc.Add(Settings("Source", 0), picture(1), nullptr, NoMask());
  const auto first = Painted(nullptr, 0, 3, 0, 2, 1);
  doc.Add(Settings("Brush", 1), picture(2), first, Mask(0, 3, 0, 2));
  const auto second = Painted(first, 2, 6, 1, 4, 2);
  doc.AddMask(second, Mask(2, 6, 1, 4));

  auto line = LineInfo::Create(IToolsId::SHAPE_LINE);
  line->GetPosition().SetX(0.25);
  doc.SetShape(ShapeInfo(*line), MakePatternPicture(Proc::PixFmt::RGBA, {2, 2, 1, 1}, 9));
  {
    RAII::UndoTransactionGuard transaction(doc.GetTransactionManager());
    // Transactions do not nest: SetShapes would open one of its own.
    doc.SetShape(ShapeInfo(*RectangleInfo::Create(IToolsId::SHAPE_FRAME)), nullptr);
    doc.AddMask(Painted(second, 5, 8, 3, 6, 3), Mask(5, 8, 3, 6));
  }
  doc.SetShapes({ShapeInfo(*TextInfo::Create(IToolsId::TEXT))});
  doc.RemoveShapeAll(ShapeType::Rectangle);
  doc.Add(Settings("Sharpen", 2),
          MakePatternPicture(Proc::PixFmt::YUV420P, {kWidth, kHeight, 1, 1}, 3), nullptr, NoMask());
}

}  // namespace

std::vector<SavedDocument> WriteSampleDocuments(const ioPath& swapDirectory) {
  std::vector<SavedDocument> saved;
  {
    auto doc = MakeDocument(swapDirectory, "session");
    Edit(*doc);
    doc->Undo();
    saved.push_back({"session", Save(*doc)});
  }
  {
    auto doc = MakeDocument(swapDirectory, "nosteps");
    Edit(*doc);
    saved.push_back(
        {"no_step_list", Save(*doc, [](Core::Property& tree) { tree.Remove("UndoManager"); })});
  }
  {
    auto doc = MakeDocument(swapDirectory, "source");
    doc->Add(Settings("Source", 0), MakePatternPicture(Proc::PixFmt::BGR24, {5, 3, 1, 1}, 4),
             nullptr, NoMask());
    saved.push_back({"source_only", Save(*doc)});
  }
  {
    auto doc = MakeDocument(swapDirectory, "empty");
    saved.push_back({"empty", Save(*doc)});
  }
  return saved;
}

}  // namespace canvaro_test
