/// \file
/// Byte streams: the platform's interfaces for reading and writing bytes.
///
/// Streams are reference-counted and held by boost::intrusive_ptr. Every failure throws
/// Core::FileException whose description names the stream (the file) and the reason; nothing is
/// ever silently short: Read either fills the whole buffer or throws.
///
///   auto out = Core::DataOutputFile::Create("/tmp/a.raw");
///   out->Write(header, sizeof header);
///   out->Close();   // flushes; a full disk is reported here at the latest
///
/// A stream is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <boost/intrusive_ptr.hpp>

#include "kelbra/RefCount.h"

namespace Kelbra::Core {

class IDataOutput : public virtual IRefCountable {
 public:
  /// Writes all `size` bytes (buffered) or throws FileException.
  virtual void Write(const void* data, std::size_t size) = 0;
  /// Hands buffered bytes to the operating system; throws FileException on failure.
  virtual void Flush() = 0;
  /// Flushes and closes. Errors that only show at the end (a full disk) are thrown here. Later
  /// writes throw; a second Close does nothing. Destroying an unclosed stream closes it and
  /// swallows errors, so callers that care about errors call Close.
  virtual void Close() = 0;
  /// Where the bytes go, for messages (a file path, or a description of the sink).
  virtual std::string GetName() const = 0;
};

class IDataInput : public virtual IRefCountable {
 public:
  /// Reads exactly `size` bytes or throws FileException ("unexpected end of data" when the stream
  /// ends first).
  virtual void Read(void* data, std::size_t size) = 0;
  /// Reads up to `size` bytes; returns how many were read, 0 only at the end.
  virtual std::size_t ReadSome(void* data, std::size_t size) = 0;
  /// Bytes left before the end of the stream.
  virtual std::uint64_t GetRemaining() const = 0;
  /// Where the bytes come from, for messages.
  virtual std::string GetName() const = 0;
};

using IDataOutputPtr = boost::intrusive_ptr<IDataOutput>;
using IDataInputPtr = boost::intrusive_ptr<IDataInput>;

}  // namespace Kelbra::Core
