/// \file
/// Renders any serializable record as the text form of a property tree, for logs, tests and
/// tools:
///
///   std::cout << CoreUtil::SerializerHelper::SerializeToString(settings);
#pragma once

#include <string>

#include "kelbra/Drevin/ISerializable.h"

namespace Kelbra::Canvaro::CoreUtil {

class SerializerHelper {
 public:
  /// The record written into an empty tree, as pretty-printed JSON text.
  static std::string SerializeToString(const Drevin::ISerializableBase& object);
};

}  // namespace Kelbra::Canvaro::CoreUtil
