#include "quarn/Ptr.h"

#include <gtest/gtest.h>

#include <unordered_set>
#include <utility>

namespace {

using Quarn::Ptr;

// Counts live instances, so a test sees exactly when one is deleted.
class Widget : public Quarn::PtrInterface {
 public:
  explicit Widget(int& live) : live_(live) { ++live_; }
  Widget(const Widget& other) : Quarn::PtrInterface(other), live_(other.live_) { ++live_; }

 protected:
  ~Widget() override { --live_; }

 private:
  int& live_;
};

class Gadget : public Widget {
 public:
  using Widget::Widget;
};

class Gizmo : public Widget {
 public:
  using Widget::Widget;
};

class PtrTest : public ::testing::Test {
 protected:
  int live_ = 0;
};

TEST_F(PtrTest, DefaultIsNull) {
  Ptr<Widget> p;
  EXPECT_FALSE(p);
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(p.ptr(), nullptr);
}

TEST_F(PtrTest, ObjectLivesExactlyAsLongAsItsLastPtr) {
  Ptr<Widget> p(new Widget(live_));
  EXPECT_EQ(p->references(), 1u);
  {
    Ptr<Widget> q = p;
    EXPECT_EQ(p->references(), 2u);
  }
  EXPECT_EQ(p->references(), 1u);
  EXPECT_EQ(live_, 1);
  p = nullptr;
  EXPECT_EQ(live_, 0);
}

TEST_F(PtrTest, MoveTransfersOwnershipWithoutTouchingTheCount) {
  Ptr<Widget> p(new Widget(live_));
  Widget* raw = p.ptr();
  Ptr<Widget> q(std::move(p));
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(q.ptr(), raw);
  EXPECT_EQ(q->references(), 1u);

  Ptr<Widget> r;
  r = std::move(q);
  EXPECT_EQ(q, nullptr);
  EXPECT_EQ(r->references(), 1u);
  EXPECT_EQ(live_, 1);
}

TEST_F(PtrTest, AssignmentReleasesThePreviousObject) {
  Ptr<Widget> a(new Widget(live_));
  Ptr<Widget> b(new Widget(live_));
  Ptr<Widget> p = a;
  a = nullptr;
  p = b;
  EXPECT_EQ(live_, 1);
  EXPECT_EQ(b->references(), 2u);
  p = new Widget(live_);
  EXPECT_EQ(live_, 2);
  EXPECT_EQ(b->references(), 1u);
}

TEST_F(PtrTest, SelfAssignmentKeepsTheObject) {
  Ptr<Widget> p(new Widget(live_));
  Ptr<Widget>& alias = p;
  p = alias;
  EXPECT_EQ(live_, 1);
  EXPECT_EQ(p->references(), 1u);
  p = std::move(alias);
  EXPECT_EQ(live_, 1);
  ASSERT_TRUE(p);
  EXPECT_EQ(p->references(), 1u);
}

TEST_F(PtrTest, CopiedObjectStartsWithoutReferences) {
  Ptr<Widget> p(new Widget(live_));
  Ptr<Widget> copy(new Widget(*p));
  EXPECT_EQ(p->references(), 1u);
  EXPECT_EQ(copy->references(), 1u);
}

TEST_F(PtrTest, ConvertsToBaseAndSharesTheCount) {
  Ptr<Gadget> g(new Gadget(live_));
  Ptr<Widget> w = g;
  EXPECT_EQ(w.ptr(), g.ptr());
  EXPECT_EQ(g->references(), 2u);
}

TEST_F(PtrTest, PtrCastToTheDynamicTypeSharesTheObject) {
  Ptr<Widget> w(new Gadget(live_));
  Ptr<Gadget> g = Quarn::ptr_cast<Gadget>(w);
  ASSERT_TRUE(g);
  EXPECT_EQ(static_cast<Widget*>(g.ptr()), w.ptr());
  EXPECT_EQ(w->references(), 2u);
}

TEST_F(PtrTest, PtrCastToAnotherTypeIsNullAndTakesNoReference) {
  Ptr<Widget> w(new Gadget(live_));
  EXPECT_EQ(Quarn::ptr_cast<Gizmo>(w), nullptr);
  EXPECT_EQ(w->references(), 1u);
  EXPECT_EQ(Quarn::ptr_cast<Gadget>(Ptr<Widget>()), nullptr);
}

TEST_F(PtrTest, ComparesByObjectIdentity) {
  Ptr<Widget> a(new Widget(live_));
  Ptr<Widget> b(new Widget(live_));
  Ptr<Widget> a2 = a;
  EXPECT_EQ(a, a2);
  EXPECT_NE(a, b);
  EXPECT_NE(a, nullptr);
  EXPECT_EQ(a < b, a.ptr() < b.ptr());
  EXPECT_EQ(a > b, a.ptr() > b.ptr());
  EXPECT_FALSE(a < a2);
}

TEST_F(PtrTest, HashFollowsTheObject) {
  Ptr<Widget> a(new Widget(live_));
  Ptr<Widget> b(new Widget(live_));
  EXPECT_EQ(std::hash<Ptr<Widget>>{}(a), std::hash<Widget*>{}(a.ptr()));
  std::unordered_set<Ptr<Widget>> set{a, Ptr<Widget>(a), b};
  EXPECT_EQ(set.size(), 2u);
  EXPECT_EQ(a->references(), 2u);
  set.clear();
  EXPECT_EQ(live_, 2);
}

}  // namespace
