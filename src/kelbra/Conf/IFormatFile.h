/// \file
/// Conf::IFormatFile: the keys with which records name a file.
///
///   serializer->WriteString(Conf::IFormatFile::TAG_FILENAME, name.utf8());
///
/// The key texts are part of saved documents and never change.
#pragma once

#include <string>

namespace Kelbra::Conf {

class IFormatFile {
 public:
  /// "FileName": a file name or path, as UTF-8 text.
  static const std::string TAG_FILENAME;

 protected:
  ~IFormatFile() = default;
};

}  // namespace Kelbra::Conf
