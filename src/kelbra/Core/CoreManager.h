/// \file
/// CoreManager: the platform's entry point to its factories. The library makes new pictures
/// through it rather than naming a picture implementation:
///
///   auto mask = Core::CoreManager::GetDataVideoFFFactory()->Create(Proc::PixFmt::Gray8,
///                                                                  {width, height, 1, 1});
///
/// The factories are process-wide, live as long as the process and may be used from any thread.
#pragma once

#include <boost/intrusive_ptr.hpp>

#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/IDataVideo.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Core {

/// Makes pictures of one implementation.
class IDataVideoFactory : public virtual IRefCountable {
 public:
  /// A new picture of `format` and `info` with its own buffer (contents undefined until filled).
  /// Throws Core::CoreException for an unsupported format or a size that cannot be allocated.
  virtual Proc::IDataVideoPtr Create(Proc::PixFmt format, const Conf::FrameInfo& info) const = 0;
};
using IDataVideoFactoryPtr = boost::intrusive_ptr<IDataVideoFactory>;

class CoreManager {
 public:
  /// The factory of libavutil pictures (Proc::DataVideoFF).
  static const IDataVideoFactoryPtr& GetDataVideoFFFactory();
};

}  // namespace Kelbra::Core
