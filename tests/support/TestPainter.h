// A small brush-settings object, written the way a host writes its painters, for tests of mask
// steps. It writes one entry, "BrushSize"; its class identifier is "TestPainter".
//
//   MaskInfo::MaskInfoEx ex(canvaro_test::TestPainter::Make(12), blender);
#pragma once

#include "canvaro/settings/ISettingsPainter.h"
#include "kelbra/RefCount.h"

namespace canvaro_test {

class TestPainter : public Kelbra::RefCounted<Kelbra::Canvaro::ISettingsPainter> {
 public:
  explicit TestPainter(int brushSize) : brushSize_(brushSize) {}

  static boost::intrusive_ptr<TestPainter> Make(int brushSize) {
    return new TestPainter(brushSize);
  }

  int GetBrushSize() const { return brushSize_; }

  void Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const override {
    serializer->WriteInt("BrushSize", brushSize_);
  }
  void Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) override {
    brushSize_ = serializer->ReadInt("BrushSize", brushSize_);
  }

 private:
  int brushSize_;
};

}  // namespace canvaro_test
