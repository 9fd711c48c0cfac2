/// \file
/// The interface of every persistable record.
///
/// A record writes itself into a serializer (one node of a property tree) and reads itself back
/// from a const serializer on the same kind of node:
///
///   void MyRecord::Serialize(const ISerializerPtr& s) const { s->WriteInt("Count", count_); }
///   void MyRecord::Deserialize(const ISerializerConstPtr& s) {
///     count_ = s->ReadInt("Count", count_);
///   }
///
/// Records derive from ISerializable virtually, so a record made of several serializable parts
/// has a single serializable identity. ISerializableBase is the write-only root, for code that
/// only renders records.
#pragma once

#include <string>

#include <boost/intrusive_ptr.hpp>

namespace Kelbra::Drevin {

class ISerializer;
using ISerializerPtr = boost::intrusive_ptr<ISerializer>;
using ISerializerConstPtr = boost::intrusive_ptr<const ISerializer>;

class ISerializableBase {
 public:
  virtual ~ISerializableBase() = default;

  /// Writes this record's entries into `serializer`'s node.
  virtual void Serialize(const ISerializerPtr& serializer) const = 0;

  /// The class identifier stored with the record when it is written as a child object. The
  /// default is the record's C++ class name without namespaces; records whose identifier is part
  /// of a file format override it with a fixed string.
  virtual std::string GetClassId() const;
};

class ISerializable : public virtual ISerializableBase {
 public:
  /// Reads this record back from `serializer`'s node.
  virtual void Deserialize(const ISerializerConstPtr& serializer) = 0;
};

}  // namespace Kelbra::Drevin
