#include "canvaro/settings/ISettingsPainter.h"

#include "canvaro/foundation/Throw.h"

namespace Kelbra::Canvaro {

ISettingsPainter::Ptr ISettingsPainter::CreatePainterSettings(const std::string& /*name*/) {
  ThrowNotImplemented();
}

}  // namespace Kelbra::Canvaro
