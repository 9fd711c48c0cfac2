/// \file
/// TextInfo: the text box shape. Its rendering type adds to the colours the text itself (UTF-8
/// bytes, stored as they are), its font, size, alignment and effects, an outline, a border, a
/// background, and the size in pixels of the box as the host last measured it.
///
///   ShapeInfoBasePtr text = TextInfo::Create(IToolsId::TEXT);
///   auto& r = static_cast<TextInfo&>(*text).GetRendering();
///   r.SetText("Hello");   // font size 96, alignment 1
///
/// Text does not turn or crop with the picture (it keeps its size in points); a resize scales
/// the font with the measured box and asks the host to measure again (width and height 0).
///
/// Keys: "TextColor", "OutlineColor", "Opacity", "Text", "TextAlignment", "Font", "FontSize",
/// "FontEffects", "OutlineSize", "BorderSize", "BorderColor", "BorderOpacity",
/// "BackgroundColor", "BackgroundOpacity", "Width", "Height". Class id "TextInfo",
/// ShapeType::Text.
#pragma once

#include <cstdint>
#include <string>

#include "canvaro/shapes/RenderingTypeBaseToolIdRemovable.h"
#include "canvaro/shapes/ShapeInfoT.h"
#include "kelbra/Proc/Color.h"

namespace Kelbra::Canvaro {

namespace TextInfoDetails {

class RenderingType : public RenderingTypeBaseToolIdRemovable {
 public:
  static constexpr ShapeType kShapeType = ShapeType::Text;
  /// No resize makes a font smaller than this.
  static constexpr std::int32_t kMinFontSize = 10;

  /// Every field: doubles within 1e-5, the rest exactly.
  bool operator==(const RenderingType& other) const;

  double GetOutlineSize() const { return outlineSize_; }
  void SetOutlineSize(double size) { outlineSize_ = size; }
  const Proc::Color& GetBorderColor() const { return borderColor_; }
  void SetBorderColor(const Proc::Color& color) { borderColor_ = color; }
  std::uint8_t GetBorderOpacity() const { return borderOpacity_; }
  void SetBorderOpacity(std::uint8_t opacity) { borderOpacity_ = opacity; }
  double GetBorderSize() const { return borderSize_; }
  void SetBorderSize(double size) { borderSize_ = size; }
  std::uint8_t GetBackgroundOpacity() const { return backgroundOpacity_; }
  void SetBackgroundOpacity(std::uint8_t opacity) { backgroundOpacity_ = opacity; }
  const Proc::Color& GetBackgroundColor() const { return backgroundColor_; }
  void SetBackgroundColor(const Proc::Color& color) { backgroundColor_ = color; }
  const std::string& GetText() const { return text_; }
  void SetText(const std::string& text) { text_ = text; }
  std::int32_t GetTextAlignment() const { return textAlignment_; }
  void SetTextAlignment(std::int32_t alignment) { textAlignment_ = alignment; }
  const std::string& GetFont() const { return font_; }
  void SetFont(const std::string& font) { font_ = font; }
  std::int32_t GetFontSize() const { return fontSize_; }
  void SetFontSize(std::int32_t size) { fontSize_ = size; }
  std::int32_t GetFontEffects() const { return fontEffects_; }
  void SetFontEffects(std::int32_t effects) { fontEffects_ = effects; }
  /// The measured text box, in pixels of the picture; 0 until the host measures it.
  double GetWidth() const { return width_; }
  void SetWidth(double width) { width_ = width; }
  double GetHeight() const { return height_; }
  void SetHeight(double height) { height_ = height; }

  /// Text keeps its size and place on the picture: nothing changes.
  void Transpose(const Conf::FrameInfo& frame,
                 const Proc::SettingsEffectTranspose& transpose) override;
  /// The font scales as the measured box's width does under IRenderingType::ResizeImpl (which
  /// also turns the angle), never below kMinFontSize; width and height become 0 so that the
  /// host measures the box again. A box not measured yet scales as any box of no height would.
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to,
              PositionType& position) override;
  /// Text keeps its size: nothing changes.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi) override;

  /// The colours, then the text's keys (see the header comment for the order).
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  double outlineSize_ = 0.0;
  Proc::Color borderColor_{0, 0, 0, 255};
  std::uint8_t borderOpacity_ = 255;
  double borderSize_ = 0.0;
  std::uint8_t backgroundOpacity_ = 0;
  Proc::Color backgroundColor_{0, 0, 0, 255};
  std::string text_;
  std::int32_t textAlignment_ = 1;
  std::string font_;
  std::int32_t fontSize_ = 96;
  std::int32_t fontEffects_ = 0;
  double width_ = 0.0;
  double height_ = 0.0;
};

}  // namespace TextInfoDetails

using TextInfo = ShapeInfoT<TextInfoDetails::RenderingType>;
extern template class ShapeInfoT<TextInfoDetails::RenderingType>;

}  // namespace Kelbra::Canvaro
