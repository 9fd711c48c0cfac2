// CanvaroException: the one exception type of the library.
//
// It carries its data as Boost error-info records. A failure of a frame's swap file carries an
// error code under TagCanvaroErrorCode and the call stack under Kelbra::TagCallStack; the
// "not implemented" factories carry only a Kelbra::TagDescription. Callers read either:
//
//   try { document->GetVideo(3); }
//   catch (const Kelbra::Canvaro::CanvaroException& e) {
//     if (const auto* code = boost::get_error_info<Kelbra::Canvaro::TagCanvaroErrorCode>(e)) ...
//     if (const auto* text = boost::get_error_info<Kelbra::TagDescription>(e)) ...
//   }
//
// A code of CanvaroError::SwapFileFailure always comes with the call stack and the throw site.
#pragma once

#include <cstdint>

#include <boost/exception/info.hpp>

#include "kelbra/Exception.h"

namespace Kelbra::Canvaro {

// Error codes. The code is a bare number: there is deliberately no text for it, so diagnostic
// output shows its raw bytes.
enum class CanvaroError : std::int32_t {
  // A frame's swap file could not be written or read, or a loaded record names a missing file.
  SwapFileFailure = 1,
  // A call was refused before it changed anything: an index out of range, an empty handle, a
  // picture of the wrong format or size, a value outside its table.
  InvalidArgument = 2,
  // A saved document (or one of its records) is damaged or inconsistent and cannot be loaded.
  InvalidDocument = 3,
  // The call cannot be made in the document's present state (for example, saving pictures
  // without a swap directory).
  InvalidState = 4,
};

// The error-info record of the code: boost::get_error_info<TagCanvaroErrorCode>(e) yields a
// const CanvaroError*, null when the exception has no code.
using TagCanvaroErrorCode = boost::error_info<struct TagCanvaroErrorCodeTag, CanvaroError>;

class CanvaroException : public Kelbra::Exception {
 public:
  // No error information at all.
  CanvaroException() = default;
  // Attaches `code` under TagCanvaroErrorCode.
  explicit CanvaroException(CanvaroError code) { *this << TagCanvaroErrorCode(code); }
  ~CanvaroException() override;
};

}  // namespace Kelbra::Canvaro
