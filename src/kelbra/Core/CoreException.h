/// \file
/// Exceptions of the platform's core library. All derive from Kelbra::Exception and carry their
/// message under Kelbra::TagDescription.
///
///   CoreException            any failure of the core library
///   ├─ FileException         a file could not be opened, read, written or removed; the
///   │                        description names the file and the operating system's reason
///   └─ PropertyException     a property tree or its text form is malformed; names the place
///      └─ WrongTypeIsRequested  a key holds a value of another type than the one asked for
#pragma once

#include <string>

#include "kelbra/Exception.h"

namespace Kelbra::Core {

class CoreException : public virtual Exception {
 public:
  CoreException() = default;
  explicit CoreException(const std::string& description) { *this << TagDescription(description); }
};

class FileException : public CoreException {
 public:
  using CoreException::CoreException;
};

class PropertyException : public CoreException {
 public:
  using CoreException::CoreException;
};

class WrongTypeIsRequested : public PropertyException {
 public:
  /// The message names the key, the type stored under it and the type that was requested.
  WrongTypeIsRequested(const std::string& key, const std::string& storedType,
                       const std::string& requestedType)
      : PropertyException("Property '" + key + "' holds a value of type " + storedType +
                          ", but type " + requestedType + " was requested") {}
};

}  // namespace Kelbra::Core
