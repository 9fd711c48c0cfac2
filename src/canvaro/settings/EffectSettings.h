/// \file
/// One image effect's settings: its kind, implementation name and parameters.
///
/// The library knows no concrete effect. It keeps effect objects in undo steps and copies, clones,
/// compares, finds and serializes them through IEffectSettings; the host writes the concrete
/// effects by deriving from EffectSettings, which supplies the reference count and the
/// implementation name:
///
///   class Blur : public EffectSettings {
///     IEffectSettings::Ptr Clone() const override { return new Blur(*this); }
///     const Proc::Settings& GetSettings() const override { return parameters_; }
///     bool IsEqual(const IEffectSettings& other) const override { ... }
///     void Serialize(const Drevin::ISerializerPtr& s) const override {
///       EffectSettings::Serialize(s);  // "implName" first
///       s->WriteDouble("radius", parameters_.radius);
///     }
///     ...
///   };
///
/// Lists of effects are vectors of intrusive pointers in the order in which the effects apply; the
/// order counts for equality. The static utilities share (CopyList, ToConstList) or clone
/// (CloneList) the objects, find an effect by the type name of its parameter object (Find) and
/// compare (Equals, Equal). A list is written as the collection "keyEffectsCollection" with one
/// item "keyEffectItem" per effect, recorded with the effect's class identifier (GetClassId()).
/// Reading a list back needs the host's creator for each identifier, registered once at start-up;
/// without one, CreateEffectSettings throws CanvaroException "Not implemented":
///
///   IEffectSettings::RegisterEffectCreator("Blur", [] { return IEffectSettings::Ptr(new Blur); });
///
/// Effects are reference-counted (atomically); an effect object itself is not thread-safe. The
/// utilities tolerate null elements where noted; the library itself never puts one in a list
/// except through SettingsCore's sharing constructor given a null effect.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <boost/intrusive_ptr.hpp>

#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/Proc/Settings.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class IEffectSettings : public virtual IRefCountable, public virtual Drevin::ISerializable {
 public:
  using Ptr = boost::intrusive_ptr<IEffectSettings>;
  using ConstPtr = boost::intrusive_ptr<const IEffectSettings>;
  /// A list of effects that may be changed through the list.
  using List = std::vector<Ptr>;
  /// A list of effects that are only read.
  using ConstList = std::vector<ConstPtr>;

  static const std::string EFFECTS;    // "keyEffectsCollection": the collection of a list
  static const std::string EFFECT;     // "keyEffectItem": the item key of each effect in it
  static const std::string IMPL_NAME;  // "implName": an effect's implementation name

  ~IEffectSettings() override = default;

  /// A new, independent effect with equal parameters (IsEqual holds between the two).
  virtual Ptr Clone() const = 0;
  /// The implementation the effect was made with; Proc::ImplNames::DEFAULT unless set.
  virtual const std::string& GetImplName() const = 0;
  /// The effect's parameter object. Its type name identifies the kind of effect (see Find).
  virtual const Proc::Settings& GetSettings() const = 0;

  // A host's effect interface also carries the operations its renderer and user interface need;
  // the library calls none of them, so they are left to the host's classes derived from this one.

  /// Whether the effect adds to the result of the previous ones rather than replacing it.
  virtual bool IsAdditive() const = 0;
  /// True when `other` describes the same effect with the same parameters.
  virtual bool IsEqual(const IEffectSettings& other) const = 0;

  /// Makes a new, default effect of one class; the saved list then reads its entries into it.
  using Creator = std::function<Ptr()>;

  /// Makes an effect by class identifier for reading saved lists, with the creator the host
  /// registered for `name`. Without one, throws CanvaroException with the description
  /// "Not implemented" and no error code; a creator that returns null gives
  /// CanvaroError::InvalidState; the creator's own exceptions pass through.
  static Ptr CreateEffectSettings(const std::string& name);

  /// Registers `creator` for effects of class identifier `name` (what the effect's GetClassId()
  /// returns, recorded with each saved effect), replacing an earlier creator of that name.
  /// Process-wide and thread-safe: register before loading documents, from any thread. Throws
  /// CanvaroError::InvalidArgument for an empty name or creator.
  static void RegisterEffectCreator(const std::string& name, Creator creator);
  /// Removes the creator of `name`; false when none was registered.
  static bool UnregisterEffectCreator(const std::string& name);

  /// A const list that shares the objects of `list`, in order.
  static ConstList ToConstList(const List& list);

  /// The first element (scanning from the front) whose parameter object reports the type name
  /// `name` (exact, case-sensitive); null when none does. Effects are found by the kind of their
  /// parameters, not by implementation name. Null elements are skipped.
  static Ptr Find(const List& list, const std::string& name);
  static ConstPtr Find(const ConstList& list, const std::string& name);

  /// True when both are the same pointer (also both null), false when exactly one is null,
  /// otherwise a->IsEqual(*b).
  static bool Equals(const ConstPtr& a, const ConstPtr& b);
  /// True when both lists have the same length and Equals holds at every position. Order counts;
  /// two empty lists are equal.
  static bool Equal(const ConstList& a, const ConstList& b);
};

