#include "Png.h"

#include <cstring>
#include <string>
#include <vector>

#include <png.h>

#include "ToolError.h"
#include "kelbra/Core/DataFile.h"

namespace canvaro_tool {

namespace {

std::string Message(const png_image& image) {
  return image.message[0] != '\0' ? std::string(image.message) : std::string("libpng failed");
}

}  // namespace

RgbaImage ReadPngRgba(const std::filesystem::path& file) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (!std::filesystem::is_regular_file(file)) {
    throw ToolError("cannot read picture " + file.string() + ": no such file");
  }
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) {
    throw ToolError("cannot read picture " + file.string() + ": " + Message(image));
  }
  if (image.width == 0 || image.height == 0 || image.width > kMaxPngSide ||
      image.height > kMaxPngSide) {
    png_image_free(&image);
    throw ToolError("cannot read picture " + file.string() + ": " + std::to_string(image.width) +
                    "x" + std::to_string(image.height) + " is outside 1 to " +
                    std::to_string(kMaxPngSide) + " pixels a side");
  }
  image.format = PNG_FORMAT_RGBA;
  RgbaImage result;
  result.width = image.width;
  result.height = image.height;
  result.pixels.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, result.pixels.data(), 0, nullptr) == 0) {
    const std::string message = Message(image);
    png_image_free(&image);
    throw ToolError("cannot read picture " + file.string() + ": " + message);
  }
  return result;
}

Kelbra::Proc::IDataVideoPtr ReadPng(const std::filesystem::path& file) {
  const RgbaImage image = ReadPngRgba(file);
  auto picture = Kelbra::Proc::DataVideoFF::Create(
      Kelbra::Proc::PixFmt::RGBA,
      {static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height), 1, 1});
  auto plane = picture->GetPlane(0);
  const std::size_t rowBytes = std::size_t{image.width} * 4;
  for (std::size_t y = 0; y < image.height; ++y) {
    std::memcpy(plane.GetOffsetPtr(0, y), image.pixels.data() + y * rowBytes, rowBytes);
  }
  return picture;
}

void WritePng(const std::filesystem::path& file, const RgbaImage& image) {
  png_image png;
  std::memset(&png, 0, sizeof png);
  png.version = PNG_IMAGE_VERSION;
  png.width = image.width;
  png.height = image.height;
  png.format = PNG_FORMAT_RGBA;
  // Encoded in memory first, then written beside the target and renamed over it: a full disk or
  // a file size limit leaves an existing file of that name as it was.
  png_alloc_size_t size = 0;
  std::vector<unsigned char> encoded;
  if (png_image_write_to_memory(&png, nullptr, &size, 0, image.pixels.data(), 0, nullptr) != 0) {
    encoded.resize(size);
    if (png_image_write_to_memory(&png, encoded.data(), &size, 0, image.pixels.data(), 0,
                                  nullptr) == 0) {
      encoded.clear();
    }
  }
  if (encoded.empty()) {
    const std::string message = Message(png);
    png_image_free(&png);
    throw ToolError("cannot encode " + file.string() + ": " + message);
  }
  try {
    auto out =
        Kelbra::Core::DataOutputFile::Create(file, Kelbra::Core::DataOutputFile::Mode::Atomic);
    out->Write(encoded.data(), size);
    out->Close();
  } catch (const std::exception& error) {
    throw ToolError(Describe(error));
  }
}

}  // namespace canvaro_tool
