/// \file
/// File streams: buffered reading and writing of whole files.
///
/// Small reads and writes (a header, the rows of a padded picture) go through a buffer that
/// starts at 4 KiB and doubles, up to 1 MiB, while they keep coming; so a small file never
/// allocates much. Large requests go straight between the caller's memory and the file, without a
/// copy: a write of 64 KiB or more in one system call together with what is buffered, a read as
/// large as the next buffer fill after what is buffered. Failures throw Core::FileException
/// naming the file and the operating system's reason.
///
/// Note for hosts that test file size limits: with RLIMIT_FSIZE reached the kernel sends SIGXFSZ,
/// which ends the process unless the host ignores it; ignored, the write fails with EFBIG and is
/// reported like any other write error.
#pragma once

#include "kelbra/Core/DataStream.h"
#include "kelbra/Path.h"

namespace Kelbra::Core {

class DataOutputFile {
 public:
  enum class Mode {
    /// Creates the file (replacing an existing one) and writes straight into it.
    Direct,
    /// Writes into a temporary file beside the target; Close flushes it to the disk (fsync),
    /// renames it into place and flushes the folder, so that even after a crash or a power loss
    /// the target is either the old file or the new one, complete. A failed stream leaves
    /// nothing.
    Atomic,
    /// Writes into a temporary file beside the target and renames it into place on Close,
    /// without flushing it to the disk: no reader ever sees a partial file, but after a power
    /// loss the target may be missing or incomplete. For scratch files that are flushed later,
    /// when something comes to depend on them. A failed stream leaves nothing.
    Replace,
  };
  // A stream dropped without Close completes the file as Close would (the failure, if any, is
  // logged through glog once the host has set it up), unless it is dropped while an exception
  // unwinds the stack: then the writer did not finish, and an atomic stream leaves nothing while
  // a direct one keeps what was written. Call Close to get a failure as an exception.

  /// Opens `file` for writing; throws FileException when it cannot be created.
  static IDataOutputPtr Create(const ioPath& file, Mode mode = Mode::Direct);
};

class DataInputFile {
 public:
  /// Opens `file` for reading; throws FileException when it cannot be opened.
  static IDataInputPtr Create(const ioPath& file);
};

}  // namespace Kelbra::Core
