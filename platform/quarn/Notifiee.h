#pragma once

#include <algorithm>
#include <vector>

namespace Quarn {

// The notifiees of one observable record. A record's setter that changes a
// value calls forEach with the matching onX() of its Notifiee interface.
// Notifiees may detach themselves (or others) while being notified.
template <class NotifieeT>
class NotifieeList {
 public:
  NotifieeList() = default;
  NotifieeList(const NotifieeList&) = delete;
  NotifieeList& operator=(const NotifieeList&) = delete;
  // A record that goes away first leaves its notifiees detached, not dangling.
  ~NotifieeList() {
    for (NotifieeT* n : list_) {
      if (n) n->notifierDetached();
    }
  }

  void add(NotifieeT* n) {
    if (std::find(list_.begin(), list_.end(), n) == list_.end()) list_.push_back(n);
  }
  void remove(NotifieeT* n) {
    auto it = std::find(list_.begin(), list_.end(), n);
    if (it != list_.end()) *it = nullptr;
    compactIfIdle();
  }
  bool empty() const {
    return std::none_of(list_.begin(), list_.end(), [](NotifieeT* n) { return n != nullptr; });
  }
  template <class F>
  void forEach(F&& f) {
    ++depth_;
    // Index loop: notifiees added during the walk are notified too, removed
    // ones are skipped.
    for (std::size_t i = 0; i < list_.size(); ++i) {
      if (NotifieeT* n = list_[i]) f(*n);
    }
    --depth_;
    compactIfIdle();
  }

 private:
  void compactIfIdle() {
    if (depth_ == 0) list_.erase(std::remove(list_.begin(), list_.end(), nullptr), list_.end());
  }

  std::vector<NotifieeT*> list_;
  int depth_ = 0;
};

// Base of a record's Notifiee interface: attaches to one notifier at a time
// and detaches on destruction. Notifier must provide
// notifieeAdd(Notifier::Notifiee*) and notifieeDel(Notifier::Notifiee*).
template <class Notifier, class Derived = typename Notifier::Notifiee>
class BaseNotifiee {
 public:
  BaseNotifiee() = default;
  BaseNotifiee(const BaseNotifiee&) = delete;
  BaseNotifiee& operator=(const BaseNotifiee&) = delete;
  virtual ~BaseNotifiee() { notifierIs(nullptr); }

  Notifier* notifier() const { return notifier_; }
  void notifierIs(Notifier* n) {
    if (n == notifier_) return;
    if (notifier_) notifier_->notifieeDel(registered_);
    notifier_ = n;
    registered_ = n ? static_cast<Derived*>(this) : nullptr;
    if (notifier_) notifier_->notifieeAdd(registered_);
  }
  // Called by the notifier's list when the notifier is destroyed.
  void notifierDetached() { notifier_ = nullptr; }

 private:
  Notifier* notifier_ = nullptr;
  // The pointer handed to the notifier, kept because ~BaseNotifiee runs after
  // the Derived part is gone and may no longer cast `this` down to it.
  Derived* registered_ = nullptr;
};

}  // namespace Quarn
