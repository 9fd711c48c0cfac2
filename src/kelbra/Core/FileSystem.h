/// \file
/// File and directory removal, and flushing a directory's entries, with the platform's error
/// reporting.
#pragma once

#include "kelbra/Path.h"

namespace Kelbra::Core {

/// Removes one file. Returns false when there was nothing to remove; throws FileException (naming
/// the file and the reason) when it exists but cannot be removed, or is a directory.
bool RemoveFile(const ioPath& file);

/// Removes a directory with everything in it. Returns false when it did not exist; throws
/// FileException when something could not be removed.
bool RemoveDir(const ioPath& directory);

/// Flushes the entries of `directory` (new files, renames, removals) to the disk; throws
/// FileException naming the directory and the reason.
void SyncDir(const ioPath& directory);

}  // namespace Kelbra::Core
