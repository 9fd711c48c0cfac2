// Saved documents of small, fixed editing sessions, together with their swap files: the seeds of
// the document fuzzer and the starting point of tests that load damaged saves.
//
//   canvaro_test::TempDir dir;
//   for (const auto& saved : canvaro_test::WriteSampleDocuments(dir.path())) {
//     auto doc = ICanvaroUndo::Create(dir.path(), names);
//     doc->Deserialize(Drevin::SerializerProperty::Create(
//         Core::PropertySerializer::FromString(saved.text)));
//   }
//
// Deterministic: every call writes the same swap files (named "sample_<session>_<n>.raw") and
// returns the same texts, so a text saved by one call loads against the files of another call
// in another directory. Each session runs on its own document and names its own files, so no
// session deletes another's files.
//
// Needs no test framework (the fuzzers use it too). Throws what the document throws.
#pragma once

#include <string>
#include <vector>

#include "kelbra/Path.h"

namespace canvaro_test {

struct SavedDocument {
  std::string name;  // what the session did, usable as a file name
  std::string text;  // the property tree's compact text form
};

// Runs the sessions on `swapDirectory` (which must exist), waits until every swap file is
// written, and returns one saved document per session:
//   "session"       three steps (RGBA, RGBA with a mask, YUV 4:2:0), two mask strokes, shapes
//                   with and without a picture, a transaction, a removal, one step undone
//   "no_step_list"  the same session saved without "UndoManager"
//   "source_only"   just the source picture
//   "empty"         a document that never had a step
std::vector<SavedDocument> WriteSampleDocuments(const Kelbra::ioPath& swapDirectory);

}  // namespace canvaro_test
