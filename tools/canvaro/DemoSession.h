// The demo's scripted editing session: what a host does with a document while a user edits a
// picture. Each step renders a new picture with one of the tool's effects and adds it; paints
// mask strokes with several brushes; places, moves, re-styles and removes shapes of every kind,
// several at a time in transactions; and now and then undoes and redoes across steps of all
// kinds (the next edit then drops the redo steps).
//
//   DemoSession session(*document, times);
//   session.Start(source, "built-in picture");   // item 0, no events
//   for (int step = 1; step <= steps; ++step) session.RunStep(step);
//   session.Finish();                              // leaves one redo step to be saved
//
// The script is fixed, so the same options give the same document. Step 1 places a shape of
// every kind. Pictures must be RGBA (ToolEffect's rule). Errors of the library pass through.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "OperationTimes.h"
#include "ToolEffect.h"
#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/shapes/ShapeInfo.h"
#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_tool {

class DemoSession {
 public:
  // The brush indices the script paints with (90 is the library's default brush).
  static constexpr std::uint8_t kBrushes[3] = {90, 7, 12};

  struct Counts {
    unsigned renders = 0;
    unsigned strokes = 0;
    unsigned shapeEdits = 0;
    unsigned undos = 0;
    unsigned redos = 0;
  };

  DemoSession(Kelbra::Canvaro::ICanvaroUndo& document, OperationTimes& times);

  // Adds `source` as item 0.
  void Start(const Kelbra::Proc::IDataVideoPtr& source, const std::string& sourceName);
  // Runs step `step` (from 1) of the script; returns a short description for progress lines.
  std::string RunStep(int step);
  // Undoes the last step, so that the saved document also holds a redo step.
  void Finish();

  // The effect that made each item's picture (null for the source), by item index.
  const std::vector<ToolEffectPtr>& GetEffects() const { return effects_; }
  const Counts& GetCounts() const { return counts_; }

 private:
  // The effect of step `step`: brightness up, blur, invert, brightness down, in turn.
  static ToolEffectPtr EffectFor(int step);
  // One stroke: a disc of `brush` over the mask in force, placed by `seed`.
  void PaintStroke(std::uint8_t brush, unsigned seed);
  void PlaceEveryKind();
  void MoveShapes(int step);
  void RemoveAndStepBack();
  void PlaceMoreShapes(int step);
  void Undo();
  void Redo();

  Kelbra::Canvaro::ICanvaroUndo& document_;
  OperationTimes& times_;
  std::vector<ToolEffectPtr> effects_;
  Counts counts_;
};

}  // namespace canvaro_tool
