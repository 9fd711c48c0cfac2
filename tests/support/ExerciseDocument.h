// Uses a document as a host would after loading it, without passing numbers the document does
// not check: every query on every item and shape, undo and redo while they are enabled (at most
// 64 of each, whatever a loaded step list claims), then one edit of each kind (a mask stroke, a
// shape, a step) and one undo.
//
//   doc->Deserialize(serializer);
//   canvaro_test::ExerciseDocument(*doc);   // throws what the document throws
//
// For the document fuzzer and the tests that keep its findings; needs no test framework.
#pragma once

#include "canvaro/Undo/ICanvaroUndo.h"

namespace canvaro_test {

// Asks every query of the document once.
void QueryDocument(const Kelbra::Canvaro::ICanvaroUndo& doc);

// Queries, walks the history back and forth, edits (see above).
void ExerciseDocument(Kelbra::Canvaro::ICanvaroUndo& doc);

}  // namespace canvaro_test
