#include "canvaro/Undo/DrawerEventForwarder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/RecordingObserver.h"
#include "support/TestShape.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::RecordingObserver;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using Reason = IDrawerEventHandler::EventFrameReason;

TEST(DrawerEventForwarderTest, PassesEveryKindOfEventOnToItsObservers) {
  DrawerEventForwarder forwarder;
  RecordingObserver first, second;
  forwarder.RegisterEventHandler(&first);
  forwarder.RegisterEventHandler(&second);

  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, Conf::FrameInfo{2, 2, 1, 1});
  ShapeInfo shape(*canvaro_test::TestShape::Create(IToolsId::TEXT));
  IDrawerEventHandler& handler = forwarder;
  handler.HandleUndo(IDrawerEventHandler::DrawerEventUndo(DrawerEventOrigin::Here()));
  handler.HandleFrame(IDrawerEventHandler::DrawerEventFrame(Reason::Redo));
  handler.HandleChangeToSave(IDrawerEventHandler::DrawerEventChangeToSave());
  handler.HandleFrameTemporary(IDrawerEventHandler::DrawerEventFrameTemporary(picture));
  handler.HandleForeground(IDrawerEventHandler::DrawerEventForeground(picture));
  handler.HandleToolIdChange(IDrawerEventHandler::DrawerEventToolIdChange(IToolsId::SHAPE_LINE));
  handler.HandleChangeShapeItem(IDrawerEventHandler::DrawerEventShapeItem(shape, Reason::Undo));

  for (const RecordingObserver* observer : {&first, &second}) {
    EXPECT_THAT(observer->log, ElementsAre("undo", "frame 2", "save", "temporary", "foreground",
                                           "tool 2", "shape 1"));
    EXPECT_EQ(observer->lastPicture, picture);
    ASSERT_EQ(observer->shapes.size(), 1u);
    EXPECT_EQ(observer->shapes[0].GetImpl(), shape.GetImpl());  // copied handle, shared record
  }
  EXPECT_THAT(first.lastUndo.sourceFile, EndsWith("DrawerEventForwarderTest.cpp"));
  EXPECT_GT(first.lastUndo.sourceLine, 0);
  EXPECT_EQ(first.lastUndo.sourceFunction, "");
}

}  // namespace
