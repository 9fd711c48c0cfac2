/// \file
/// Keys of the frame storage's record. The texts are part of the saved-document format and never
/// change.
#pragma once

#include <string>

namespace Kelbra::Canvaro::SerializeNames::Storage {

extern const std::string STORAGE_ITEMS;  // "StorageItems": the list of frame records
extern const std::string STORAGE_ITEM;   // "StorageItem": the frame record in each list element
/// Kept from an earlier record layout; nothing writes or reads them, and readers must not
/// expect them.
extern const std::string STORAGE_ITEM_FRAME;          // "Frame"
extern const std::string STORAGE_ITEM_FRAME_PIX_FMT;  // "PixFmt"

}  // namespace Kelbra::Canvaro::SerializeNames::Storage
