// The smallest host: includes the umbrella header, writes a record and reads it back.
#include <canvaro/canvaro.h>

#include <iostream>

int main() {
  using namespace Kelbra;
  Core::Property tree;
  Canvaro::ToolsId(Canvaro::IToolsId::SHAPE_ARROW).Serialize(Drevin::SerializerProperty::Create(tree));
  const Core::Property loaded =
      Core::PropertySerializer::FromString(Core::PropertySerializer::ToString(tree, false));
  Canvaro::ToolsId tool(Canvaro::IToolsId::NONE);
  tool.Deserialize(Drevin::SerializerProperty::Create(loaded));
  std::cout << "host_example: tool " << Canvaro::IToolsId::GetToolName(tool.GetCurrentToolID())
            << '\n';
  return tool.GetCurrentToolID() == Canvaro::IToolsId::SHAPE_ARROW ? 0 : 1;
}
