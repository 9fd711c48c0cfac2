// A long randomized editing session (steps, replaced steps, mask strokes and clears, shapes
// placed, moved and removed, transactions committed and rolled back, undo, redo, saving while
// the swap worker writes, saving and loading into a fresh document) checked after every
// operation against a reference model of what the document must show.
//
// The model is deliberately naive: it keeps a full copy of the visible state for every undo
// step (picture fill, settings, mask pixels, mask position, shapes) and a cursor, so it shares
// no idea with the document's participant histories.
//
// Seeded and reproducible: a failure prints the seed and the last operations. Run one seed with
// CANVARO_RANDOM_SEED=<seed> (and CANVARO_RANDOM_OPERATIONS=<n> for a longer session).
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "canvaro/Undo/ICanvaroUndo.h"
#include "canvaro/foundation/CanvaroException.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Drevin/SerializerProperty.h"
#include "support/DocumentTest.h"
#include "support/Pictures.h"
#include "support/TempDir.h"

// glog stamps every line with the local time through the C library's time zone code, which
// serializes itself with a lock ThreadSanitizer cannot see; the session's thread and the storage
// workers then look like a race inside tzset (CI sets TZ, which avoids it). Nothing of ours.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
extern "C" const char* __tsan_default_suppressions() { return "race:tzset_internal\n"; }
#endif
#endif

namespace {

using namespace Kelbra;
using namespace Kelbra::Canvaro;
using canvaro_test::Picture;
using canvaro_test::Settings;

constexpr unsigned kCurrent = ICanvaroUndo::kCurrentItem;
constexpr std::int32_t kWidth = 8;
constexpr std::int32_t kHeight = 6;
constexpr std::size_t kPixels = kWidth * kHeight;
using MaskPixels = std::array<std::uint8_t, kPixels>;

// ---- the model ----

struct Shape {
  ShapeType kind = ShapeType::Line;
  double x = 0;
  bool visible = true;
};

// What the document shows at one undo step.
struct View {
  unsigned item = 0;
  std::uint8_t fill = 0;
  std::string package;
  MaskPixels mask{};
  unsigned maskIndex = 0;
  // Every shape placed up to this step, by index; later ones are not shown here.
  std::vector<Shape> shapes;
};

struct Model {
  std::vector<View> steps;
  std::size_t cursor = 0;
  // Settings items of the document, its redo tail included (not a property of a step).
  unsigned items = 0;
  // Shape items ever made: they are never deleted, so indices keep counting.
  unsigned shapeItems = 0;

  const View& Now() const { return steps[cursor]; }
  // The start of an edit that makes a step: every redo tail goes.
  View BeginEdit() {
    steps.resize(cursor + 1);
    items = Now().item + 1;
    return Now();
  }
  void Commit(const View& view) {
    steps.push_back(view);
    cursor = steps.size() - 1;
  }
};

// ---- building what the document receives ----

Proc::IDataVideoPtr MaskPicture(const MaskPixels& pixels) {
  auto mask = Proc::DataVideoFF::Create(Proc::PixFmt::Gray8, {kWidth, kHeight, 1, 1});
  auto plane = mask->GetPlane(0);
  for (std::size_t y = 0; y < kHeight; ++y) {
    std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(y * kWidth), kWidth,
                plane.GetOffsetPtr(0, y));
  }
  return mask;
}

MaskPixels ReadMask(const Proc::IDataVideoPtr& mask) {
  MaskPixels pixels{};
  const std::string bytes = mask ? canvaro_test::PackedBytes(*mask) : std::string();
  std::copy_n(bytes.begin(), std::min(bytes.size(), kPixels), pixels.begin());
  return pixels;
}

struct Rect {
  std::int32_t left, right, top, bottom;
};

MaskInfo MaskOver(const Rect& r) { return canvaro_test::Mask(r.left, r.right, r.top, r.bottom); }

void Paint(MaskPixels& pixels, const Rect& r, std::uint8_t brush) {
  for (std::int32_t y = r.top; y < r.bottom; ++y) {
    for (std::int32_t x = r.left; x < r.right; ++x)
      pixels[static_cast<std::size_t>(y * kWidth + x)] = brush;
  }
}

