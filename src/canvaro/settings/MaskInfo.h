/// \file
/// The settings record of one mask step: the rectangle of the picture that the mask change covers,
/// and how the mask was painted and is blended.
///
/// MaskInfo holds the rectangle; its MaskInfoEx holds an optional painter (the host's brush
/// settings, shared, never cloned) and the blender settings (by value):
///
///   MaskInfo info(10, 50, 20, 60, MaskInfo::MaskInfoEx(painter, blender));
///   info.Serialize(s);   // "Left", "Right", "Top", "Bottom", then the child "InfoEx"
///
/// The library only stores the four integers; whether right and bottom are inclusive is the
/// convention of the host code that fills them. A stored step that has a painter is read back with
/// the host's creator for the painter's class (ISettingsPainter::RegisterPainterCreator); without
/// one, reading throws CanvaroException "Not implemented". One thread at a time per record.
#pragma once

#include <cstdint>
#include <string>

#include "canvaro/settings/Blender.h"
#include "canvaro/settings/ISettingsPainter.h"
#include "kelbra/Drevin/ISerializer.h"

namespace Kelbra::Canvaro {

class MaskInfo : public virtual Drevin::ISerializable {
 public:
  class MaskInfoEx : public virtual Drevin::ISerializable {
   public:
    static const std::string PAINTER;  // "Painter": child node of the painter, when there is one
    static const std::string BLENDER;  // "Blender": child node of the blender settings

    /// No painter.
    explicit MaskInfoEx(const Blender::IBlender::Initializer& blender);
    /// Shares `painter` (which may be null) and copies `blender`.
    MaskInfoEx(const ISettingsPainter::ConstPtr& painter,
               const Blender::IBlender::Initializer& blender);
    MaskInfoEx(const MaskInfoEx&) = default;
    MaskInfoEx& operator=(const MaskInfoEx&) = default;
    ~MaskInfoEx() override;

    const ISettingsPainter::ConstPtr& GetPainter() const { return painter_; }
    void SetPainter(const ISettingsPainter::ConstPtr& painter) { painter_ = painter; }
    const Blender::IBlender::Initializer& GetBlender() const { return blender_; }
    Blender::IBlender::Initializer& GetBlender() { return blender_; }

    /// Writes the child "Painter" when there is a painter, then the child "Blender".
    void Serialize(const Drevin::ISerializerPtr& serializer) const override;
    /// Reads the child "Painter" with the host's creator, then "Blender" (an absent node keeps the
    /// blender). A stored "Painter" of a class without a registered creator throws
    /// CanvaroException "Not implemented" before the blender is read.
    void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

   private:
    ISettingsPainter::ConstPtr painter_;
    Blender::IBlender::Initializer blender_;
  };

  static const std::string LEFT;     // "Left"
  static const std::string RIGHT;    // "Right"
  static const std::string TOP;      // "Top"
  static const std::string BOTTOM;   // "Bottom"
  static const std::string INFO_EX;  // "InfoEx": child node of the extended part

  /// The state a stored step is read into: rectangle 0, 0, 0, 0, no painter, and a blender of
  /// mask type 0 in Proc::Color::Black().
  MaskInfo();
  MaskInfo(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom,
           const MaskInfoEx& infoEx);
  MaskInfo(const MaskInfo&) = default;
  MaskInfo& operator=(const MaskInfo&) = default;
  ~MaskInfo() override;

  std::int32_t GetLeft() const { return left_; }
  std::int32_t GetRight() const { return right_; }
  std::int32_t GetTop() const { return top_; }
  std::int32_t GetBottom() const { return bottom_; }
  void SetRect(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom);
  const MaskInfoEx& GetInfoEx() const { return infoEx_; }
  MaskInfoEx& GetInfoEx() { return infoEx_; }

  /// Writes "Left", "Right", "Top", "Bottom", then the child "InfoEx".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the four values (each absent key keeps its value), then the child "InfoEx" (an absent
  /// node keeps the extended part). Throws "Not implemented" for a stored painter whose class has
  /// no registered creator, after the rectangle has been read.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

 private:
  std::int32_t left_ = 0;
  std::int32_t right_ = 0;
  std::int32_t top_ = 0;
  std::int32_t bottom_ = 0;
  MaskInfoEx infoEx_;
};

}  // namespace Kelbra::Canvaro
