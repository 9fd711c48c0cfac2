// Document packages: a saved document in a folder of its own, with its own copy of every picture,
// so that nothing a document or its swap directory does can damage a save.
//
//   SaveDocument(*document, "/home/ann/Pictures/beach.canvaro");      // atomic and durable
//   ICanvaroUndoPtr again = OpenDocument("/home/ann/Pictures/beach.canvaro", swapDirectory,
//                                        nameGenerator);                // a fresh document
//   for (const std::string& problem : CheckDocumentPackage(folder)) std::cerr << problem << '\n';
//
// A package folder holds "document.json" (the document's text form, naming its pictures),
// "manifest.json" (each picture's size and XXH3 checksum) and "pictures/" (the picture files).
// Pictures are hard links of the swap files where the file system allows (saving an already
// swapped picture then costs no copy), copies otherwise. Opening links or copies the pictures into
// the new document's swap directory and never writes, renames or removes anything in the package;
// a swap directory is scratch space that a failed document may empty, a package is not.
//
// Saving is atomic: new pictures are written under new names and flushed, then the manifest, then
// the document's text form replaces the old one (written aside, flushed, renamed, folder
// flushed). A crash or a full disk at any moment leaves the previous package whole, or the new
// one. Pictures the new document no longer names are removed afterwards. Saving a package again
// after opening it reuses its pictures: save and open cycles are stable in size.
//
// Errors are CanvaroException with a description naming the file and the system's reason:
// SwapFileFailure for a file that cannot be written or read, InvalidDocument for a package that
// is damaged (a missing or altered picture, a malformed manifest or document), InvalidArgument
// for an empty swap directory. A failed save leaves the previous package untouched.
//
// Threads: call from the document's thread; saving waits for the document's swap files.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "canvaro/Undo/ICanvaroUndo.h"
#include "kelbra/Path.h"

namespace Kelbra::Canvaro {

// Saves `document`, history included, as a package in `folder` (made when missing; an earlier
// package there is replaced atomically). The document is unchanged and goes on as before.
//
// Rescue: a document whose swap storage has failed (a full disk, a damaged swap file) still
// saves every picture it has, in memory or in an intact swap file, so that the session can be
// saved to another disk. Only when a picture is truly gone (its swap file could not be read
// back) does the save fail: SwapFileFailure naming the missing pictures, the previous package
// untouched.
void SaveDocument(const ICanvaroUndo& document, const ioPath& folder);

// Opens the package in `folder` into a fresh document on `swapDirectory` (which must exist),
// whose swap files are named by `nameGenerator` (as ICanvaroUndo::Create). Every picture is
// checked against the manifest (size and checksum) before anything is loaded, so a damaged
// package is refused as a whole; nothing is left in the swap directory then.
ICanvaroUndoPtr OpenDocument(const ioPath& folder, const ioPath& swapDirectory,
                             std::function<std::string()> nameGenerator);

// The problems of the package in `folder`, one line each: an unreadable manifest or document, a
// picture that is missing, not in the manifest, or of another size or checksum. Empty when the
// package is whole. Reads every picture; changes nothing; never throws for damage.
std::vector<std::string> CheckDocumentPackage(const ioPath& folder);

}  // namespace Kelbra::Canvaro
