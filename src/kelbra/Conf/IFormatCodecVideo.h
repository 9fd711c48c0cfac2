/// \file
/// Conf::IFormatCodecVideo: the keys with which records store a picture's geometry
/// (Conf::FrameInfo), one 32-bit integer each.
///
///   serializer->WriteInt(Conf::IFormatCodecVideo::TAG_WIDTH, info.width);
///
/// The key texts are part of saved documents and never change.
#pragma once

#include <string>

namespace Kelbra::Conf {

class IFormatCodecVideo {
 public:
  static const std::string TAG_WIDTH;    // "Width": width in pixels
  static const std::string TAG_HEIGHT;   // "Height": height in pixels
  static const std::string TAG_ASPECTX;  // "AspectX": pixel aspect ratio, first term
  static const std::string TAG_ASPECTY;  // "AspectY": pixel aspect ratio, second term

 protected:
  ~IFormatCodecVideo() = default;
};

}  // namespace Kelbra::Conf
