#include "kelbra/Drevin/SerializerProperty.h"

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Drevin {

namespace {

using Core::Property;

// Reads a typed entry, or gives the default when the key is absent.
template <class T>
T ReadOr(const Property& node, const std::string& key, Property::Type type, T defaultValue) {
  const Property::Entry* entry = node.Find(key);
  if (entry == nullptr) return defaultValue;
  if (entry->type() != type) {
    throw Core::WrongTypeIsRequested(key, Property::TypeName(entry->type()),
                                     Property::TypeName(type));
  }
  return std::get<T>(entry->value);
}

class NodeSerializer final : public RefCounted<ISerializer> {
 public:
  // `node` is written only through the non-const interface, which Create(const Property&) never
  // hands out.
  explicit NodeSerializer(const Property& node) : node_(const_cast<Property&>(node)) {}

  void WriteString(const std::string& key, const std::string& value) override {
    node_.SetString(key, value);
  }
  void WriteInt(const std::string& key, std::int32_t value) override { node_.SetInt(key, value); }
  void WriteBool(const std::string& key, bool value) override { node_.SetBool(key, value); }
  void WriteDouble(const std::string& key, double value) override {
    node_.SetDouble(key, value);
  }
  void WriteObject(const std::string& key, const ISerializableBase& object) override {
    WriteObjectInto(node_.AddChild(key), object);
  }
  ISerializerCollectionPtr CreateCollection(const std::string& key) override;
  void WriteInt64(const std::string& key, std::int64_t value) override {
    node_.SetInt64(key, value);
  }

  const std::string& GetClassId() const override { return node_.GetClassId(); }
  bool Has(const std::string& key) const override { return node_.Has(key); }
  std::string ReadString(const std::string& key, const std::string& defaultValue) const override {
    return ReadOr<std::string>(node_, key, Property::Type::String, defaultValue);
  }
  std::int32_t ReadInt(const std::string& key, std::int32_t defaultValue) const override {
    return ReadOr<std::int32_t>(node_, key, Property::Type::Int, defaultValue);
  }
  bool ReadBool(const std::string& key, bool defaultValue) const override {
    return ReadOr<bool>(node_, key, Property::Type::Bool, defaultValue);
  }
  double ReadDouble(const std::string& key, double defaultValue) const override {
    return ReadOr<double>(node_, key, Property::Type::Double, defaultValue);
  }
  void ReadObject(const std::string& key, ISerializable& object) const override {
    object.Deserialize(GetChild(key));
  }
  ISerializerConstPtr GetChild(const std::string& key) const override {
    return SerializerProperty::Create(std::as_const(node_).GetChild(key));
  }
  ISerializerCollectionConstPtr GetCollection(const std::string& key) const override;
  std::int64_t ReadInt64(const std::string& key, std::int64_t defaultValue) const override {
    return ReadOr<std::int64_t>(node_, key, Property::Type::Int64, defaultValue);
  }

  static void WriteObjectInto(Property& child, const ISerializableBase& object) {
    child.SetClassId(object.GetClassId());
    object.Serialize(SerializerProperty::Create(child));
  }

 private:
  Property& node_;
};

class CollectionSerializer final : public RefCounted<ISerializerCollection> {
 public:
  explicit CollectionSerializer(const Property::Collection& items)
      : items_(const_cast<Property::Collection&>(items)) {}

  void WriteObject(const std::string& itemKey, const ISerializableBase& object) override {
    NodeSerializer::WriteObjectInto(items_.emplace_back().AddChild(itemKey), object);
  }
  ISerializerPtr AddItem() override { return SerializerProperty::Create(items_.emplace_back()); }

  std::size_t GetCount() const override { return items_.size(); }
  ISerializerConstPtr GetItem(std::size_t index) const override {
    return SerializerProperty::Create(std::as_const(items_).at(index));
  }

 private:
  Property::Collection& items_;
};

ISerializerCollectionPtr NodeSerializer::CreateCollection(const std::string& key) {
  return ISerializerCollectionPtr(new CollectionSerializer(node_.AddCollection(key)));
}

ISerializerCollectionConstPtr NodeSerializer::GetCollection(const std::string& key) const {
  const Property::Entry* entry = node_.Find(key);
  if (entry == nullptr) return nullptr;
  if (entry->type() != Property::Type::Collection) {
    throw Core::WrongTypeIsRequested(key, Property::TypeName(entry->type()),
                                     Property::TypeName(Property::Type::Collection));
  }
  return ISerializerCollectionConstPtr(
      new CollectionSerializer(std::get<Property::Collection>(entry->value)));
}

}  // namespace

ISerializerPtr SerializerProperty::Create(Core::Property& node) {
  return ISerializerPtr(new NodeSerializer(node));
}

ISerializerConstPtr SerializerProperty::Create(const Core::Property& node) {
  return ISerializerConstPtr(new NodeSerializer(node));
}

}  // namespace Kelbra::Drevin
