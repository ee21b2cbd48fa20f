#include "quarn/Notifiee.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

// A minimal observable record.
class Record {
 public:
  class Notifiee : public Quarn::BaseNotifiee<Record> {
   public:
    virtual void onValue() = 0;
  };

  void valueIs(int v) {
    value_ = v;
    notifiees_.forEach([](Notifiee& n) { n.onValue(); });
  }
  int value() const { return value_; }
  bool hasNotifiees() const { return !notifiees_.empty(); }

  void notifieeAdd(Notifiee* n) { notifiees_.add(n); }
  void notifieeDel(Notifiee* n) { notifiees_.remove(n); }

 private:
  int value_ = 0;
  Quarn::NotifieeList<Notifiee> notifiees_;
};

// Counts notifications and optionally acts from inside one.
class Watcher : public Record::Notifiee {
 public:
  void onValue() override {
    ++calls;
    if (action) action();
  }

  int calls = 0;
  std::function<void()> action;
};

TEST(NotifieeTest, AttachedNotifieeIsNotified) {
  Record record;
  Watcher w;
  w.notifierIs(&record);
  EXPECT_EQ(w.notifier(), &record);
  record.valueIs(1);
  EXPECT_EQ(w.calls, 1);
}

TEST(NotifieeTest, AttachingTwiceNotifiesOnce) {
  Record record;
  Watcher w;
  w.notifierIs(&record);
  w.notifierIs(&record);
  record.valueIs(1);
  EXPECT_EQ(w.calls, 1);
}

TEST(NotifieeTest, DetachedNotifieeIsNotNotified) {
  Record record;
  Watcher w;
  w.notifierIs(&record);
  w.notifierIs(nullptr);
  record.valueIs(1);
  EXPECT_EQ(w.calls, 0);
  EXPECT_FALSE(record.hasNotifiees());
}

TEST(NotifieeTest, MovingToAnotherNotifierLeavesTheFirst) {
  Record first;
  Record second;
  Watcher w;
  w.notifierIs(&first);
  w.notifierIs(&second);
  first.valueIs(1);
  EXPECT_EQ(w.calls, 0);
  second.valueIs(1);
  EXPECT_EQ(w.calls, 1);
  EXPECT_FALSE(first.hasNotifiees());
}

TEST(NotifieeTest, NotifieesDetachingThemselvesDuringNotificationAreNotifiedOnce) {
  Record record;
  Watcher a;
  Watcher b;
  a.action = [&] { a.notifierIs(nullptr); };
  b.action = [&] { b.notifierIs(nullptr); };
  a.notifierIs(&record);
  b.notifierIs(&record);
  record.valueIs(1);
  EXPECT_EQ(a.calls, 1);
  EXPECT_EQ(b.calls, 1);
  EXPECT_FALSE(record.hasNotifiees());
  record.valueIs(2);
  EXPECT_EQ(a.calls + b.calls, 2);
}

TEST(NotifieeTest, NotifieeDetachedByAnotherDuringNotificationIsSkipped) {
  Record record;
  Watcher a;
  Watcher b;
  a.action = [&] { b.notifierIs(nullptr); };
  a.notifierIs(&record);
  b.notifierIs(&record);
  record.valueIs(1);
  EXPECT_EQ(a.calls, 1);
  EXPECT_EQ(b.calls, 0);
}

TEST(NotifieeTest, NotifieeAttachedDuringNotificationIsNotifiedInTheSameWalk) {
  Record record;
  Watcher a;
  Watcher b;
  a.action = [&] { b.notifierIs(&record); };
  a.notifierIs(&record);
  record.valueIs(1);
  EXPECT_EQ(b.calls, 1);
}

TEST(NotifieeTest, DestroyedNotifieeDetachesItself) {
  Record record;
  {
    Watcher w;
    w.notifierIs(&record);
    EXPECT_TRUE(record.hasNotifiees());
  }
  EXPECT_FALSE(record.hasNotifiees());
  record.valueIs(1);
}

TEST(NotifieeTest, NotifierDestroyedFirstLeavesNotifieeDetached) {
  auto record = std::make_unique<Record>();
  Watcher w;
  w.notifierIs(record.get());
  record.reset();
  EXPECT_EQ(w.notifier(), nullptr);
  // Attaching elsewhere must not reach back into the destroyed record.
  Record other;
  w.notifierIs(&other);
  other.valueIs(1);
  EXPECT_EQ(w.calls, 1);
}

}  // namespace
