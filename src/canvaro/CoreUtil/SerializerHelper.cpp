#include "canvaro/CoreUtil/SerializerHelper.h"

#include "kelbra/Core/DataString.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Drevin/SerializerProperty.h"

namespace Kelbra::Canvaro::CoreUtil {

std::string SerializerHelper::SerializeToString(const Drevin::ISerializableBase& object) {
  Core::Property tree;
  object.Serialize(Drevin::SerializerProperty::Create(tree));
  std::string text;
  Core::PropertySerializer::Serialize(tree, Core::DataOutputString::Create(text), true);
  return text;
}

}  // namespace Kelbra::Canvaro::CoreUtil
