// The small helpers of the document code: raw frame files, the refusing drawable-item bodies,
// and the text rendering of records.
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/get_error_info.hpp>

#include "canvaro/CoreUtil/DrawableItemHandler.h"
#include "canvaro/CoreUtil/RawFrame.h"
#include "canvaro/CoreUtil/SerializerHelper.h"
#include "canvaro/foundation/ToolsId.h"
#include "kelbra/Core/CoreException.h"
#include "kelbra/Core/DataString.h"
#include "kelbra/Core/PropertySerializer.h"
#include "kelbra/Exception.h"
#include "kelbra/Proc/PixFmtInfo.h"
#include "support/Errors.h"
#include "support/Pictures.h"

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using Canvaro::CoreUtil::LoadRawFrame;
using Canvaro::CoreUtil::SaveRawFrame;
using canvaro_test::MakePatternPicture;
using canvaro_test::PackedBytes;
using Proc::PixFmt;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;

std::string Header(std::int32_t format, const Conf::FrameInfo& info) {
  return std::string(reinterpret_cast<const char*>(&format), sizeof format) +
         std::string(reinterpret_cast<const char*>(&info), sizeof info);
}

// ---- round trip of every memory format ----

class RawFrameFormats : public testing::TestWithParam<PixFmt> {};

// Planes follow one another whole, in plane order (PackedBytes); bytes cut short anywhere fail to
// load with FileException. (How the file streams buffer large reads and writes is their own
// tests' business.)
TEST_P(RawFrameFormats, IsHeaderThenPackedRowsAndLoadsBackEqualOnlyWhenWhole) {
  // Odd sizes give padded strides, and 256 pixels unpadded planes moved whole; aspect values
  // travel untouched; a picture without rows is only the header.
  for (const Conf::FrameInfo& info :
       std::vector<Conf::FrameInfo>{{13, 7, 3, 2}, {1, 3, 0, 0}, {256, 300, 1, 1}, {8, 0, 1, 1}}) {
    const auto picture = MakePatternPicture(GetParam(), info, 9);
    picture->SetPosition(777);
    picture->SetDuration(5);
    std::string bytes;
    SaveRawFrame(picture, Core::DataOutputString::Create(bytes));
    EXPECT_EQ(bytes, Header(static_cast<std::int32_t>(GetParam()), info) + PackedBytes(*picture))
        << Proc::GetPixFmtName(GetParam());

    Proc::IDataVideoPtr loaded;
    LoadRawFrame(loaded, Core::DataInputString::Create(bytes));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->GetPixFmt(), GetParam());
    EXPECT_EQ(loaded->GetFrameInfo(), info);
    EXPECT_EQ(PackedBytes(*loaded), PackedBytes(*picture));
    EXPECT_EQ(loaded->GetPosition(), 0);
    EXPECT_EQ(loaded->GetDuration(), 40000);

    for (const std::size_t size : std::vector<std::size_t>{bytes.size() - 1, 20, 19, 3, 0}) {
      if (size >= bytes.size()) continue;
      Proc::IDataVideoPtr frame;
      EXPECT_THROW(LoadRawFrame(frame, Core::DataInputString::Create(bytes.substr(0, size))),
                   Core::FileException)
          << size;
      EXPECT_FALSE(frame);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryMemoryFormat, RawFrameFormats,
                         testing::ValuesIn(Proc::GetMemoryPixFmts()),
                         [](const testing::TestParamInfo<PixFmt>& info) {
                           return Proc::GetPixFmtName(info.param);
                         });

// ---- no picture ----

TEST(RawFrame, EmptyPictureRoundTripsAsEmpty) {
  std::string bytes;
  SaveRawFrame(nullptr, Core::DataOutputString::Create(bytes));
  EXPECT_EQ(bytes, Header(-1, {}));
  Proc::IDataVideoPtr frame = Proc::DataVideoFF::Create(PixFmt::Gray8, {1, 1, 1, 1});
  LoadRawFrame(frame, Core::DataInputString::Create(bytes));
  EXPECT_FALSE(frame);
}

// ---- refusals: before any allocation, as FileException naming the stream ----

TEST(RawFrame, RefusesHeadersNoPictureCanHave) {
  const std::string pixels(64, 'x');
  const std::int32_t gray = static_cast<std::int32_t>(PixFmt::Gray8);
  const struct {
    std::string bytes;
    const char* why;
  } cases[] = {
      {Header(9999, {2, 2, 1, 1}) + pixels, "unknown pixel format 9999"},
      {Header(-1, {2, 2, 1, 1}) + pixels, "unknown pixel format -1"},
      {Header(44 /* vaapi */, {2, 2, 1, 1}) + pixels, "unknown pixel format 44"},
      {Header(9 /* monowhite, bit-packed */, {8, 2, 1, 1}) + pixels, "unknown pixel format 9"},
      {Header(gray, {-2, 2, 1, 1}) + pixels, "Negative size"},
      {Header(gray, {2, -2, 1, 1}) + pixels, "Negative size"},
      {Header(gray, {0x7FFFFFFF, 0x7FFFFFFF, 1, 1}) + pixels, "too large"},
      // A plausible header over a short file: 20000 x 10000 gray would be 200 MB.
      {Header(gray, {20000, 10000, 1, 1}) + pixels, "only 64 follow"},
      {Header(gray, {8, 9, 1, 1}) + pixels, "promises 72 bytes"},
  };
  for (const auto& c : cases) {
    Proc::IDataVideoPtr frame = Proc::DataVideoFF::Create(PixFmt::Gray8, {1, 1, 1, 1});
    const auto before = frame;
    EXPECT_THAT(canvaro_test::ErrorText<Core::FileException>(
                    [&] { LoadRawFrame(frame, Core::DataInputString::Create(c.bytes)); }),
                HasSubstr(c.why));
    EXPECT_EQ(frame, before) << c.why;
  }
}

// ---- the drawable-item bodies of a class that does not support them ----

// A class that inherits the interface without supporting it.
class Unsupported : public DrawableItemHandler {};

template <class Call>
void ExpectRefused(Call call) {
  try {
    call();
    ADD_FAILURE() << "the call returned";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "Undefined operation");
    EXPECT_NE(boost::get_error_info<TagCallStack>(e), nullptr);
    // The throw site: file, line and function.
    EXPECT_THAT(boost::diagnostic_information(e),
                ContainsRegex(R"(ItemHandler\.cpp\([0-9]+\): Throw in .*DrawableFrameInfo)"));
  }
}

TEST(DrawableItemHandlerTest, TheDefaultBodiesRefuseBothOperations) {
  Unsupported handler;
  ExpectRefused([&] { handler.SetDrawableFrameInfo({640, 480, 1, 1}); });
  ExpectRefused([&] { handler.GetDrawableFrameInfo(); });
}

// ---- records as text ----

TEST(SerializerHelperTest, RendersARecordAsTextThatReadsBack) {
  const std::string text =
      CoreUtil::SerializerHelper::SerializeToString(ToolsId(IToolsId::SHAPE_LINE));
  EXPECT_EQ(text,
            "{\n"
            "  \"entries\": [\n"
            "    {\"key\": \"ToolName\", \"string\": \"SHAPE_LINE\"}\n"
            "  ]\n"
            "}\n");
  EXPECT_EQ(Core::PropertySerializer::FromString(text).GetString("ToolName"), "SHAPE_LINE");
}

}  // namespace
