/// \file
/// The serializer: the one interface through which records are written to and read from a node
/// of a property tree.
///
/// Writers set typed entries on the node; readers return the stored value, or the given default
/// when the key is absent, and throw Core::WrongTypeIsRequested when the key holds another type.
/// A collection is an ordered list of item nodes; WriteObject on a collection appends an item
/// node that holds the object as a child under the item key, AddItem appends an empty item node
/// to write into directly.
///
///   auto list = s->CreateCollection("Items");
///   for (const auto& item : items) list->WriteObject("Item", *item);
///   ...
///   if (auto list = s->GetCollection("Items"))
///     for (std::size_t i = 0; i < list->GetCount(); ++i)
///       list->GetItem(i)->ReadObject("Item", record);
///
/// Serializers are reference-counted views into a tree that the caller owns; they must not
/// outlive it. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kelbra/Drevin/ISerializable.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Drevin {

class ISerializerCollection;
using ISerializerCollectionPtr = boost::intrusive_ptr<ISerializerCollection>;
using ISerializerCollectionConstPtr = boost::intrusive_ptr<const ISerializerCollection>;

class ISerializer : public virtual IRefCountable {
 public:
  /// ---- writing (each replaces an entry of the same key) ----
  virtual void WriteString(const std::string& key, const std::string& value) = 0;
  virtual void WriteInt(const std::string& key, std::int32_t value) = 0;
  virtual void WriteBool(const std::string& key, bool value) = 0;
  virtual void WriteDouble(const std::string& key, double value) = 0;
  /// Makes a child node under `key`, records object.GetClassId() on it and lets the object write
  /// itself into it.
  virtual void WriteObject(const std::string& key, const ISerializableBase& object) = 0;
  /// Makes an empty collection under `key`.
  virtual ISerializerCollectionPtr CreateCollection(const std::string& key) = 0;
  /// A 64-bit integer entry, for counts that do not fit in 32 bits.
  virtual void WriteInt64(const std::string& key, std::int64_t value) = 0;

  /// ---- reading ----
  /// The class identifier recorded on this node.
  virtual const std::string& GetClassId() const = 0;
  /// True when an entry of any type is stored under `key`.
  virtual bool Has(const std::string& key) const = 0;
  virtual std::string ReadString(const std::string& key, const std::string& defaultValue) const = 0;
  virtual std::int32_t ReadInt(const std::string& key, std::int32_t defaultValue) const = 0;
  virtual bool ReadBool(const std::string& key, bool defaultValue) const = 0;
  virtual double ReadDouble(const std::string& key, double defaultValue) const = 0;
  /// Lets `object` read itself from the child node `key`; throws Core::PropertyException when
  /// there is no such child.
  virtual void ReadObject(const std::string& key, ISerializable& object) const = 0;
  /// A reader on the child node `key`; throws Core::PropertyException when there is none.
  virtual ISerializerConstPtr GetChild(const std::string& key) const = 0;
  /// A reader on the collection `key`, or null when there is none.
  virtual ISerializerCollectionConstPtr GetCollection(const std::string& key) const = 0;
  /// Reads a 64-bit integer entry.
  virtual std::int64_t ReadInt64(const std::string& key, std::int64_t defaultValue) const = 0;
};

class ISerializerCollection : public virtual IRefCountable {
 public:
  /// Appends an item node holding `object` as a child under `itemKey`.
  virtual void WriteObject(const std::string& itemKey, const ISerializableBase& object) = 0;
  /// Appends an empty item node and returns a writer on it.
  virtual ISerializerPtr AddItem() = 0;

  virtual std::size_t GetCount() const = 0;
  /// A reader on item `index` (from 0); throws Core::PropertyException when out of range.
  virtual ISerializerConstPtr GetItem(std::size_t index) const = 0;
};

}  // namespace Kelbra::Drevin
