#include "kelbra/Proc/ImplNames.h"

namespace Kelbra::Proc::ImplNames {

const std::string DEFAULT = "default";

}  // namespace Kelbra::Proc::ImplNames
