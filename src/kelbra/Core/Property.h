/// \file
/// Core::Property: an ordered tree of typed entries, the platform's in-memory form of every saved
/// record.
///
/// A Property is one node: a class identifier and an ordered list of named entries. An entry keeps
/// the type it was written with: string (any bytes), 32-bit integer, 64-bit integer, boolean,
/// double, child node, or collection (an ordered list of child nodes). Entries stay in the order
/// in which they were first written; writing an existing key replaces its value in place.
///
///   Core::Property root;
///   root.SetInt("Index", 3);
///   Core::Property& child = root.AddChild("Info");
///   child.SetClassId("SettingsCore");
///   root.AddCollection("Items").emplace_back();          // one empty item node
///   int index = root.GetInt("Index");                      // 3
///   root.GetDouble("Index");                               // throws WrongTypeIsRequested
///
/// Child nodes live on the heap, so references to them stay valid while entries are added to
/// their parent; replacing or removing an entry invalidates references into it.
/// Not thread-safe: one thread at a time per tree.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Kelbra::Core {

class Property {
 public:
  enum class Type { String, Int, Int64, Bool, Double, Node, Collection };

  /// An ordered list of child nodes.
  class Collection {
   public:
    Collection() = default;
    Collection(const Collection& other);
    Collection& operator=(const Collection& other);
    Collection(Collection&&) noexcept = default;
    Collection& operator=(Collection&&) noexcept = default;

    std::size_t size() const noexcept { return items_.size(); }
    bool empty() const noexcept { return items_.empty(); }
    /// Appends a new empty node and returns it.
    Property& emplace_back();
    Property& operator[](std::size_t index) { return *items_[index]; }
    const Property& operator[](std::size_t index) const { return *items_[index]; }
    Property& at(std::size_t index);
    const Property& at(std::size_t index) const;

    friend bool operator==(const Collection& left, const Collection& right);

   private:
    std::vector<std::unique_ptr<Property>> items_;
  };

  using Value = std::variant<std::string, std::int32_t, std::int64_t, bool, double,
                             std::unique_ptr<Property>, Collection>;

  struct Entry {
    std::string key;
    Value value;
    Type type() const noexcept { return static_cast<Type>(value.index()); }
  };

  Property() = default;
  explicit Property(std::string classId) : classId_(std::move(classId)) {}
  Property(const Property& other);
  Property& operator=(const Property& other);
  Property(Property&&) noexcept = default;
  Property& operator=(Property&&) noexcept = default;
  ~Property();

  const std::string& GetClassId() const noexcept { return classId_; }
  void SetClassId(std::string classId) { classId_ = std::move(classId); }

  /// Writers: set the entry `key`, replacing any value (of any type) it had.
  void SetString(std::string_view key, std::string value);
  void SetInt(std::string_view key, std::int32_t value);
  void SetInt64(std::string_view key, std::int64_t value);
  void SetBool(std::string_view key, bool value);
  void SetDouble(std::string_view key, double value);
  /// Sets `key` to a new empty child node and returns it.
  Property& AddChild(std::string_view key);
  /// Sets `key` to a new empty collection and returns it.
  Collection& AddCollection(std::string_view key);

  bool Has(std::string_view key) const noexcept { return Find(key) != nullptr; }
  /// The entry under `key`, or null.
  const Entry* Find(std::string_view key) const noexcept;
  Entry* Find(std::string_view key) noexcept;
  /// Removes `key`; returns whether it was there.
  bool Remove(std::string_view key);

  /// Typed readers. They throw PropertyException when `key` is absent and WrongTypeIsRequested
  /// when it holds another type.
  const std::string& GetString(std::string_view key) const;
  std::int32_t GetInt(std::string_view key) const;
  std::int64_t GetInt64(std::string_view key) const;
  bool GetBool(std::string_view key) const;
  double GetDouble(std::string_view key) const;
  const Property& GetChild(std::string_view key) const;
  Property& GetChild(std::string_view key);
  const Collection& GetCollection(std::string_view key) const;

  const std::vector<Entry>& Entries() const noexcept { return entries_; }
  /// The entries in order, for walks that edit values in place (keys and order stay the caller's
  /// responsibility).
  std::vector<Entry>& Entries() noexcept { return entries_; }
  bool empty() const noexcept { return entries_.empty() && classId_.empty(); }

  /// Structural equality: same class id, same keys in the same order with the same types and
  /// values. Doubles compare by bit pattern, so NaN equals the same NaN and 0.0 differs from -0.0.
  friend bool operator==(const Property& left, const Property& right);

  /// The name of a type as messages print it ("string", "int", "int64", ...).
  static const char* TypeName(Type type) noexcept;

 private:
  template <class T>
  const T& GetTyped(std::string_view key, Type type) const;
  Value& Slot(std::string_view key);

  std::string classId_;
  std::vector<Entry> entries_;
};

}  // namespace Kelbra::Core
