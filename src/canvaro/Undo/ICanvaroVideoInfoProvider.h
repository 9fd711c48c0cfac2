/// \file
/// ICanvaroVideoInfoProvider: gives the geometry of the picture attached to an item, whether the
/// picture is in memory or swapped out.
///
///   Conf::FrameInfo info = provider.GetVideoInfo(itemIndex);
#pragma once

#include "kelbra/Conf/FrameInfo.h"

namespace Kelbra::Canvaro {

class ICanvaroVideoInfoProvider {
 public:
  virtual ~ICanvaroVideoInfoProvider() = default;

  /// The geometry of the picture of item `item` in its state in force. The item must exist and
  /// have a picture.
  virtual Conf::FrameInfo GetVideoInfo(unsigned item) const = 0;
};

}  // namespace Kelbra::Canvaro