ShapeInfo NewShape(ShapeType kind, double x) {
  ShapeInfoBasePtr shape = ShapeInfoBase::GetCreatorItem(kind)->create(IToolsId::SHAPE_FRAME);
  shape->GetPosition().SetX(x);
  return ShapeInfo(ShapeInfoBaseConstPtr(shape));
}

// ---- the session ----

class RandomSession {
 public:
  RandomSession(unsigned seed, const canvaro_test::TempDir& dir)
      : random_(seed), dir_(dir), doc_(NewDocument()) {}

  // Runs `operations` random operations; stops at the first difference from the model and
  // describes it.
  testing::AssertionResult Run(int operations) {
    struct Operation {
      int share;  // of the rolls out of 100
      const char* name;
      void (*run)(RandomSession&);
    };
    static constexpr Operation kOperations[] = {
        {14, "add", [](RandomSession& s) { s.Edit(&RandomSession::ApplyAdd); }},
        {3, "set", [](RandomSession& s) { s.SetStep(); }},
        {3, "shape state passed back", [](RandomSession& s) { s.ShapeStatePassedBack(); }},
        {13, "stroke", [](RandomSession& s) { s.Edit(&RandomSession::ApplyStroke); }},
        {2, "clear mask", [](RandomSession& s) { s.ClearMask(); }},
        {10, "place shape", [](RandomSession& s) { s.Edit(&RandomSession::ApplyPlaceShape); }},
        {7, "move shape", [](RandomSession& s) { s.MoveShape(); }},
        {3, "remove shapes", [](RandomSession& s) { s.RemoveShapes(); }},
        {6, "transaction", [](RandomSession& s) { s.Transaction(/*commit=*/true); }},
        {2, "rollback", [](RandomSession& s) { s.Transaction(/*commit=*/false); }},
        {17, "undo", [](RandomSession& s) { s.Undo(); }},
        {14, "redo", [](RandomSession& s) { s.Redo(); }},
        {2, "refused call", [](RandomSession& s) { s.RefusedCall(); }},
        {2, "save", [](RandomSession& s) { s.SaveWhileWorking(); }},
        {2, "save and load", [](RandomSession& s) { s.SaveAndLoad(); }},
    };
    // The source picture: the base step.
    Do("add source", [&] { ApplyAdd(model_.steps.emplace_back()); });
    for (int i = 0; i < operations; ++i) {
      int roll = Uniform(0, 99);
      const Operation* operation = kOperations;
      while ((roll -= operation->share) >= 0) ++operation;
      testing::AssertionResult result = Do(operation->name, [&] { operation->run(*this); });
      if (!result) return result;
    }
    return Do("final save and load", [&] { SaveAndLoad(); });
  }

 private:
  template <class Operation>
  testing::AssertionResult Do(const std::string& name, Operation operation) {
    history_.push_back(name);
    if (history_.size() > 12) history_.pop_front();
    operation();
    testing::AssertionResult result = Check();
    if (!result) {
      result << "\n  after operation " << ++count_ << "; the last operations:";
      for (const std::string& done : history_) result << ' ' << done << ';';
    }
    ++count_;
    return result;
  }

  int Uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

  ICanvaroUndoPtr NewDocument() {
    const std::string prefix = "d" + std::to_string(documents_++) + "_";
    return ICanvaroUndo::Create(
        dir_.path(), [prefix, n = 0]() mutable { return prefix + std::to_string(n++) + ".raw"; });
  }

  std::uint8_t NextFill() { return static_cast<std::uint8_t>(1 + (fills_++ % 250)); }

  Rect RandomRect() {
    const std::int32_t left = Uniform(0, kWidth - 1);
    const std::int32_t top = Uniform(0, kHeight - 1);
    return {left, Uniform(left + 1, kWidth), top, Uniform(top + 1, kHeight)};
  }

  // ---- edits: each applies to the document and to `view`, the state being built ----

