// A whole host session, as a picture editor would drive the library:
//
//   host_session [WORKDIR]      (default: a new folder under the system's temporary folder)
//
// It registers its effect and painter classes, creates a document on a swap folder, observes it,
// adds rendered pictures with their effect settings, paints mask strokes, places and moves shapes
// in one transaction, undoes and redoes, saves the document with its history, opens it again in a
// fresh document, checks that every step came back, and shows how the library's errors look.
// It prints what it does and exits with status 1 when something is wrong.
#include <canvaro/canvaro.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace fs = std::filesystem;
using namespace Kelbra;
using namespace Kelbra::Canvaro;

namespace {

// ---- the host's own classes: one effect and one painter ----

// The parameters of the host's brightness effect; their type name is the effect's kind.
class BrightnessParameters : public Proc::Settings {
 public:
  const std::string& GetTypeName() const override {
    static const std::string name = "Brightness";
    return name;
  }
  int amount = 0;
};

class Brightness : public EffectSettings {
 public:
  explicit Brightness(int amount = 0) { parameters_.amount = amount; }
  Ptr Clone() const override { return new Brightness(*this); }
  const Proc::Settings& GetSettings() const override { return parameters_; }
  bool IsAdditive() const override { return false; }
  bool IsEqual(const IEffectSettings& other) const override {
    const auto* same = dynamic_cast<const Brightness*>(&other);
    return same != nullptr && same->parameters_.amount == parameters_.amount;
  }
  void Serialize(const Drevin::ISerializerPtr& serializer) const override {
    EffectSettings::Serialize(serializer);  // the implementation name first
    serializer->WriteInt("amount", parameters_.amount);
  }
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
    EffectSettings::Deserialize(serializer);
    parameters_.amount = serializer->ReadInt("amount", 0);
  }

 private:
  BrightnessParameters parameters_;
};

class RoundBrush : public RefCounted<ISettingsPainter> {
 public:
  explicit RoundBrush(int size = 1) : size_(size) {}
  void Serialize(const Drevin::ISerializerPtr& serializer) const override {
    serializer->WriteInt("size", size_);
  }
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override {
    size_ = serializer->ReadInt("size", size_);
  }

 private:
  int size_;
};

// ---- the host's drawing surface: hears what changed ----

class Surface : public DrawerEventObserver {
 public:
  void HandleFrame(const DrawerEventFrame&) override { ++redraws; }
  void HandleUndo(const DrawerEventUndo&) override { ++steps; }
  int redraws = 0;
  int steps = 0;
};

// ---- pictures (the host renders them; here a flat colour and a painted square) ----

constexpr std::int32_t kWidth = 320;
constexpr std::int32_t kHeight = 240;

Proc::IDataVideoPtr Render(std::uint8_t level) {
  auto picture = Proc::DataVideoFF::Create(Proc::PixFmt::RGBA, {kWidth, kHeight, 1, 1});
  auto plane = picture->GetPlane(0);
  for (std::int32_t y = 0; y < kHeight; ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, y);
    for (std::int32_t x = 0; x < kWidth * 4; ++x) row[x] = level;
  }
  return picture;
}

// The whole mask after a stroke: `previous` (or nothing) with a square of `brush` painted.
Proc::IDataVideoPtr Stroke(const Proc::IDataVideoPtr& previous, std::int32_t left, std::int32_t top,
                           std::int32_t side, std::uint8_t brush) {
  auto mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {kWidth, kHeight, 1, 1});
  auto plane = mask->GetPlane(0);
  for (std::int32_t y = 0; y < kHeight; ++y) {
    std::uint8_t* row = plane.GetOffsetPtr(0, y);
    for (std::int32_t x = 0; x < kWidth; ++x) {
      const bool painted = x >= left && x < left + side && y >= top && y < top + side;
      row[x] = painted ? brush : previous ? *previous->GetPlane(0).GetOffsetPtr(x, y) : 0;
    }
  }
  return mask;
}

MaskInfo StrokeInfo(std::int32_t left, std::int32_t top, std::int32_t side, int brushSize) {
  const Blender::IBlender::Initializer blend(Blender::IBlender::Initializer::DEFAULT,
                                             Proc::Color::Black());
  return MaskInfo(
      left, left + side, top, top + side,
      MaskInfo::MaskInfoEx(ISettingsPainter::ConstPtr(new RoundBrush(brushSize)), blend));
}

// What a host shows its user for a failure of the library.
std::string Explain(const CanvaroException& e) {
  const CanvaroError* code = boost::get_error_info<TagCanvaroErrorCode>(e);
  return (code != nullptr ? "error " + std::to_string(static_cast<int>(*code)) + ": " : "") +
         e.what();
}

