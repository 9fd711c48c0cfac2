/// \file
/// Raw frame files: one picture as a 20-byte header and its packed pixel rows. The frame
/// storage keeps swapped-out pictures in this form.
///
///   offset 0   int32   pixel format (Proc::PixFmt value)
///   offset 4   int32 x 4  Conf::FrameInfo: width, height, aspect x, aspect y
///   offset 20  the rows of plane 0 top to bottom, then plane 1, ...; each row exactly its row
///              length, without the padding the picture's buffer may have
///
/// Integers are in the machine's byte order. There is no magic number or checksum: a file is
/// read back only by the program that wrote it.
///
///   SaveRawFrame(picture, Core::DataOutputFile::Create(path, Core::DataOutputFile::Mode::Atomic));
///   Proc::IDataVideoPtr again;
///   LoadRawFrame(again, Core::DataInputFile::Create(path));
///
/// Both functions hand the streams the picture's own memory: one call per plane whose rows have
/// no padding (adjacent planes merged), one per row otherwise; nothing is copied on the way and no
/// buffer is allocated here. Stream failures propagate as the streams' Core::FileException. One
/// thread per stream and picture.
#pragma once

#include <boost/intrusive_ptr.hpp>

#include "kelbra/Core/DataStream.h"
#include "kelbra/Proc/IDataVideo.h"

namespace Kelbra::Canvaro::CoreUtil {

/// Size of the header that precedes the pixel rows.
inline constexpr std::size_t kRawFrameHeaderSize = 20;

/// Writes `frame` to `out`. An empty `frame` writes only a header (format None, zero geometry).
/// Does not close `out`.
void SaveRawFrame(const boost::intrusive_ptr<const Proc::IDataVideo>& frame,
                  const Core::IDataOutputPtr& out);

/// Reads a picture from `in` into `frame` (replacing what it held), with position 0 and duration
/// 40000. A header of format None and zero geometry yields an empty `frame`. Throws
/// Core::FileException, before allocating anything, for a header with an unknown or unusable
/// pixel format, a negative or unallocatable size, or more pixel bytes than `in` still holds.
/// On any failure `frame` is left as it was.
void LoadRawFrame(Proc::IDataVideoPtr& frame, const Core::IDataInputPtr& in);

}  // namespace Kelbra::Canvaro::CoreUtil
