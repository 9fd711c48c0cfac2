// Builds a small record, writes it through the serializer into a property tree, prints the
// tree's text form and reads it back.
#include <iostream>

#include "canvaro/canvaro.h"

using namespace Kelbra;
using namespace Kelbra::Canvaro;

int main() {
  ToolsId tool(IToolsId::SHAPE_FRAME);
  std::cout << "A tool identifier record, as text:\n"
            << CoreUtil::SerializerHelper::SerializeToString(tool);

  Core::Property tree;
  tool.Serialize(Drevin::SerializerProperty::Create(tree));
  const std::string text = Core::PropertySerializer::ToString(tree);
  ToolsId restored(IToolsId::NONE);
  const Core::Property loaded = Core::PropertySerializer::FromString(text);
  restored.Deserialize(Drevin::SerializerProperty::Create(loaded));
  std::cout << "Read back: tool " << restored.GetCurrentToolID() << " ("
            << IToolsId::GetToolName(restored.GetCurrentToolID()) << ")\n";
  return restored.GetCurrentToolID() == IToolsId::SHAPE_FRAME ? 0 : 1;
}