int Run(const fs::path& work) {
  // Once per process: how saved effects and painters are made again.
  IEffectSettings::RegisterEffectCreator("Brightness",
                                         [] { return IEffectSettings::Ptr(new Brightness); });
  ISettingsPainter::RegisterPainterCreator("RoundBrush",
                                           [] { return ISettingsPainter::Ptr(new RoundBrush); });

  const fs::path swap = work / "swap";
  fs::create_directories(swap);
  ICanvaroUndoPtr document = ICanvaroUndo::Create(
      swap, [n = 0]() mutable { return "frame_" + std::to_string(n++) + ".raw"; });
  Surface surface;
  document->RegisterEventHandler(&surface);

  // The opened picture, then two renderings of it with their settings.
  document->Add(SettingsCore(), Render(100), nullptr, MaskInfo());
  document->Add(SettingsCore(IEffectSettings::ConstPtr(new Brightness(20))), Render(120), nullptr,
                MaskInfo());
  document->Add(SettingsCore(IEffectSettings::ConstPtr(new Brightness(40))), Render(140), nullptr,
                MaskInfo());

  // Two strokes on the last rendering: each is a step of its own.
  const Proc::IDataVideoPtr first = Stroke(nullptr, 10, 10, 20, ICanvaroBrush::INDEX_DEFAULT);
  document->AddMask(first, StrokeInfo(10, 10, 20, 8));
  document->AddMask(Stroke(first, 50, 40, 10, ICanvaroBrush::INDEX_DEFAULT),
                    StrokeInfo(50, 40, 10, 4));
  std::cout << "painted pixels: " << document->GetMaskPixelCount({}) << '\n';

  // Place two shapes and move the first, as one step.
  {
    RAII::UndoTransactionGuard step(document->GetTransactionManager(), /*commit=*/false);
    document->SetShape(ShapeInfo(*RectangleInfo::Create(IToolsId::SHAPE_FRAME)), nullptr);
    document->SetShape(ShapeInfo(*LineInfo::Create(IToolsId::SHAPE_LINE)), nullptr);
    auto moved = document->GetShapeItems(ShapeType::All).front()->Clone();
    moved->GetPosition().SetX(0.25);
    document->SetShape(ShapeInfo(*moved), nullptr);
    step.SetCommit(true);  // reached only when every edit succeeded
  }
  std::cout << "shapes: " << document->GetShapeActiveItemCount(ShapeType::All) << '\n';

  // Undo the shapes and the second stroke, redo the stroke.
  document->Undo();
  document->Undo();
  if (document->IsRedoEnabled()) document->Redo();
  std::cout << "after undo and redo: item " << document->GetCurrentIndex() << ", stroke "
            << document->GetCurrentMaskIndex() << ", shapes "
            << document->GetShapeActiveItemCount(ShapeType::All) << '\n';

  // A refused call changes nothing and says why.
  try {
    document->GetVideo(99);
  } catch (const CanvaroException& e) {
    std::cout << "refused as expected: " << Explain(e) << '\n';
  }

  // Save as a package (a folder of its own, atomic and durable), open it again, compare. The
  // package keeps its own pictures: whatever happens to a swap folder, the save stays whole.
  const fs::path package = work / "beach.canvaro";
  SaveDocument(*document, package);
  const fs::path openedSwap = work / "swap-opened";
  fs::create_directories(openedSwap);
  ICanvaroUndoPtr opened = OpenDocument(package, openedSwap, [n = 0]() mutable {
    return "opened_" + std::to_string(n++) + ".raw";
  });
  bool same = opened->GetVideoCount() == document->GetVideoCount() &&
              opened->GetCurrentIndex() == document->GetCurrentIndex() &&
              opened->GetMaskPixelCount({}) == document->GetMaskPixelCount({});
  for (unsigned item = 0; same && item < document->GetVideoCount(); ++item) {
    same = opened->GetSettings(item) == document->GetSettings(item);
  }
  std::cout << "saved to " << package << " and opened again: " << (same ? "the same" : "DIFFERENT")
            << '\n';
  std::cout << "the surface heard " << surface.steps << " step(s) and redrew " << surface.redraws
            << " time(s)\n";
  document->UnregisterEventHandler(&surface);
  return same ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  fs::path work;
  if (argc > 1) {
    work = argv[1];
  } else {
    std::string pattern = (fs::temp_directory_path() / "canvaro-session-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      std::cerr << "host_session: cannot make a working folder\n";
      return 1;
    }
    work = pattern;
  }
  try {
    return Run(work);
  } catch (const CanvaroException& e) {
    std::cerr << "host_session: " << Explain(e) << '\n';
  } catch (const std::exception& e) {
    std::cerr << "host_session: " << e.what() << '\n';
  }
  return 1;
}
