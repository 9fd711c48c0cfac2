// What the document tests share: a document made as a host makes it (a real swap directory, a
// name generator, a recording observer registered through the document), and small pictures
// whose pixels are known.
//
//   class MyTest : public canvaro_test::DocumentTest {};
//   TEST_F(MyTest, Something) {
//     doc->Add(Settings("Base"), Picture(1), nullptr, NoMask());
//     EXPECT_THAT(observer.log, ElementsAre("undo"));
//   }
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "canvaro/Undo/FrameStorage.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/settings/Blender.h"
#include "canvaro/settings/MaskInfo.h"
#include "canvaro/settings/SettingsCore.h"
#include "kelbra/Proc/IDataVideo.h"
#include "support/Documents.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"
#include "support/RecordingObserver.h"
#include "support/TempDir.h"

namespace canvaro_test {

// An RGBA picture of `width` x `height` whose every pixel is (seed, seed + 1, seed + 2, 255).
inline Kelbra::Proc::IDataVideoPtr Picture(std::uint8_t seed, std::int32_t width = 8,
                                           std::int32_t height = 6) {
  auto picture =
      Kelbra::Proc::DataVideoFF::Create(Kelbra::Proc::PixFmt::RGBA, {width, height, 1, 1});
  picture->Fill(Kelbra::Proc::Color(seed, static_cast<std::uint8_t>(seed + 1),
                                    static_cast<std::uint8_t>(seed + 2), 255));
  return picture;
}

// A mask picture (one byte per pixel) of `width` x `height`: `value` inside the rectangle
// [left, right) x [top, bottom), 0 elsewhere.
inline Kelbra::Proc::IDataVideoPtr MaskPicture(std::int32_t left, std::int32_t right,
                                               std::int32_t top, std::int32_t bottom,
                                               std::uint8_t value, std::int32_t width = 8,
                                               std::int32_t height = 6) {
  auto mask = Kelbra::Proc::DataVideoFF::Create(Kelbra::Proc::PixFmt::Gray8, {width, height, 1, 1});
  auto plane = mask->GetPlane(0);
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      *plane.GetOffsetPtr(static_cast<std::size_t>(x), static_cast<std::size_t>(y)) =
          x >= left && x < right && y >= top && y < bottom ? value : 0;
    }
  }
  return mask;
}

// A copy of the mask picture `mask` with [left, right) x [top, bottom) painted `value`: the next
// stroke, as a host paints it into a copy of the mask in force.
inline Kelbra::Proc::IDataVideoPtr Painted(const Kelbra::Proc::IDataVideoPtr& mask,
                                           std::int32_t left, std::int32_t right, std::int32_t top,
                                           std::int32_t bottom, std::uint8_t value) {
  auto copy = Kelbra::Proc::CopyDataVideo(*mask);
  auto plane = copy->GetPlane(0);
  for (std::int32_t y = top; y < bottom; ++y) {
    for (std::int32_t x = left; x < right; ++x) {
      *plane.GetOffsetPtr(static_cast<std::size_t>(x), static_cast<std::size_t>(y)) = value;
    }
  }
  return copy;
}

// The rows of every plane without padding (none for no picture): equal exactly when the pixels
// are.
inline std::string Pixels(const Kelbra::Proc::IDataVideoPtr& picture) {
  return picture != nullptr ? PackedBytes(*picture) : std::string();
}

// A document on a fresh swap directory, with a recording observer registered. Log capture
// starts before the document's worker thread.
class DocumentTest : public ::testing::Test {
 protected:
  DocumentTest() : doc(MakeDocument("frame_")) { doc->RegisterEventHandler(&observer); }

  // Another document on the same swap directory, whose files are named with `prefix`.
  Kelbra::Canvaro::ICanvaroUndoPtr MakeDocument(const std::string& prefix) {
    return Kelbra::Canvaro::ICanvaroUndo::Create(
        dir.path(), [prefix, n = 0]() mutable { return prefix + std::to_string(n++) + ".raw"; });
  }

  std::size_t Steps() const { return doc->GetUndoManager().GetStepCount(); }

  TempDir dir;
  LogCapture log;
  RecordingObserver observer;
  Kelbra::Canvaro::ICanvaroUndoPtr doc;
};

}  // namespace canvaro_test
