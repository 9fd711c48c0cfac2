#include "canvaro/settings/ISettingsPainter.h"

#include <utility>

#include "canvaro/foundation/CreatorRegistry.h"

namespace Kelbra::Canvaro {

namespace {

CreatorRegistry<ISettingsPainter::Ptr>& Painters() {
  static CreatorRegistry<ISettingsPainter::Ptr> registry;
  return registry;
}

}  // namespace

ISettingsPainter::Ptr ISettingsPainter::CreatePainterSettings(const std::string& name) {
  return Painters().Make(name);
}

void ISettingsPainter::RegisterPainterCreator(const std::string& name, Creator creator) {
  Painters().Register(name, std::move(creator));
}

bool ISettingsPainter::UnregisterPainterCreator(const std::string& name) {
  return Painters().Unregister(name);
}

}  // namespace Kelbra::Canvaro
