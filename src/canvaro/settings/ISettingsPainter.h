/// \file
/// The settings of the brush that painted a mask: a host object the library only stores.
///
/// Painters are the host's classes. A mask step holds one as a reference-counted, serializable
/// object that it shares (never clones) and writes as a child node with its class identifier
/// (GetClassId()). Reading one back needs the host's creator for that identifier, registered once
/// at start-up:
///
///   ISettingsPainter::RegisterPainterCreator(
///       "Brush", [] { return ISettingsPainter::Ptr(new Brush); });
///   MaskInfo::MaskInfoEx ex(painter, blender);   // shares painter
///
/// Reference counting is atomic; a painter object itself is not thread-safe.
#pragma once

#include <functional>
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

  /// Makes a new, default painter of class identifier `name`; the saved step then reads its
  /// entries into it.
  using Creator = std::function<Ptr()>;

  /// Makes a painter by class identifier for reading saved mask steps, with the creator the host
  /// registered for `name`. Without one, throws CanvaroException with the description
  /// "Not implemented" and no error code; a creator that returns null gives
  /// CanvaroError::InvalidState; the creator's own exceptions pass through.
  static Ptr CreatePainterSettings(const std::string& name);

  /// Registers `creator` for painters of class identifier `name` (what the painter's GetClassId()
  /// returns), replacing an earlier creator of that name. Process-wide and thread-safe: register
  /// before loading documents, from any thread. Throws CanvaroError::InvalidArgument for an empty
  /// name or creator.
  static void RegisterPainterCreator(const std::string& name, Creator creator);
  /// Removes the creator of `name`; false when none was registered.
  static bool UnregisterPainterCreator(const std::string& name);
};

}  // namespace Kelbra::Canvaro
