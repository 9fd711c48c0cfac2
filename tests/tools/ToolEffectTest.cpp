// The tool's effects: what each does to pixels, and that a step's package brings the effect back.
#include <gtest/gtest.h>

#include "canvaro/settings/EffectsSettings.h"
#include "tools/canvaro/ToolEffect.h"
#include "tools/canvaro/ToolError.h"

namespace {

using canvaro_tool::ToolEffect;
using Kind = ToolEffect::Kind;
namespace Proc = Kelbra::Proc;

Proc::IDataVideoPtr Picture(std::int32_t width, std::int32_t height,
                            std::uint8_t (*value)(int x, int y, int channel)) {
  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {width, height, 1, 1});
  auto plane = picture->GetPlane(0);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < 4; ++c) {
        plane.GetOffsetPtr(static_cast<std::size_t>(x * 4 + c), static_cast<std::size_t>(y))[0] =
            c == 3 ? 255 : value(x, y, c);
      }
    }
  }
  return picture;
}

std::uint8_t At(const Proc::IDataVideoPtr& picture, int x, int y, int channel) {
  const Proc::IDataVideo& constPicture = *picture;
  return *constPicture.GetPlane(0).GetOffsetPtr(static_cast<std::size_t>(x * 4 + channel),
                                                static_cast<std::size_t>(y));
}

TEST(ToolEffectTest, BrightnessAddsAndClampsColourButNotAlpha) {
  const auto source = Picture(3, 1, [](int x, int, int) { return std::uint8_t(x * 120); });
  const auto brighter = ToolEffect::Make(Kind::Brightness, 20)->Apply(*source);
  EXPECT_EQ(At(brighter, 0, 0, 0), 20);
  EXPECT_EQ(At(brighter, 1, 0, 1), 140);
  EXPECT_EQ(At(brighter, 2, 0, 2), 255);  // 240 + 20 clamps
  EXPECT_EQ(At(brighter, 2, 0, 3), 255);
  const auto darker = ToolEffect::Make(Kind::Brightness, -50)->Apply(*source);
  EXPECT_EQ(At(darker, 0, 0, 0), 0);
  EXPECT_EQ(At(source, 1, 0, 0), 120);  // the source is left alone
}

TEST(ToolEffectTest, InvertTwiceGivesThePictureBack) {
  const auto source =
      Picture(5, 4, [](int x, int y, int c) { return std::uint8_t(x * 40 + y * 9 + c); });
  const auto invert = ToolEffect::Make(Kind::Invert, 0);
  const auto once = invert->Apply(*source);
  EXPECT_EQ(At(once, 2, 3, 1), 255 - At(source, 2, 3, 1));
  const auto twice = invert->Apply(*once);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 5; ++x) EXPECT_EQ(At(twice, x, y, 0), At(source, x, y, 0));
  }
}

TEST(ToolEffectTest, BlurAveragesABoxAndKeepsFlatAreas) {
  // One bright pixel in the middle of a black 7 x 7 picture spreads over a 3 x 3 box.
  const auto dot =
      Picture(7, 7, [](int x, int y, int) { return std::uint8_t(x == 3 && y == 3 ? 252 : 0); });
  const auto blurred = ToolEffect::Make(Kind::Blur, 1)->Apply(*dot);
  EXPECT_EQ(At(blurred, 3, 3, 0), 28);  // 252 / 9
  EXPECT_EQ(At(blurred, 2, 4, 0), 28);
  EXPECT_EQ(At(blurred, 1, 3, 0), 0);
  EXPECT_EQ(At(blurred, 3, 3, 3), 255);
  const auto flat = Picture(6, 5, [](int, int, int) { return std::uint8_t(77); });
  EXPECT_EQ(At(ToolEffect::Make(Kind::Blur, 4)->Apply(*flat), 0, 4, 2), 77);
}

TEST(ToolEffectTest, AStepsPackageRecordsTheEffect) {
  for (const auto& effect : {ToolEffect::Make(Kind::Brightness, -25),
                             ToolEffect::Make(Kind::Blur, 3), ToolEffect::Make(Kind::Invert, 0)}) {
    const Kelbra::Canvaro::SettingsCore step = effect->MakeStepSettings();
    EXPECT_TRUE(step.GetEffectsSettings().EffectsConst().empty());
    const auto back = ToolEffect::FromPackage(step.GetEffectsSettings().GetPackage());
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->IsEqual(*effect)) << effect->Describe();
    EXPECT_EQ(step.GetEffectsSettings().GetPackage().GetPresetName(), effect->Describe());
  }
  EXPECT_FALSE(ToolEffect::FromPackage(
      canvaro_tool::MakeSourceSettings("Source").GetEffectsSettings().GetPackage()));
  EXPECT_THROW(ToolEffect::Make(Kind::Blur, 101), canvaro_tool::ToolError);
}

}  // namespace