  void ApplyAdd(View& view) {
    const bool withMask = Uniform(0, 2) == 0;
    const std::uint8_t fill = NextFill();
    std::string package = "p" + std::to_string(fill);
    MaskPixels mask{};
    Rect rect{0, 0, 0, 0};
    Proc::IDataVideoPtr maskPicture;
    if (withMask && Uniform(0, 2) == 0 && doc_->GetVideoCount() > 0) {
      // The mask in force carried forward as the new step's first mask: the document's own
      // picture, which later strokes and undos must not change under the old step.
      maskPicture = doc_->GetMask(kCurrent);
      if (maskPicture) {
        mask = view.mask;
        Lend(maskPicture);
      }
    } else if (withMask) {
      rect = RandomRect();
      Paint(mask, rect, static_cast<std::uint8_t>(Uniform(1, 3)));
      maskPicture = MaskPicture(mask);
      Lend(maskPicture);
    }
    if (doc_->GetVideoCount() > 0 && Uniform(0, 3) == 0) {
      // Another item's own settings record, often one of the redo tail that this Add drops.
      const unsigned item = static_cast<unsigned>(Uniform(0, int(doc_->GetVideoCount()) - 1));
      package = doc_->GetSettings(item).GetEffectsSettings().GetPackage().GetName();
      doc_->Add(doc_->GetSettings(item), Picture(fill), maskPicture, doc_->GetMaskInfo(item));
    } else {
      doc_->Add(Settings(package), Picture(fill), maskPicture, MaskOver(rect));
    }
    view.item = model_.items++;
    view.fill = fill;
    view.package = package;
    view.mask = mask;
    view.maskIndex = 0;
  }

  void ApplyStroke(View& view) {
    const Rect rect = RandomRect();
    MaskPixels mask = view.mask;
    // Another brush than the one there, so that the stroke changes something.
    const std::uint8_t brush = static_cast<std::uint8_t>(
        mask[static_cast<std::size_t>(rect.top * kWidth + rect.left)] % 3 + 1);
    Paint(mask, rect, brush);
    Rect told = rect;
    // Some hosts paint one column past the rectangle they report.
    if (told.right - told.left > 1 && Uniform(0, 3) == 0) --told.right;
    const Proc::IDataVideoPtr picture = MaskPicture(mask);
    Lend(picture);
    doc_->AddMask(picture, MaskOver(told));
    view.mask = mask;
    ++view.maskIndex;
  }

  void ApplyPlaceShape(View& view) {
    static constexpr ShapeType kKinds[] = {ShapeType::Line, ShapeType::Rectangle,
                                           ShapeType::Ellipse, ShapeType::Text};
    const ShapeType kind = kKinds[Uniform(0, 3)];
    const double x = Uniform(1, 63) / 64.0;
    doc_->SetShape(NewShape(kind, x), nullptr);
    // Shapes placed in rolled-back transactions exist, hidden.
    view.shapes.resize(model_.shapeItems, Shape{ShapeType::Line, 0, false});
    view.shapes.push_back({kind, x, true});
    ++model_.shapeItems;
  }

  // Moves a visible shape of `view`; false when there is none.
  bool ApplyMoveShape(View& view) {
    std::vector<std::size_t> visible;
    for (std::size_t i = 0; i < view.shapes.size(); ++i) {
      if (view.shapes[i].visible) visible.push_back(i);
    }
    if (visible.empty()) return false;
    const std::size_t index =
        visible[static_cast<std::size_t>(Uniform(0, static_cast<int>(visible.size()) - 1))];
    Shape& shape = view.shapes[index];
    double x = Uniform(1, 63) / 64.0;
    if (x == shape.x) x = x > 0.5 ? x - 1 / 64.0 : x + 1 / 64.0;
    ShapeInfoBasePtr moved =
        doc_->GetShapeItemInfo(static_cast<unsigned>(index), kCurrent)->Clone();
    moved->GetPosition().SetX(x);
    doc_->SetShape(ShapeInfo(ShapeInfoBaseConstPtr(moved)), nullptr);
    shape.x = x;
    return true;
  }

  // ---- operations ----

  // An edit that makes one step of its own.
  void Edit(void (RandomSession::*apply)(View&)) {
    View view = model_.BeginEdit();
    (this->*apply)(view);
    model_.Commit(view);
  }

