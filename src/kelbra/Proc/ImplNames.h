/// \file
/// Names of effect implementations.
///
/// An effect may exist in several implementations (a reference one, a faster one); the effect
/// records which one it was made with by name. DEFAULT names the implementation used when nothing
/// else is chosen:
///
///   if (effect->GetImplName() == Proc::ImplNames::DEFAULT) ...
///
/// The constants are built when the platform library is loaded, so they are ready before any code
/// of a library that links it runs.
#pragma once

#include <string>

namespace Kelbra::Proc::ImplNames {

extern const std::string DEFAULT;  // "default"

}  // namespace Kelbra::Proc::ImplNames
