#include "SwapFiles.h"

#include <fstream>
#include <sstream>

#include "ToolError.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/DataFile.h"
#include "kelbra/Proc/PixFmtInfo.h"

namespace canvaro_tool {

namespace fs = std::filesystem;
namespace Proc = Kelbra::Proc;

namespace {

std::string Geometry(const Kelbra::Conf::FrameInfo& info) {
  return std::to_string(info.width) + "x" + std::to_string(info.height);
}

}  // namespace

std::optional<RawHeader> ReadRawHeader(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::int32_t fields[5] = {};
  static_assert(sizeof fields == Kelbra::Canvaro::CoreUtil::kRawFrameHeaderSize);
  if (!in.read(reinterpret_cast<char*>(fields), sizeof fields)) return std::nullopt;
  RawHeader header;
  header.pixelFormat = fields[0];
  header.info = {fields[1], fields[2], fields[3], fields[4]};
  return header;
}

std::optional<std::uint64_t> ExpectedRawSize(const RawHeader& header) {
  const std::uint64_t headerSize = Kelbra::Canvaro::CoreUtil::kRawFrameHeaderSize;
  const auto format = static_cast<Proc::PixFmt>(header.pixelFormat);
  if (format == Proc::PixFmt::None) {
    if (header.info.width == 0 && header.info.height == 0) return headerSize;
    return std::nullopt;
  }
  if (!Proc::IsMemoryPixFmt(format) || header.info.width < 0 || header.info.height < 0) {
    return std::nullopt;
  }
  try {
    std::uint64_t bytes = headerSize;
    for (const auto& plane : Proc::GetPlaneLayouts(format, header.info)) {
      bytes += plane.GetByteCount();
    }
    return bytes;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::string PixelFormatName(std::int32_t pixelFormat) {
  if (pixelFormat == static_cast<std::int32_t>(Proc::PixFmt::None)) return "none";
  return Proc::GetPixFmtName(static_cast<Proc::PixFmt>(pixelFormat));
}

std::vector<std::string> CheckSwapFile(const fs::path& swapDirectory, const NamedFile& file,
                                       bool load) {
  std::vector<std::string> problems;
  const std::string name = file.record.fileName + " (" + file.where + ")";
  std::optional<fs::path> inside = SwapFilePath(swapDirectory, file.record.fileName);
  if (!inside) {
    problems.push_back("swap file name " + name + " is not the name of a file");
    return problems;
  }
  const fs::path path = *inside;
  std::error_code error;
  if (!fs::is_regular_file(path, error)) {
    problems.push_back("missing swap file " + name);
    return problems;
  }
  const std::uint64_t size = fs::file_size(path, error);
  if (error) {
    problems.push_back("cannot read swap file " + name + ": " + error.message());
    return problems;
  }
  const auto header = ReadRawHeader(path);
  if (!header) {
    problems.push_back("truncated swap file " + name + ": " + std::to_string(size) +
                       " bytes, shorter than the raw frame header");
    return problems;
  }
  const auto expected = ExpectedRawSize(*header);
  if (!expected) {
    problems.push_back("unreadable header in swap file " + name + ": pixel format " +
                       std::to_string(header->pixelFormat) + ", size " + Geometry(header->info));
    return problems;
  }
  if (size != *expected) {
    problems.push_back(std::string(size < *expected ? "truncated" : "oversized") + " swap file " +
                       name + ": " + std::to_string(size) + " bytes, its header (" +
                       PixelFormatName(header->pixelFormat) + " " + Geometry(header->info) +
                       ") needs " + std::to_string(*expected));
  }
  if (header->info.width != file.record.info.width ||
      header->info.height != file.record.info.height) {
    problems.push_back("swap file " + name + " holds a " + Geometry(header->info) +
                       " picture, the document expects " + Geometry(file.record.info));
  }
  if (load && problems.empty()) {
    try {
      Proc::IDataVideoPtr picture;
      Kelbra::Canvaro::CoreUtil::LoadRawFrame(picture, Kelbra::Core::DataInputFile::Create(path));
    } catch (...) {
      problems.push_back("swap file " + name + " does not load: " + DescribeCurrent());
    }
  }
  return problems;
}

std::optional<fs::path> SwapFilePath(const fs::path& swapDirectory, const std::string& fileName) {
  // Only the last component counts, as in the library: a document cannot point outside.
  const fs::path name = fs::path(fileName).filename();
  if (name.empty() || name == "." || name == "..") return std::nullopt;
  return swapDirectory / name;
}

Proc::IDataVideoPtr LoadSwapFile(const fs::path& swapDirectory, const FrameRecord& record) {
  const std::optional<fs::path> inside = SwapFilePath(swapDirectory, record.fileName);
  if (!inside)
    throw ToolError("swap file name '" + record.fileName + "' is not the name of a file");
  const fs::path path = *inside;
  std::error_code error;
  if (!fs::is_regular_file(path, error)) {
    throw ToolError("missing swap file " + path.string());
  }
  try {
    Proc::IDataVideoPtr picture;
    Kelbra::Canvaro::CoreUtil::LoadRawFrame(picture, Kelbra::Core::DataInputFile::Create(path));
    if (!picture) throw ToolError("it holds no picture");
    return picture;
  } catch (...) {
    throw ToolError("cannot load swap file " + path.string() + ": " + DescribeCurrent());
  }
}

}  // namespace canvaro_tool
