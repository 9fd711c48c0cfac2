// The settings of the brush that painted a mask: a host object the library only stores.
//
// Painters are the host's classes. A mask step holds one as a reference-counted, serializable
// object that it shares (never clones) and writes as a child node; reading one back needs the
// host's factory, so the library's CreatePainterSettings always fails:
//
//   MaskInfo::MaskInfoEx ex(painter, blender);   // shares painter
//
// Reference counting is atomic; a painter object itself is not thread-safe.
#pragma once

#include <string>

#include <boost/intrusive_ptr.hpp>

#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class ISettingsPainter : public virtual IRefCountable, public virtual Drevin::ISerializable {
 public:
  using Ptr = boost::intrusive_ptr<ISettingsPainter>;
  using ConstPtr = boost::intrusive_ptr<const ISettingsPainter>;

  ~ISettingsPainter() override = default;

  // Makes a painter by class name for reading saved mask steps. Making painters is the host's
  // business: this always throws CanvaroException with the description "Not implemented" and no
  // error code.
  [[noreturn]] static Ptr CreatePainterSettings(const std::string& name);
};

}  // namespace Kelbra::Canvaro
