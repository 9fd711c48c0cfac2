// canvaro export: the picture or the mask of one history item of a saved document, as PNG.
// Works from the saved tree and the swap file alone, so it needs neither a loadable document nor
// the other swap files.
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

#include "Commands.h"
#include "Png.h"
#include "SavedDocument.h"
#include "SwapFiles.h"
#include "ToolError.h"
#include "kelbra/Proc/IDataVideo.h"

namespace canvaro_tool {

namespace Proc = Kelbra::Proc;

namespace {

// The picture as RGBA rows. Packed RGB, BGR and grey formats with 8 bits per channel convert;
// others are refused.
RgbaImage ToRgba(const Proc::IDataVideo& picture) {
  const auto& info = picture.GetFrameInfo();
  RgbaImage image;
  image.width = static_cast<std::uint32_t>(info.width);
  image.height = static_cast<std::uint32_t>(info.height);
  image.pixels.resize(std::size_t{image.width} * image.height * 4);
  // Byte offsets of red, green, blue and alpha in a pixel, and its size; alpha -1 when absent.
  int r = 0, g = 1, b = 2, a = 3, size = 4;
  switch (picture.GetPixFmt()) {
    case Proc::PixFmt::RGBA:
      break;
    case Proc::PixFmt::BGRA:
      r = 2, b = 0;
      break;
    case Proc::PixFmt::ARGB:
      a = 0, r = 1, g = 2, b = 3;
      break;
    case Proc::PixFmt::ABGR:
      a = 0, b = 1, g = 2, r = 3;
      break;
    case Proc::PixFmt::RGB24:
      a = -1, size = 3;
      break;
    case Proc::PixFmt::BGR24:
      r = 2, b = 0, a = -1, size = 3;
      break;
    case Proc::PixFmt::Gray8:
      r = g = b = 0, a = -1, size = 1;
      break;
    default:
      throw ToolError("cannot export pictures of pixel format " +
                      PixelFormatName(static_cast<std::int32_t>(picture.GetPixFmt())));
  }
  const auto plane = picture.GetPlane(0);
  for (std::size_t y = 0; y < image.height; ++y) {
    const std::uint8_t* row = plane.GetOffsetPtr(0, y);
    std::uint8_t* out = image.pixels.data() + y * image.width * 4;
    for (std::size_t x = 0; x < image.width; ++x) {
      const std::uint8_t* pixel = row + x * static_cast<std::size_t>(size);
      out[x * 4 + 0] = pixel[r];
      out[x * 4 + 1] = pixel[g];
      out[x * 4 + 2] = pixel[b];
      out[x * 4 + 3] = a < 0 ? 255 : pixel[a];
    }
  }
  return image;
}

// A colour per brush index that people can tell apart; black for unpainted pixels.
std::array<std::uint8_t, 3> BrushColour(std::uint8_t brush) {
  if (brush == 0) return {0, 0, 0};
  // Hues spread by the golden angle, full saturation, bright.
  const double hue = std::fmod(brush * 137.508, 360.0) / 60.0;
  const double x = 1.0 - std::fabs(std::fmod(hue, 2.0) - 1.0);
  double rgb[3] = {0, 0, 0};
  switch (static_cast<int>(hue)) {
    case 0:
      rgb[0] = 1, rgb[1] = x;
      break;
    case 1:
      rgb[0] = x, rgb[1] = 1;
      break;
    case 2:
      rgb[1] = 1, rgb[2] = x;
      break;
    case 3:
      rgb[1] = x, rgb[2] = 1;
      break;
    case 4:
      rgb[0] = x, rgb[2] = 1;
      break;
    default:
      rgb[0] = 1, rgb[2] = x;
      break;
  }
  return {static_cast<std::uint8_t>(55 + 200 * rgb[0]),
          static_cast<std::uint8_t>(55 + 200 * rgb[1]),
          static_cast<std::uint8_t>(55 + 200 * rgb[2])};
}

// The mask (one brush index per pixel) in brush colours; counts the pixels of each brush.
RgbaImage MaskToRgba(const Proc::IDataVideo& mask, std::array<std::uint64_t, 256>& counts) {
  if (mask.GetPixFmt() != Proc::PixFmt::Gray8) {
    throw ToolError("the mask is stored as " +
                    PixelFormatName(static_cast<std::int32_t>(mask.GetPixFmt())) +
                    ", not one byte per pixel");
  }
  RgbaImage image;
  image.width = static_cast<std::uint32_t>(mask.GetFrameInfo().width);
  image.height = static_cast<std::uint32_t>(mask.GetFrameInfo().height);
  image.pixels.resize(std::size_t{image.width} * image.height * 4);
  const auto plane = mask.GetPlane(0);
  for (std::size_t y = 0; y < image.height; ++y) {
    const std::uint8_t* row = plane.GetOffsetPtr(0, y);
    std::uint8_t* out = image.pixels.data() + y * image.width * 4;
    for (std::size_t x = 0; x < image.width; ++x) {
      const auto colour = BrushColour(row[x]);
      ++counts[row[x]];
      out[x * 4 + 0] = colour[0];
      out[x * 4 + 1] = colour[1];
      out[x * 4 + 2] = colour[2];
      out[x * 4 + 3] = 255;
    }
  }
  return image;
}

std::string Hex(const std::array<std::uint8_t, 3>& colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", colour[0], colour[1], colour[2]);
  return text;
}

}  // namespace

int RunExport(const ExportOptions& options) {
  if (options.out.empty()) throw UsageError("--out needs a file name");
  const std::string* const out = &options.out;
  const DocumentPaths paths = ResolveDocument(options.document, options.swap);
  const DocumentModel model = ReadDocumentModel(ReadDocumentTree(paths.file));
  if (model.items.empty()) throw ToolError("the document has no history items to export");
  const std::int64_t step = options.item.value_or(model.currentItem);
  if (step < 0 || static_cast<std::size_t>(step) >= model.items.size()) {
    throw ToolError("no item " + std::to_string(step) + ": the document has items 0 to " +
                    std::to_string(model.items.size() - 1));
  }
  const ItemModel& item = model.items[static_cast<std::size_t>(step)];
  const FrameRecord* pictureFrame = model.FrameAt(item.frameIndex);
  if (pictureFrame == nullptr || pictureFrame->fileName.empty()) {
    throw ToolError("item " + std::to_string(step) + " has no picture");
  }

  if (!options.mask) {
    const Proc::IDataVideoPtr picture = LoadSwapFile(paths.swapDirectory, *pictureFrame);
    WritePng(*out, ToRgba(*picture));
    std::cout << "Wrote the picture of item " << step << " (" << picture->GetFrameInfo().width
              << "x" << picture->GetFrameInfo().height << ", \"" << item.presetName << "\") to "
              << *out << "\n";
    return 0;
  }

  const FrameRecord* maskFrame = model.FrameAt(item.mask.WorkingFrame());
  Proc::IDataVideoPtr mask;
  if (maskFrame != nullptr && !maskFrame->fileName.empty()) {
    mask = LoadSwapFile(paths.swapDirectory, *maskFrame);
  } else {
    // Nothing painted: a blank mask of the picture's size.
    mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8,
                                     {pictureFrame->info.width, pictureFrame->info.height, 1, 1});
    mask->Fill(Proc::Color(0, 0, 0, 0));
  }
  std::array<std::uint64_t, 256> counts{};
  WritePng(*out, MaskToRgba(*mask, counts));
  std::cout << "Wrote the mask of item " << step << " (" << mask->GetFrameInfo().width << "x"
            << mask->GetFrameInfo().height << ") to " << *out << "\n";
  if (counts[0] == static_cast<std::uint64_t>(mask->GetFrameInfo().width) *
                       static_cast<std::uint64_t>(mask->GetFrameInfo().height)) {
    std::cout << "  nothing painted\n";
  }
  for (unsigned brush = 1; brush < 256; ++brush) {
    if (counts[brush] == 0) continue;
    std::cout << "  brush " << brush << ": " << counts[brush] << " pixel(s), colour "
              << Hex(BrushColour(static_cast<std::uint8_t>(brush))) << "\n";
  }
  return 0;
}

}  // namespace canvaro_tool
