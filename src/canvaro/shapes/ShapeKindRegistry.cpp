// The kind registry of ShapeInfoBase.
#include <list>
#include <mutex>

#include "canvaro/shapes/ShapeInfoBase.h"
#include "canvaro/shapes/ShapeKindList.h"

namespace Kelbra::Canvaro {

namespace {

class KindRegistry {
 public:
  KindRegistry() {
    for (const auto& row : detail::BuiltInShapeKinds()) Add(row);
  }

  template <class Match>
  const ShapeInfoBase::CreatorItem* Find(Match match) {
    std::lock_guard lock(mutex_);
    for (const auto& row : rows_) {
      if (match(row)) return &row;
    }
    return nullptr;
  }

  bool Add(const ShapeInfoBase::CreatorItem& row) {
    std::lock_guard lock(mutex_);
    for (const auto& existing : rows_) {
      if (existing.classId == row.classId) return false;
    }
    rows_.push_back(row);
    return true;
  }

 private:
  std::mutex mutex_;
  // A list, so that rows handed out stay where they are while others are appended.
  std::list<ShapeInfoBase::CreatorItem> rows_;
};

KindRegistry& Registry() {
  static KindRegistry registry;
  return registry;
}

}  // namespace

const ShapeInfoBase::CreatorItem* ShapeInfoBase::GetCreatorItem(const std::string& classId) {
  return Registry().Find([&](const CreatorItem& row) { return row.classId == classId; });
}

const ShapeInfoBase::CreatorItem* ShapeInfoBase::GetCreatorItem(ShapeType type) {
  return Registry().Find([&](const CreatorItem& row) { return row.type == type; });
}

bool ShapeInfoBase::RegisterKind(const CreatorItem& row) { return Registry().Add(row); }

}  // namespace Kelbra::Canvaro
