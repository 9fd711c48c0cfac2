/// \file
/// ShapeInfoBase: the abstract, reference-counted record of one annotation shape, and the
/// registry of shape kinds.
///
/// A record is the bookkeeping (InfoTypeBase), the shape's current tool (ToolsId), its position
/// (PositionType) and the kind's rendering parameters (IRenderingType, a member of the concrete
/// kind reached through RenderingSettings()). Records are held by boost::intrusive_ptr and,
/// once placed in a shape history, never changed: edits work on a Clone().
///
///   ShapeInfoBasePtr shape = ShapeInfoBase::GetCreatorItem("LineInfo")->create(IToolsId::NONE);
///   auto moved = shape->Clone();
///   moved->GetPosition().SetX(0.25);
///
/// A concrete kind derives from ShapeInfoBase, owns a rendering type, implements the pure
/// operations and a static Create(tool) for the registry. ToolsId is a virtual base, so a kind's
/// constructor names it too:
///
///   MyKind(IToolsId::Value tool) : ToolsId(IToolsId::NONE), ShapeInfoBase(tool) {}
///
/// The kind registry is a process-wide table of (ShapeType, class id, creator) rows, scanned
/// front to back. It is made on first use from the library's own kinds (listed, in lookup order,
/// by detail::BuiltInShapeKinds() in ShapeKindList.cpp); RegisterKind appends further kinds after
/// them (a host's or a test's).
///
/// Threads: a record is not guarded; share it between threads only while nobody changes it.
/// The registry is guarded and may be used from any thread.
#pragma once

#include <string>

#include <boost/intrusive_ptr.hpp>

#include "canvaro/foundation/ToolsId.h"
#include "canvaro/shapes/IRenderingType.h"
#include "canvaro/shapes/InfoTypeBase.h"
#include "canvaro/shapes/PositionType.h"
#include "canvaro/shapes/ShapeType.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class ShapeInfoBase;
using ShapeInfoBasePtr = boost::intrusive_ptr<ShapeInfoBase>;
using ShapeInfoBaseConstPtr = boost::intrusive_ptr<const ShapeInfoBase>;

class ShapeInfoBase : public virtual IRefCountable, public virtual ToolsId, public InfoTypeBase {
 public:
  /// Makes a new record of one kind, made with `tool`.
  using Creator = ShapeInfoBasePtr (*)(IToolsId::Value tool);

  /// One row of the kind registry.
  struct CreatorItem {
    ShapeType type;
    std::string classId;
    Creator create;
  };

  /// The current tool is NONE, the bookkeeping has its defaults with `tool` as its tool, and the
  /// position is the centre, unturned, default.
  explicit ShapeInfoBase(IToolsId::Value tool);

  /// Same kind, same bookkeeping and same position. Kinds add their rendering parameters.
  virtual bool operator==(const ShapeInfoBase& other) const;
  bool operator!=(const ShapeInfoBase& other) const { return !(*this == other); }

  virtual ShapeType GetShapeType() const = 0;
  /// A new record equal to this one, with its own reference count.
  virtual ShapeInfoBasePtr Clone() const = 0;
  virtual const IRenderingType& RenderingSettings() const = 0;
  virtual IRenderingType& RenderingSettings() = 0;
  /// True when this state of the shape is the one on disk.
  virtual bool IsSaved() const = 0;
  /// Makes this the removed state of the shape (hidden, unsaved; the tool cleared when
  /// `resetTool` is true).
  virtual void Remove(bool resetTool) = 0;
  /// The position (is-default kept) and then the bookkeeping back to their defaults.
  virtual void Reset();

  /// Follows a quarter-turn rotation of a picture of size `frame`: the position, then the
  /// rendering parameters.
  void Transpose(const Conf::FrameInfo& frame, const Proc::SettingsEffectTranspose& transpose);
  /// Follows a change of the picture's size; the kind moves the position if it wants to.
  void Resize(const Conf::FrameInfo& from, const Conf::FrameInfo& to);
  /// Follows a crop of a picture of size `frame` to `roi`: the position, then the rendering.
  void Crop(const Conf::FrameInfo& frame, const ROI& roi);

  const PositionType& GetPosition() const { return position_; }
  PositionType& GetPosition() { return position_; }

  /// The InfoTypeBase keys, then "ToolName", then the PositionType keys, all in this node. Kinds
  /// add their rendering keys after calling this.
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads the same keys in the same order; absent keys leave their fields as they are.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;
  /// The class id of the registry row of GetShapeType().
  std::string GetClassId() const override;

  void AddRef() const override { refCount_.AddRef(); }
  void Release() const override;
  long GetRefCount() const override { return refCount_.GetRefCount(); }

  /// The first registry row with exactly this class id (case-sensitive); null when there is none.
  static const CreatorItem* GetCreatorItem(const std::string& classId);
  /// The first registry row of this kind; null when there is none.
  static const CreatorItem* GetCreatorItem(ShapeType type);
  /// Appends a row after every existing one. A row whose class id is already registered is not
  /// added (the first one would win the lookups anyway); returns whether it was added. Rows are
  /// never removed, so the pointers handed out stay valid for the life of the process.
  static bool RegisterKind(const CreatorItem& row);

 protected:
  ShapeInfoBase(const ShapeInfoBase&) = default;
  ShapeInfoBase& operator=(const ShapeInfoBase&) = default;
  ~ShapeInfoBase() override;

 private:
  PositionType position_;
  RefCountImpl refCount_;
};

}  // namespace Kelbra::Canvaro
