#include "support/ExerciseDocument.h"

#include "canvaro/shapes/LineInfo.h"
#include "support/Documents.h"

namespace canvaro_test {

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;
constexpr int kMaxSteps = 64;

}  // namespace

void QueryDocument(const ICanvaroUndo& doc) {
  const unsigned items = doc.GetVideoCount();
  for (unsigned i = 0; i < items; ++i) {
    doc.GetVideoInfo(i);
    doc.GetSettings(i);
    doc.GetMaskInfo(i);
  }
  doc.GetCurrentIndex();
  doc.GetCurrentMaskIndex();
  doc.GetUsedFrameIndexList();
  doc.GetMaskPixelCount({});
  doc.GetMaskPixelCount({1, 2});
  doc.IsSaved();
  doc.GetCoreSize();
  if (items > 0) {
    doc.GetPackageIndex("Brush");
    doc.GetSameSettingsIndex(doc.GetSettings(kCurrent).GetEffectsSettings());
    doc.GetVideo(kCurrent);
    doc.GetMask(kCurrent);
  }
  const unsigned shapes = doc.GetShapeItemCount(ShapeType::All);
  doc.GetShapeActiveItems(ShapeType::All);
  doc.GetShapeActiveItemCount(ShapeType::Line);
  for (unsigned i = 0; i < shapes; ++i) {
    doc.GetShapeItemInfo(i, kCurrent);
    doc.GetShapeItemVideoIndex(i, kCurrent);
    doc.GetShapeItemVideo(i, kCurrent);
  }
}

void ExerciseDocument(ICanvaroUndo& doc) {
  QueryDocument(doc);
  if (doc.GetVideoCount() == 0) return;
  for (int i = 0; i < kMaxSteps && doc.IsUndoEnabled(); ++i) {
    doc.Undo();
    doc.GetVideo(kCurrent);
    doc.GetMaskPixelCount({});
  }
  for (int i = 0; i < kMaxSteps && doc.IsRedoEnabled(); ++i) {
    doc.Redo();
    doc.GetVideo(kCurrent);
    doc.GetMaskPixelCount({});
  }
  QueryDocument(doc);

  // One edit of each kind: each drops the redo steps and the pictures only they used.
  const Conf::FrameInfo size = doc.GetVideoInfo(kCurrent);
  if (size.width > 0 && size.height > 0 && size.width <= 64 && size.height <= 64) {
    auto mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, size);
    mask->Fill(Proc::Color(1, 1, 1, 255));
    doc.AddMask(mask, Mask(0, 1, 0, 1));
  }
  doc.SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), nullptr);
  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {4, 4, 1, 1});
  picture->Fill(Proc::Color::Black());
  doc.Add(SettingsCore(), picture, nullptr, MaskInfo());
  if (doc.IsUndoEnabled()) doc.Undo();
  QueryDocument(doc);
}

}  // namespace canvaro_test
