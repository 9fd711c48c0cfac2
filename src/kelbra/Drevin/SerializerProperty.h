/// \file
/// The serializer over a Core::Property node.
///
///   Core::Property tree;
///   record.Serialize(Drevin::SerializerProperty::Create(tree));
///   copy.Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
///
/// The tree must outlive every serializer made on it.
#pragma once

#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Drevin {

class SerializerProperty {
 public:
  /// A writer and reader on `node`.
  static ISerializerPtr Create(Core::Property& node);
  /// A reader on `node`.
  static ISerializerConstPtr Create(const Core::Property& node);
};

}  // namespace Kelbra::Drevin
