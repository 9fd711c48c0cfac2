/// \file
/// The pool of large picture buffers.
///
/// Pictures of a few megabytes and more come and go in pairs of equal size: a picture swapped
/// out frees its buffer, and the next picture read back or rendered needs one of the same size.
/// Freed large buffers are kept in a small process-wide pool and handed to the next picture of
/// the same size, so that it does not pay for the kernel zeroing fresh pages. The pool holds at
/// most two buffers and 128 MiB; the oldest go back to the system first. A picture's pixels are
/// unspecified when it is made, whether its buffer is fresh or pooled.
///
///   std::uint64_t idle = Kelbra::Proc::GetPooledBufferBytes();  // count it as memory in use
///   Kelbra::Proc::TrimBufferPool();                              // give it all back
///
/// Threads: every call is safe from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kelbra::Proc {

/// Bytes held in the pool: freed picture buffers waiting to be reused.
std::uint64_t GetPooledBufferBytes();
/// Returns every pooled buffer to the system.
void TrimBufferPool();

namespace Details {
/// A buffer of at least `bytes`, aligned for pictures, from the pool when it has one of the
/// same size; nullptr when memory is exhausted. Release it with ReleasePictureBuffer.
std::uint8_t* AcquirePictureBuffer(std::size_t bytes);
/// Gives back a buffer of AcquirePictureBuffer(`bytes`): to the pool, or to the system.
void ReleasePictureBuffer(std::uint8_t* buffer, std::size_t bytes);
}  // namespace Details

}  // namespace Kelbra::Proc
