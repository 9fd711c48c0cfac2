#include "kelbra/Core/Property.h"

#include <bit>

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Core {

namespace {

Property::Value CopyValue(const Property::Value& value) {
  return std::visit(
      [](const auto& v) -> Property::Value {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::unique_ptr<Property>>) {
          return std::make_unique<Property>(*v);
        } else {
          return v;
        }
      },
      value);
}

bool ValuesEqual(const Property::Value& left, const Property::Value& right) {
  if (left.index() != right.index()) return false;
  return std::visit(
      [&right](const auto& l) -> bool {
        using T = std::decay_t<decltype(l)>;
        const T& r = std::get<T>(right);
        if constexpr (std::is_same_v<T, std::unique_ptr<Property>>) {
          return *l == *r;
        } else if constexpr (std::is_same_v<T, double>) {
          return std::bit_cast<std::uint64_t>(l) == std::bit_cast<std::uint64_t>(r);
        } else {
          return l == r;
        }
      },
      left);
}

}  // namespace

Property::Collection::Collection(const Collection& other) {
  items_.reserve(other.items_.size());
  for (const auto& item : other.items_) items_.push_back(std::make_unique<Property>(*item));
}

Property::Collection& Property::Collection::operator=(const Collection& other) {
  if (this != &other) *this = Collection(other);
  return *this;
}

Property& Property::Collection::emplace_back() {
  items_.push_back(std::make_unique<Property>());
  return *items_.back();
}

Property& Property::Collection::at(std::size_t index) {
  if (index >= items_.size()) {
    throw PropertyException("Collection item " + std::to_string(index) + " is out of range (" +
                            std::to_string(items_.size()) + " items)");
  }
  return *items_[index];
}

const Property& Property::Collection::at(std::size_t index) const {
  return const_cast<Collection*>(this)->at(index);
}

bool operator==(const Property::Collection& left, const Property::Collection& right) {
  if (left.items_.size() != right.items_.size()) return false;
  for (std::size_t i = 0; i < left.items_.size(); ++i) {
    if (!(*left.items_[i] == *right.items_[i])) return false;
  }
  return true;
}

Property::Property(const Property& other) : classId_(other.classId_) {
  entries_.reserve(other.entries_.size());
  for (const Entry& entry : other.entries_) {
    entries_.push_back(Entry{entry.key, CopyValue(entry.value)});
  }
}

Property& Property::operator=(const Property& other) {
  if (this != &other) *this = Property(other);
  return *this;
}

Property::~Property() = default;

const Property::Entry* Property::Find(std::string_view key) const noexcept {
  for (const Entry& entry : entries_) {
    if (entry.key == key) return &entry;
  }
  return nullptr;
}

Property::Entry* Property::Find(std::string_view key) noexcept {
  return const_cast<Entry*>(static_cast<const Property*>(this)->Find(key));
}

bool Property::Remove(std::string_view key) {
  for (auto it = entries_.begin(); it != entries_.end(); ++it) {
    if (it->key == key) {
      entries_.erase(it);
      return true;
    }
  }
  return false;
}

Property::Value& Property::Slot(std::string_view key) {
  if (Entry* entry = Find(key)) return entry->value;
  entries_.push_back(Entry{std::string(key), {}});
  return entries_.back().value;
}

void Property::SetString(std::string_view key, std::string value) {
  Slot(key) = std::move(value);
}
void Property::SetInt(std::string_view key, std::int32_t value) { Slot(key) = value; }
void Property::SetInt64(std::string_view key, std::int64_t value) { Slot(key) = value; }
void Property::SetBool(std::string_view key, bool value) { Slot(key) = value; }
void Property::SetDouble(std::string_view key, double value) { Slot(key) = value; }

Property& Property::AddChild(std::string_view key) {
  Value& slot = Slot(key);
  slot = std::make_unique<Property>();
  return *std::get<std::unique_ptr<Property>>(slot);
}

Property::Collection& Property::AddCollection(std::string_view key) {
  Value& slot = Slot(key);
  slot = Collection();
  return std::get<Collection>(slot);
}

template <class T>
const T& Property::GetTyped(std::string_view key, Type type) const {
  const Entry* entry = Find(key);
  if (entry == nullptr) {
    throw PropertyException("Property '" + std::string(key) + "' does not exist");
  }
  if (entry->type() != type) {
    throw WrongTypeIsRequested(std::string(key), TypeName(entry->type()), TypeName(type));
  }
  return std::get<T>(entry->value);
}

const std::string& Property::GetString(std::string_view key) const {
  return GetTyped<std::string>(key, Type::String);
}
std::int32_t Property::GetInt(std::string_view key) const {
  return GetTyped<std::int32_t>(key, Type::Int);
}
std::int64_t Property::GetInt64(std::string_view key) const {
  return GetTyped<std::int64_t>(key, Type::Int64);
}
bool Property::GetBool(std::string_view key) const { return GetTyped<bool>(key, Type::Bool); }
double Property::GetDouble(std::string_view key) const {
  return GetTyped<double>(key, Type::Double);
}
const Property& Property::GetChild(std::string_view key) const {
  return *GetTyped<std::unique_ptr<Property>>(key, Type::Node);
}
Property& Property::GetChild(std::string_view key) {
  return *GetTyped<std::unique_ptr<Property>>(key, Type::Node);
}
const Property::Collection& Property::GetCollection(std::string_view key) const {
  return GetTyped<Collection>(key, Type::Collection);
}

bool operator==(const Property& left, const Property& right) {
  if (left.classId_ != right.classId_ || left.entries_.size() != right.entries_.size()) {
    return false;
  }
  for (std::size_t i = 0; i < left.entries_.size(); ++i) {
    const auto& l = left.entries_[i];
    const auto& r = right.entries_[i];
    if (l.key != r.key || !ValuesEqual(l.value, r.value)) return false;
  }
  return true;
}

const char* Property::TypeName(Type type) noexcept {
  switch (type) {
    case Type::String: return "string";
    case Type::Int: return "int";
    case Type::Int64: return "int64";
    case Type::Bool: return "bool";
    case Type::Double: return "double";
    case Type::Node: return "node";
    case Type::Collection: return "collection";
  }
  return "unknown";
}

}  // namespace Kelbra::Core
