// Feeds arbitrary bytes to the raw frame reader, as if they were a swap file. Every input must end
// in a picture or in Core::CoreException (the stream's FileException for a short file, a refused
// header); the header may never make the reader allocate more than the input could fill. A
// picture that was read must write back to exactly the bytes it was read from.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "canvaro/CoreUtil/RawFrame.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataString.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kelbra;
  const std::string input(reinterpret_cast<const char*>(data), size);
  Proc::IDataVideoPtr frame;
  try {
    Canvaro::CoreUtil::LoadRawFrame(frame, Core::DataInputString::Create(input));
  } catch (const Core::CoreException&) {
    return 0;
  }
  if (!frame) return 0;
  std::string written;
  Canvaro::CoreUtil::SaveRawFrame(frame, Core::DataOutputString::Create(written));
  // What was read is the header and the rows; anything after them is not part of the picture.
  if (written.size() > input.size() || input.compare(0, written.size(), written) != 0) {
    std::abort();
  }
  return 0;
}
