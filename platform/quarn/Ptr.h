#pragma once

#include <cstddef>
#include <functional>
#include <utility>

#include "quarn/PtrInterface.h"

namespace Quarn {

// Owning pointer to a PtrInterface-derived object.
template <class T>
class Ptr {
 public:
  Ptr() = default;
  Ptr(std::nullptr_t) {}
  Ptr(T* p) : p_(p) { acquire(); }
  Ptr(const Ptr& other) : p_(other.p_) { acquire(); }
  Ptr(Ptr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  template <class U>
  Ptr(const Ptr<U>& other) : p_(other.ptr()) { acquire(); }
  ~Ptr() { release(); }

  Ptr& operator=(const Ptr& other) {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }
  Ptr& operator=(T* p) {
    Ptr(p).swap(*this);
    return *this;
  }

  T* ptr() const { return p_; }
  T* operator->() const { return p_; }
  T& operator*() const { return *p_; }
  explicit operator bool() const { return p_ != nullptr; }

  void swap(Ptr& other) noexcept { std::swap(p_, other.p_); }

  friend bool operator==(const Ptr& a, const Ptr& b) { return a.p_ == b.p_; }
  friend bool operator==(const Ptr& a, std::nullptr_t) { return a.p_ == nullptr; }
  friend auto operator<=>(const Ptr& a, const Ptr& b) { return std::compare_three_way{}(a.p_, b.p_); }

 private:
  void acquire() {
    if (p_) p_->newRef();
  }
  void release() {
    if (p_) p_->deleteRef();
  }

  T* p_ = nullptr;
};

template <class T, class U>
Ptr<T> ptr_cast(const Ptr<U>& p) {
  return Ptr<T>(dynamic_cast<T*>(p.ptr()));
}

}  // namespace Quarn

template <class T>
struct std::hash<Quarn::Ptr<T>> {
  std::size_t operator()(const Quarn::Ptr<T>& p) const noexcept { return std::hash<T*>{}(p.ptr()); }
};
