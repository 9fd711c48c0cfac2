/// \file
/// CanvaroException: the one exception type of the library.
///
/// It carries its data as Boost error-info records: an error code under TagCanvaroErrorCode, a
/// description under Kelbra::TagDescription (also what what() returns), and for coded failures
/// the call stack under Kelbra::TagCallStack and the throw site. Every failure has a code and a
/// description, except the effect and painter factories asked for a class that the host has not
/// registered a creator for, which throw a description "Not implemented" and nothing else. Callers
/// read either:
///
///   try { document->GetVideo(3); }
///   catch (const Kelbra::Canvaro::CanvaroException& e) {
///     if (const auto* code = boost::get_error_info<Kelbra::Canvaro::TagCanvaroErrorCode>(e)) ...
///     if (const auto* text = boost::get_error_info<Kelbra::TagDescription>(e)) ...
///   }
///
/// The codes (CanvaroError) and what a host can do about each:
///   1 SwapFileFailure  a picture's swap file could not be written or read, or a saved record
///                      names a file that is missing or does not match; the description names the
///                      file and the system's reason. After it, the document's pictures stay
///                      unreadable (the storage has failed): save what you can and reopen.
///   2 InvalidArgument  the call was refused before it changed anything (index out of range,
///                      empty shape handle, picture of the wrong format or size, unknown tool).
///   3 InvalidDocument  a saved document is damaged or inconsistent; nothing was loaded.
///   4 InvalidState     the call cannot be made now (for example, saving pictures when the
///                      document has no swap directory); nothing changed.
/// Every coded failure carries the call stack; it is turned into text only when read.
#pragma once

#include <cstdint>

#include <boost/exception/info.hpp>

#include "kelbra/Exception.h"

namespace Kelbra::Canvaro {

/// Error codes. The code is a bare number: there is deliberately no text for it, so diagnostic
/// output shows its raw bytes.
enum class CanvaroError : std::int32_t {
  /// A frame's swap file could not be written or read, or a loaded record names a missing file.
  SwapFileFailure = 1,
  /// A call was refused before it changed anything: an index out of range, an empty handle, a
  /// picture of the wrong format or size, a value outside its table.
  InvalidArgument = 2,
  /// A saved document (or one of its records) is damaged or inconsistent and cannot be loaded.
  InvalidDocument = 3,
  /// The call cannot be made in the document's present state (for example, saving pictures
  /// without a swap directory).
  InvalidState = 4,
};

/// The error-info record of the code: boost::get_error_info<TagCanvaroErrorCode>(e) yields a
/// const CanvaroError*, null when the exception has no code.
using TagCanvaroErrorCode = boost::error_info<struct TagCanvaroErrorCodeTag, CanvaroError>;

class CanvaroException : public Kelbra::Exception {
 public:
  /// No error information at all.
  CanvaroException() = default;
  /// Attaches `code` under TagCanvaroErrorCode.
  explicit CanvaroException(CanvaroError code) { *this << TagCanvaroErrorCode(code); }
  ~CanvaroException() override;

  /// The description when there is one (what happened: which file, key or index, and why);
  /// otherwise the type's name. Valid until the next call on the same object.
  const char* what() const noexcept override;
};

}  // namespace Kelbra::Canvaro
