#include "kelbra/Conf/IFormatCodecVideo.h"
#include "kelbra/Conf/IFormatFile.h"

namespace Kelbra::Conf {

const std::string IFormatFile::TAG_FILENAME = "FileName";

const std::string IFormatCodecVideo::TAG_WIDTH = "Width";
const std::string IFormatCodecVideo::TAG_HEIGHT = "Height";
const std::string IFormatCodecVideo::TAG_ASPECTX = "AspectX";
const std::string IFormatCodecVideo::TAG_ASPECTY = "AspectY";

}  // namespace Kelbra::Conf
