#include "canvaro/settings/EffectSettings.h"

#include <utility>

#include "canvaro/foundation/CreatorRegistry.h"
#include "kelbra/Proc/ImplNames.h"

namespace Kelbra::Canvaro {

const std::string IEffectSettings::EFFECTS = "keyEffectsCollection";
const std::string IEffectSettings::EFFECT = "keyEffectItem";
const std::string IEffectSettings::IMPL_NAME = "implName";

namespace {

template <class List>
typename List::value_type FindByTypeName(const List& list, const std::string& name) {
  for (const auto& element : list) {
    if (element && element->GetSettings().GetTypeName() == name) return element;
  }
  return nullptr;
}

CreatorRegistry<IEffectSettings::Ptr>& Effects() {
  static CreatorRegistry<IEffectSettings::Ptr> registry;
  return registry;
}

}  // namespace

IEffectSettings::Ptr IEffectSettings::CreateEffectSettings(const std::string& name) {
  return Effects().Make(name);
}

void IEffectSettings::RegisterEffectCreator(const std::string& name, Creator creator) {
  Effects().Register(name, std::move(creator));
}

bool IEffectSettings::UnregisterEffectCreator(const std::string& name) {
  return Effects().Unregister(name);
}

IEffectSettings::ConstList IEffectSettings::ToConstList(const List& list) {
  ConstList result;
  EffectSettings::CopyList(list, result);
  return result;
}

IEffectSettings::Ptr IEffectSettings::Find(const List& list, const std::string& name) {
  return FindByTypeName(list, name);
}

IEffectSettings::ConstPtr IEffectSettings::Find(const ConstList& list, const std::string& name) {
  return FindByTypeName(list, name);
}

bool IEffectSettings::Equals(const ConstPtr& a, const ConstPtr& b) {
  if (a == b) return true;
  if (!a || !b) return false;
  return a->IsEqual(*b);
}

bool IEffectSettings::Equal(const ConstList& a, const ConstList& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!Equals(a[i], b[i])) return false;
  }
  return true;
}

EffectSettings::EffectSettings() : implName_(Proc::ImplNames::DEFAULT) {}

EffectSettings::EffectSettings(std::string implName) : implName_(std::move(implName)) {}

EffectSettings::~EffectSettings() = default;

void EffectSettings::AddRef() const { refCount_.AddRef(); }

void EffectSettings::Release() const {
  if (refCount_.Release() == 0) delete this;
}

long EffectSettings::GetRefCount() const { return refCount_.GetRefCount(); }

const std::string& EffectSettings::GetImplName() const { return implName_; }

bool EffectSettings::IsAdditive() const { return false; }

void EffectSettings::Serialize(const Drevin::ISerializerPtr& serializer) const {
  serializer->WriteString(IMPL_NAME, implName_);
}

void EffectSettings::Deserialize(const Drevin::ISerializerConstPtr& serializer) {
  implName_ = serializer->ReadString(IMPL_NAME, implName_);
}

void EffectSettings::Serialize(const Drevin::ISerializerPtr& serializer, const std::string& listKey,
                               const List& list) {
  const Drevin::ISerializerCollectionPtr collection = serializer->CreateCollection(listKey);
  for (const auto& element : list) {
    // A null element keeps its place as an item without an effect, so that the list reloads
    // with the same length and order.
    if (element) {
      collection->WriteObject(EFFECT, *element);
    } else {
      collection->AddItem();
    }
  }
}

void EffectSettings::Deserialize(const Drevin::ISerializerConstPtr& serializer,
                                 const std::string& listKey, List& list) {
  list.clear();
  const Drevin::ISerializerCollectionConstPtr collection = serializer->GetCollection(listKey);
  if (!collection) return;
  // Read into a separate list so that a failure part-way leaves `list` empty, not half filled.
  List loaded;
  for (std::size_t i = 0, count = collection->GetCount(); i < count; ++i) {
    const Drevin::ISerializerConstPtr entry = collection->GetItem(i);
    if (!entry->Has(EFFECT)) {
      loaded.push_back(nullptr);
      continue;
    }
    const Drevin::ISerializerConstPtr item = entry->GetChild(EFFECT);
    Ptr effect = CreateEffectSettings(item->GetClassId());
    effect->Deserialize(item);
    loaded.push_back(std::move(effect));
  }
  list = std::move(loaded);
}

}  // namespace Kelbra::Canvaro
