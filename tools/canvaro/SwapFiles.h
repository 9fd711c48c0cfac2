// The swap files of a saved document, looked at one by one: present or not, the raw frame
// header, whether the size agrees with it, and loading the picture.
//
//   for (const NamedFile& file : CollectNamedFiles(model))
//     for (const std::string& problem : CheckSwapFile(paths.swapDirectory, file))
//       std::cout << problem << '\n';
//
// A raw frame file is a 20-byte header (pixel format, width, height, aspect x, aspect y, each a
// 32-bit integer) and the packed rows of every plane; CoreUtil/RawFrame.h has the details.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "SavedDocument.h"
#include "kelbra/Conf/FrameInfo.h"
#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_tool {

struct RawHeader {
  std::int32_t pixelFormat = -1;
  Kelbra::Conf::FrameInfo info;
};

// The header of the raw frame file `file`; nullopt when the file is shorter than a header or
// cannot be read.
std::optional<RawHeader> ReadRawHeader(const std::filesystem::path& file);

// The size a whole raw frame file with `header` has: the header and the packed planes. nullopt
// for a pixel format or geometry that pictures cannot have. An empty picture's header (no format,
// no size) gives the header size alone.
std::optional<std::uint64_t> ExpectedRawSize(const RawHeader& header);

// The problems of one named swap file, one line each, empty when it is whole: missing, header
// unreadable, size not matching its header, geometry not matching the document, failing to load
// (checked only when `load` is set and nothing else is wrong).
std::vector<std::string> CheckSwapFile(const std::filesystem::path& swapDirectory,
                                       const NamedFile& file, bool load);

// Where the swap file named `fileName` by a document is: its last component inside
// `swapDirectory`, as the library reads it (a document never points outside its swap directory);
// nullopt for a name that is not a file's ("", ".", "..", "dir/").
std::optional<std::filesystem::path> SwapFilePath(const std::filesystem::path& swapDirectory,
                                                  const std::string& fileName);

// The picture in `record`'s swap file. Throws ToolError (missing, unreadable or damaged file).
Kelbra::Proc::IDataVideoPtr LoadSwapFile(const std::filesystem::path& swapDirectory,
                                         const FrameRecord& record);

// "rgba", "gray", ... for people.
std::string PixelFormatName(std::int32_t pixelFormat);

}  // namespace canvaro_tool