  // Replaces the step in force. The model can follow only while the item in force has no
  // strokes and nothing can be redone: then every step that shows the item shows the new one.
  void SetStep() {
    if (model_.cursor + 1 < model_.steps.size() || model_.Now().maskIndex != 0) return;
    const unsigned item = model_.Now().item;
    const std::uint8_t fill = NextFill();
    const std::string package = "set" + std::to_string(fill);
    doc_->Set(Settings(package), Picture(fill), nullptr, MaskOver({0, 0, 0, 0}));
    for (View& view : model_.steps) {
      if (view.item == item) {
        view.fill = fill;
        view.package = package;
        view.mask = {};
      }
    }
  }

  void ClearMask() {
    const MaskPixels& now = model_.Now().mask;
    // Clearing a blank mask is refused (after the redo steps were dropped): not modelled.
    if (std::all_of(now.begin(), now.end(), [](std::uint8_t p) { return p == 0; })) return;
    View view = model_.BeginEdit();
    doc_->AddMask(nullptr, MaskOver({0, 1, 0, 1}));
    view.mask = {};
    ++view.maskIndex;
    model_.Commit(view);
  }

  void MoveShape() {
    View view = model_.Now();
    if (!ApplyMoveShape(view)) return;  // no visible shape: no step
    model_.BeginEdit();
    model_.Commit(view);
  }

  void RemoveShapes() {
    static constexpr ShapeType kKinds[] = {ShapeType::Line, ShapeType::Rectangle, ShapeType::All};
    const ShapeType kind = kKinds[Uniform(0, 2)];
    View view = model_.Now();
    bool any = false;
    for (Shape& shape : view.shapes) {
      if (shape.visible && HasAnyOf(kind, shape.kind)) {
        shape.visible = false;
        any = true;
      }
    }
    doc_->RemoveShapeAll(kind);
    if (!any) return;  // nothing visible of that kind: no step
    model_.BeginEdit();
    model_.Commit(view);
  }

  // Two to four edits as one step, or rolled back.
  void Transaction(bool commit) {
    const View before = model_.Now();
    View view = model_.BeginEdit();
    unsigned added = 0;
    {
      RAII::UndoTransactionGuard transaction(doc_->GetTransactionManager(), commit);
      const int edits = Uniform(2, 4);
      for (int i = 0; i < edits; ++i) {
        switch (Uniform(0, 3)) {
          case 0:
            ApplyAdd(view);
            ++added;
            break;
          case 1:
            ApplyStroke(view);
            break;
          case 2:
            ApplyPlaceShape(view);
            break;
          default:
            if (!ApplyMoveShape(view)) ApplyStroke(view);
            break;
        }
      }
    }
    if (commit) {
      model_.Commit(view);
    } else {
      // Every edit is undone; the items added stay behind as the document's redo tail, and the
      // shapes placed as hidden items.
      model_.items = before.item + 1 + added;
    }
  }

  // A shape item's state (often one that a redo would bring back) passed back to SetShape: the
  // record lives in the redo tail that the call drops.
  void ShapeStatePassedBack() {
    const unsigned items = doc_->GetShapeItemCount(ShapeType::All);
    if (items == 0) return;
    const unsigned item = static_cast<unsigned>(Uniform(0, int(items) - 1));
    unsigned states = 0;
    while (Throws([&] { doc_->GetShapeItemInfo(item, states); }) == 0) ++states;
    const unsigned state = static_cast<unsigned>(Uniform(0, int(states) - 1));
    const ShapeInfo& record = doc_->GetShapeItemInfo(item, state);
    if (record == doc_->GetShapeItemInfo(item, kCurrent)) return;  // records nothing
    View view = model_.BeginEdit();
    view.shapes.resize(model_.shapeItems, Shape{ShapeType::Line, 0, false});
    view.shapes[item] = {record->GetShapeType(), record->GetPosition().GetX(), record->IsVisible()};
    doc_->SetShape(record, nullptr);
    model_.Commit(view);
  }

