// Feeds arbitrary bytes to the reader of the property tree's text form. Every input must end in
// a tree or in Core::PropertyException; a tree that was read must write back to text that reads
// back to an equal tree.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/PropertySerializer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Kelbra::Core::Property;
  using Kelbra::Core::PropertySerializer;
  Property tree;
  try {
    tree =
        PropertySerializer::FromString(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const Kelbra::Core::PropertyException&) {
    return 0;
  }
  for (bool pretty : {false, true}) {
    const Property again =
        PropertySerializer::FromString(PropertySerializer::ToString(tree, pretty));
    if (!(again == tree)) std::abort();
  }
  return 0;
}
