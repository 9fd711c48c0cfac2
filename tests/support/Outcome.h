// How a call that takes outside data ended, for the robustness tests: normally, or in which of
// the documented exceptions. Anything else escapes (and fails the test).
//
//   EXPECT_EQ(OutcomeOf([&] { doc->Deserialize(s); }), Outcome::WrongType);
#pragma once

#include <functional>
#include <ostream>

#include <boost/exception/get_error_info.hpp>

#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/CoreException.h"

namespace canvaro_test {

enum class Outcome {
  Done,             // no exception
  SwapFileFailure,  // CanvaroException with CanvaroError::SwapFileFailure
  InvalidDocument,  // CanvaroException with CanvaroError::InvalidDocument
  InvalidArgument,  // CanvaroException with CanvaroError::InvalidArgument
  InvalidState,     // CanvaroException with CanvaroError::InvalidState
  CanvaroError,     // CanvaroException with another code or none
  WrongType,        // Core::WrongTypeIsRequested
  PropertyError,    // any other Core::PropertyException
  FileError,        // Core::FileException
  CoreError,        // any other Core::CoreException
};

inline std::ostream& operator<<(std::ostream& out, Outcome outcome) {
  static const char* const kNames[] = {
      "Done",         "SwapFileFailure", "InvalidDocument", "InvalidArgument", "InvalidState",
      "CanvaroError", "WrongType",       "PropertyError",   "FileError",       "CoreError"};
  return out << kNames[static_cast<int>(outcome)];
}

inline Outcome OutcomeOf(const std::function<void()>& call) {
  using namespace Kelbra;
  try {
    call();
  } catch (const Canvaro::CanvaroException& e) {
    const auto* code = boost::get_error_info<Canvaro::TagCanvaroErrorCode>(e);
    if (code == nullptr) return Outcome::CanvaroError;
    if (*code == Canvaro::CanvaroError::SwapFileFailure) return Outcome::SwapFileFailure;
    if (*code == Canvaro::CanvaroError::InvalidDocument) return Outcome::InvalidDocument;
    if (*code == Canvaro::CanvaroError::InvalidArgument) return Outcome::InvalidArgument;
    if (*code == Canvaro::CanvaroError::InvalidState) return Outcome::InvalidState;
    return Outcome::CanvaroError;
  } catch (const Core::WrongTypeIsRequested&) {
    return Outcome::WrongType;
  } catch (const Core::PropertyException&) {
    return Outcome::PropertyError;
  } catch (const Core::FileException&) {
    return Outcome::FileError;
  } catch (const Core::CoreException&) {
    return Outcome::CoreError;
  }
  return Outcome::Done;
}

}  // namespace canvaro_test