  // Calls that must be refused with nothing changed: checked by the comparison that follows.
  void RefusedCall() {
    const unsigned items = doc_->GetVideoCount();
    const auto expect = [&](CanvaroError code, auto call) {
      const int got = Throws(call);
      if (got != static_cast<int>(code)) {
        refusalProblem_ = "a refused call gave code " + std::to_string(got) + " instead of " +
                          std::to_string(static_cast<int>(code));
      }
    };
    switch (Uniform(0, 6)) {
      case 0:
        expect(CanvaroError::InvalidArgument, [&] { doc_->GetVideo(items + 3); });
        break;
      case 1:
        expect(CanvaroError::InvalidArgument,
               [&] { doc_->GetShapeItemInfo(doc_->GetShapeItemCount(ShapeType::All) + 2, 0); });
        break;
      case 2:
        expect(CanvaroError::InvalidArgument, [&] { doc_->SetShape(ShapeInfo(), nullptr); });
        break;
      case 3: {
        // A mask of another format, or of another size than the picture.
        const bool rgba = Uniform(0, 1) == 0;
        const auto mask = Proc::DataVideoFF::Create(rgba ? Proc::PixFmt::RGBA : Proc::PixFmt::Gray8,
                                                    {kWidth, kHeight + (rgba ? 0 : 1), 1, 1});
        expect(CanvaroError::InvalidArgument, [&] {
          doc_->Add(Settings("refused"), Picture(1), mask, MaskOver({0, 1, 0, 1}));
        });
        break;
      }
      case 4:
        expect(CanvaroError::InvalidArgument, [&] {
          doc_->SetShapes({doc_->GetShapeItems(ShapeType::All).size() > 0
                               ? doc_->GetShapeItems(ShapeType::All)[0]
                               : ShapeInfo(),
                           ShapeInfo()});
        });
        break;
      case 5:
        // Undo at the base step and redo at the last step do nothing.
        if (!doc_->IsUndoEnabled()) doc_->Undo();
        if (!doc_->IsRedoEnabled()) doc_->Redo();
        break;
      default: {
        // An empty rectangle: silently nothing, and the redo steps stay.
        MaskPixels mask = model_.Now().mask;
        Paint(mask, {0, 2, 0, 2}, 3);
        doc_->AddMask(MaskPicture(mask), MaskOver({2, 2, 0, 2}));
        break;
      }
    }
  }

  // The code of the CanvaroException that `call` throws; 0 when it returns.
  template <class Call>
  static int Throws(Call call) {
    try {
      call();
      return 0;
    } catch (const CanvaroException& e) {
      const CanvaroError* code = boost::get_error_info<TagCanvaroErrorCode>(e);
      return code != nullptr ? static_cast<int>(*code) : -1;
    }
  }

  // Remembers a picture the host handed to the document or received from it, with its bytes:
  // the document must never change it.
  void Lend(const Proc::IDataVideoPtr& picture) {
    lent_.emplace_back(picture, ReadMask(picture));
    if (lent_.size() > 8) lent_.pop_front();
  }

  void Undo() {
    if (!doc_->IsUndoEnabled()) return;
    doc_->Undo();
    --model_.cursor;
  }

  void Redo() {
    if (!doc_->IsRedoEnabled()) return;
    doc_->Redo();
    ++model_.cursor;
  }

  // Saves without waiting: the worker writes the swap files while the session goes on.
  Core::Property SaveWhileWorking() {
    Core::Property tree;
    doc_->Serialize(Drevin::SerializerProperty::Create(tree));
    return tree;
  }

  // Saves, waits for the swap files and goes on with a fresh document loaded from the save.
  void SaveAndLoad() {
    const Core::Property tree = SaveWhileWorking();
    doc_->WaitForPendingSaves();
    ICanvaroUndoPtr loaded = NewDocument();
    loaded->Deserialize(Drevin::SerializerProperty::Create(std::as_const(tree)));
    doc_ = loaded;
  }

  // ---- the comparison ----

