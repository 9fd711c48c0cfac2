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
  return Painted(nullptr, left, right, top, bottom, value, width, height);
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
