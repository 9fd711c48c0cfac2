#include "canvaro/Undo/StorageNames.h"

namespace Kelbra::Canvaro::SerializeNames::Storage {

const std::string STORAGE_ITEMS = "StorageItems";
const std::string STORAGE_ITEM = "StorageItem";
const std::string STORAGE_ITEM_FRAME = "Frame";
const std::string STORAGE_ITEM_FRAME_PIX_FMT = "PixFmt";

}  // namespace Kelbra::Canvaro::SerializeNames::Storage
