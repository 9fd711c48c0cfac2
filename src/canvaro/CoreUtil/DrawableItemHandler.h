/// \file
/// The geometry of the surface on which the host draws (a Conf::FrameInfo), as the document
/// keeps it for the host.
///
/// IDrawableItemHandler is the interface: set the record, read it back. DrawableItemHandler
/// gives both operations bodies that refuse the call, so that a class that inherits the
/// interface without supporting it fails loudly instead of answering with made-up geometry:
///
///   class Document : public virtual DrawableItemHandler {
///     void SetDrawableFrameInfo(const Conf::FrameInfo& info) override { info_ = info; }
///     const Conf::FrameInfo& GetDrawableFrameInfo() const override { return info_; }
///   };
///
/// Errors: the refusing bodies throw std::logic_error("Undefined operation") carrying the call
/// stack (Kelbra::TagCallStack) and the throw site (Boost's throw_file, throw_function and
/// throw_line); catch it as std::logic_error and read the rest with boost::get_error_info.
#pragma once

#include "kelbra/Conf/FrameInfo.h"

namespace Kelbra::Canvaro {

class IDrawableItemHandler {
 public:
  virtual ~IDrawableItemHandler() = default;

  /// Stores a copy of `info`.
  virtual void SetDrawableFrameInfo(const Conf::FrameInfo& info) = 0;
  /// The stored record; valid until the next SetDrawableFrameInfo.
  virtual const Conf::FrameInfo& GetDrawableFrameInfo() const = 0;
};

class DrawableItemHandler : public virtual IDrawableItemHandler {
 public:
  /// Both throw std::logic_error("Undefined operation"); they never return.
  void SetDrawableFrameInfo(const Conf::FrameInfo& info) override;
  const Conf::FrameInfo& GetDrawableFrameInfo() const override;
};

}  // namespace Kelbra::Canvaro
