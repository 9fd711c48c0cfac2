#include "kelbra/Drevin/ISerializable.h"

#include <typeinfo>

#include <boost/core/demangle.hpp>

namespace Kelbra::Drevin {

std::string ISerializableBase::GetClassId() const {
  const std::string name = boost::core::demangle(typeid(*this).name());
  // Strip the namespaces of the class itself, but not those inside template arguments.
  std::size_t start = 0;
  int depth = 0;
  for (std::size_t i = 0; i + 1 < name.size(); ++i) {
    if (name[i] == '<') ++depth;
    if (name[i] == '>') --depth;
    if (depth == 0 && name[i] == ':' && name[i + 1] == ':') start = i + 2;
  }
  return name.substr(start);
}

}  // namespace Kelbra::Drevin
