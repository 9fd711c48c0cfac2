#include "canvaro/version.h"

namespace Kelbra::Canvaro {

const char* GetVersionString() noexcept { return CANVARO_VERSION_STRING; }
int GetVersionNumber() noexcept { return CANVARO_VERSION_NUMBER; }

}  // namespace Kelbra::Canvaro
