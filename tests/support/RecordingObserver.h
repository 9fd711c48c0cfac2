// An observer of drawer events that records what it receives, for tests of publishers.
//
//   canvaro_test::RecordingObserver observer;
//   manager->GetTransactionManager().RegisterHandler(&observer);
//   manager->Undo();
//   EXPECT_THAT(observer.log, ElementsAre("undo", "frame 1", "shape 1"));
//
// Log lines: "undo", "save", "tool N" (N the tool id, -1 for none), "frame R", "shape R" (R the
// reason's number), "temporary", "foreground". The typed copies of the last events are kept
// too. Single-threaded.
#pragma once

#include <string>
#include <vector>

#include "canvaro/Undo/IDrawerEventHandler.h"

namespace canvaro_test {

class RecordingObserver : public Kelbra::Canvaro::IDrawerEventHandler {
 public:
  void HandleUndo(const DrawerEventUndo& event) override {
    log.push_back("undo");
    lastUndo = event;
  }
  void HandleFrame(const DrawerEventFrame& event) override {
    log.push_back("frame " + std::to_string(static_cast<unsigned>(event.reason)));
  }
  void HandleChangeToSave(const DrawerEventChangeToSave&) override { log.push_back("save"); }
  void HandleFrameTemporary(const DrawerEventFrameTemporary& event) override {
    log.push_back("temporary");
    lastPicture = event.picture;
  }
  void HandleForeground(const DrawerEventForeground& event) override {
    log.push_back("foreground");
    lastPicture = event.picture;
  }
  void HandleToolIdChange(const DrawerEventToolIdChange& event) override {
    log.push_back("tool " + std::to_string(static_cast<int>(event.toolId)));
  }
  void HandleChangeShapeItem(const DrawerEventShapeItem& event) override {
    log.push_back("shape " + std::to_string(static_cast<unsigned>(event.reason)));
    shapes.push_back(event.shape);
  }

  std::vector<std::string> log;
  DrawerEventUndo lastUndo;
  Kelbra::Proc::IDataVideoPtr lastPicture;
  std::vector<Kelbra::Canvaro::ShapeInfo> shapes;
};

}  // namespace canvaro_test