/// The base of concrete effects: the reference count and the implementation name. Concrete
/// effects implement Clone, GetSettings and IsEqual, and extend Serialize and Deserialize, calling
/// these first.
class EffectSettings : public virtual IEffectSettings {
 public:
  void AddRef() const override;
  /// Deletes the effect when the last reference goes.
  void Release() const override;
  long GetRefCount() const override;

  const std::string& GetImplName() const override;
  /// False: an effect replaces the picture unless a host effect says otherwise.
  bool IsAdditive() const override;

  /// Writes "implName".
  void Serialize(const Drevin::ISerializerPtr& serializer) const override;
  /// Reads "implName", keeping the current name when it is absent.
  void Deserialize(const Drevin::ISerializerConstPtr& serializer) override;

  /// Writes `list` as the collection `listKey`, one item "keyEffectItem" per effect, in order.
  /// Null elements are not written.
  static void Serialize(const Drevin::ISerializerPtr& serializer, const std::string& listKey,
                        const List& list);
  /// Empties `list`, then reads the collection `listKey` into it; an absent or empty collection
  /// leaves it empty. Each item is made by CreateEffectSettings from its class identifier, so a
  /// collection with items throws CanvaroException "Not implemented" and leaves `list` empty.
  /// Serializer failures (a wrong type under `listKey`) propagate.
  static void Deserialize(const Drevin::ISerializerConstPtr& serializer, const std::string& listKey,
                          List& list);

  /// Appends the elements of `source` to `destination`, in order, sharing the objects (nothing is
  /// cloned; `destination` is not emptied first). Typically mutable to const.
  template <class From, class To>
  static void CopyList(const std::vector<boost::intrusive_ptr<From>>& source,
                       std::vector<boost::intrusive_ptr<To>>& destination);

  /// Empties `destination`, then appends a Clone() of each element of `source`, in order (a null
  /// element stays null). A failing Clone propagates; the clones made before it stay in
  /// `destination`. `source` and `destination` may be the same list.
  template <class From, class To>
  static void CloneList(const std::vector<boost::intrusive_ptr<From>>& source,
                        std::vector<boost::intrusive_ptr<To>>& destination);

 protected:
  /// Implementation name Proc::ImplNames::DEFAULT.
  EffectSettings();
  explicit EffectSettings(std::string implName);
  /// A copy has the same implementation name and a reference count of its own.
  EffectSettings(const EffectSettings& other) = default;
  EffectSettings& operator=(const EffectSettings& other) = default;
  ~EffectSettings() override;

 private:
  RefCountImpl refCount_;
  std::string implName_;
};

template <class From, class To>
void EffectSettings::CopyList(const std::vector<boost::intrusive_ptr<From>>& source,
                              std::vector<boost::intrusive_ptr<To>>& destination) {
  destination.reserve(destination.size() + source.size());
  for (std::size_t i = 0, count = source.size(); i < count; ++i) {
    destination.emplace_back(source[i]);
  }
}

template <class From, class To>
void EffectSettings::CloneList(const std::vector<boost::intrusive_ptr<From>>& source,
                               std::vector<boost::intrusive_ptr<To>>& destination) {
  if (static_cast<const void*>(&source) == static_cast<const void*>(&destination)) {
    const std::vector<boost::intrusive_ptr<From>> original(source);
    CloneList(original, destination);
    return;
  }
  destination.clear();
  destination.reserve(source.size());
  for (const auto& element : source) {
    destination.emplace_back(element ? element->Clone() : nullptr);
  }
}

}  // namespace Kelbra::Canvaro
