/// \file
/// In-memory streams over strings, for text forms of property trees and for tests.
#pragma once

#include <string>

#include "kelbra/Core/DataStream.h"

namespace Kelbra::Core {

class DataOutputString {
 public:
  /// Appends everything written to `target`, which must outlive the stream. Writes never fail.
  static IDataOutputPtr Create(std::string& target);
};

class DataInputString {
 public:
  /// Reads from a private copy of `data`.
  static IDataInputPtr Create(std::string data);
};

}  // namespace Kelbra::Core
