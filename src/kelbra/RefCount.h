/// \file
/// Intrusive reference counting for objects that cross the library boundary.
///
/// Every counted object derives (virtually) from IRefCountable and is held by
/// boost::intrusive_ptr; the hooks below make intrusive_ptr work with any such class, const or not.
/// RefCountImpl is the thread-safe counter that implementations embed; RefCounted<Base> is a mixin
/// that implements the three operations of IRefCountable on top of it and deletes the object when
/// the last reference goes:
///
///   class Picture : public Kelbra::RefCounted<IPicture> { ... };
///   boost::intrusive_ptr<IPicture> p(new Picture);   // count 1; deleted when p goes
///
/// Counting is atomic, so references may be taken and dropped on any thread; the object itself is
/// not made thread-safe by this.
#pragma once

#include <atomic>
#include <cassert>
#include <cstdint>

#include <boost/intrusive_ptr.hpp>

namespace Kelbra {

/// Position of a picture in a frame store; kNoIndex means "no frame".
using Index = std::uint32_t;
inline constexpr Index kNoIndex = 0xFFFFFFFFu;

class IRefCountable {
 public:
  /// Takes one more reference.
  virtual void AddRef() const = 0;
  /// Drops one reference; the object deletes itself when the count reaches zero.
  virtual void Release() const = 0;
  /// The number of references held right now (a snapshot; other threads may change it).
  virtual long GetRefCount() const = 0;

 protected:
  virtual ~IRefCountable() = default;
};

/// The atomic counter. It starts at zero: the first intrusive_ptr takes the first reference.
class RefCountImpl {
 public:
  RefCountImpl() = default;
  /// A copy of a counted object is a new object with no references yet.
  RefCountImpl(const RefCountImpl&) noexcept {}
  RefCountImpl& operator=(const RefCountImpl&) noexcept { return *this; }

  /// Returns the count after the increment.
  long AddRef() const noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
  /// Returns the count after the decrement; the owner deletes the object when it is zero.
  long Release() const noexcept {
    const long left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    assert(left >= 0 && "reference released more often than taken");
    return left;
  }
  long GetRefCount() const noexcept { return count_.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<long> count_{0};
};

/// Implements IRefCountable for Base (which must derive from IRefCountable) with a RefCountImpl.
template <class Base>
class RefCounted : public Base {
 public:
  using Base::Base;

  void AddRef() const override { counter_.AddRef(); }
  void Release() const override {
    if (counter_.Release() == 0) delete this;
  }
  long GetRefCount() const override { return counter_.GetRefCount(); }

 private:
  RefCountImpl counter_;
};

/// Hooks found by argument-dependent lookup for every class derived from IRefCountable.
inline void intrusive_ptr_add_ref(const IRefCountable* object) { object->AddRef(); }
inline void intrusive_ptr_release(const IRefCountable* object) { object->Release(); }

}  // namespace Kelbra