  testing::AssertionResult Check() const {
    if (!refusalProblem_.empty()) return testing::AssertionFailure() << refusalProblem_;
    for (const auto& [picture, bytes] : lent_) {
      if (ReadMask(picture) != bytes)
        return testing::AssertionFailure() << "the document changed a host's mask picture";
    }
    const std::string expected = Expected(), shown = Shown();
    if (shown == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "expected:\n    " << expected << "\n  the document shows:\n    " << shown;
  }

  // What the model expects the document to show, in the words of Shown().
  std::string Expected() const {
    const View& want = model_.Now();
    std::ostringstream text;
    text << "step " << model_.cursor << " of " << model_.steps.size() << ", item " << want.item
         << " of " << model_.items << ", undo " << (model_.cursor > 0) << ", redo "
         << (model_.cursor + 1 < model_.steps.size()) << ", fill " << unsigned{want.fill}
         << ", package " << want.package << ", mask " << want.maskIndex << ' ' << Digits(want.mask)
         << ", counted "
         << std::count_if(want.mask.begin(), want.mask.end(), [](std::uint8_t p) { return p; });
    for (std::uint8_t brush = 1; brush <= 3; ++brush)
      text << ' ' << std::count(want.mask.begin(), want.mask.end(), brush);
    text << ", shapes";
    for (std::size_t i = 0; i < want.shapes.size(); ++i) {
      if (want.shapes[i].visible) text << ' ' << i << '@' << want.shapes[i].x;
    }
    text << " of " << model_.shapeItems;
    return text.str();
  }

  // The state the document shows: step, item, picture, mask pixels and counts, visible shapes.
  std::string Shown() const {
    const ICanvaroUndo& doc = *doc_;
    const std::string picture = canvaro_test::Pixels(doc.GetVideo(kCurrent));
    const auto fill = static_cast<std::uint8_t>(picture.empty() ? 0 : picture[0]);
    std::ostringstream text;
    text << "step " << doc.GetUndoManager().GetCurrentStep() << " of "
         << doc.GetUndoManager().GetStepCount() << ", item " << doc.GetCurrentIndex() << " of "
         << doc.GetVideoCount() << ", undo " << doc.IsUndoEnabled() << ", redo "
         << doc.IsRedoEnabled() << ", fill "
         << (picture == canvaro_test::Pixels(Picture(fill)) ? std::to_string(fill) : "other")
         << ", package " << doc.GetSettings(kCurrent).GetEffectsSettings().GetPackage().GetName()
         << ", mask " << doc.GetCurrentMaskIndex() << ' ' << Digits(ReadMask(doc.GetMask(kCurrent)))
         << ", counted " << doc.GetMaskPixelCount({});
    for (std::uint8_t brush = 1; brush <= 3; ++brush) text << ' ' << doc.GetMaskPixelCount({brush});
    text << ", shapes";
    for (const ShapeInfo& shape : doc.GetShapeActiveItems(ShapeType::All))
      text << ' ' << shape->GetIndex() << '@' << shape->GetPosition().GetX();
    text << " of " << doc.GetShapeItemCount(ShapeType::All);
    return text.str();
  }

  static std::string Digits(const MaskPixels& mask) {
    std::string digits;
    for (const std::uint8_t p : mask) digits += static_cast<char>('0' + p);
    return digits;
  }

  std::mt19937 random_;
  const canvaro_test::TempDir& dir_;
  int documents_ = 0;
  ICanvaroUndoPtr doc_;
  Model model_;
  unsigned fills_ = 0;
  int count_ = 0;
  std::deque<std::string> history_;
  std::deque<std::pair<Proc::IDataVideoPtr, MaskPixels>> lent_;
  std::string refusalProblem_;
};

unsigned FromEnvironment(const char* name, unsigned fallback) {
  const char* value = std::getenv(name);
  return value != nullptr ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : fallback;
}

TEST(RandomSessionTest, EveryStepShowsWhatTheModelExpects) {
  std::vector<unsigned> seeds = {1, 2};
  if (std::getenv("CANVARO_RANDOM_SEED") != nullptr)
    seeds = {FromEnvironment("CANVARO_RANDOM_SEED", 0)};
  const int operations = static_cast<int>(FromEnvironment("CANVARO_RANDOM_OPERATIONS", 1000));
  for (const unsigned seed : seeds) {
    canvaro_test::TempDir dir;
    RandomSession session(seed, dir);
    ASSERT_TRUE(session.Run(operations))
        << "  seed " << seed << " (CANVARO_RANDOM_SEED=" << seed << ")";
  }
}

}  // namespace
