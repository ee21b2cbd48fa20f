#include "hive/EntityManager.h"

#include <gtest/gtest.h>

namespace {

class Apple : public Quarn::PtrInterface {};
class Pear : public Quarn::PtrInterface {};

TEST(EntityManagerTest, KeepsItsName) {
  Quarn::Ptr<Hive::EntityManager> manager = new Hive::EntityManager("mrp");
  EXPECT_EQ(manager->name(), Quarn::Name("mrp"));
  EXPECT_EQ(manager->entityCount(), 0u);
}

TEST(EntityManagerTest, TypedLookupFindsTheEntityUnderItsPath) {
  Quarn::Ptr<Hive::EntityManager> manager = new Hive::EntityManager("mrp");
  Quarn::Ptr<Apple> apple = new Apple;
  manager->entityIs("fruit/apple", apple);
  EXPECT_EQ(manager->entity<Apple>("fruit/apple"), apple);
  EXPECT_EQ(manager->entity<Quarn::PtrInterface>("fruit/apple").ptr(), apple.ptr());
  EXPECT_EQ(manager->entityCount(), 1u);
}

TEST(EntityManagerTest, TypedLookupIsNullWhenAbsentOrOfAnotherType) {
  Quarn::Ptr<Hive::EntityManager> manager = new Hive::EntityManager("mrp");
  manager->entityIs("fruit/apple", new Apple);
  EXPECT_EQ(manager->entity<Pear>("fruit/apple"), nullptr);
  EXPECT_EQ(manager->entity<Apple>("fruit/pear"), nullptr);
}

TEST(EntityManagerTest, EntityIsReplacesAndEntityDelRemoves) {
  Quarn::Ptr<Hive::EntityManager> manager = new Hive::EntityManager("mrp");
  Quarn::Ptr<Apple> apple = new Apple;
  manager->entityIs("fruit", apple);
  Quarn::Ptr<Pear> pear = new Pear;
  manager->entityIs("fruit", pear);
  EXPECT_EQ(manager->entity<Apple>("fruit"), nullptr);
  EXPECT_EQ(manager->entity<Pear>("fruit"), pear);
  EXPECT_EQ(apple->references(), 1u);

  manager->entityDel("fruit");
  EXPECT_EQ(manager->entity<Pear>("fruit"), nullptr);
  EXPECT_EQ(manager->entityCount(), 0u);
  EXPECT_EQ(pear->references(), 1u);
}

TEST(EntityManagerDeathTest, StoringNullIsAProgrammingError) {
  Quarn::Ptr<Hive::EntityManager> manager = new Hive::EntityManager("mrp");
  EXPECT_DEATH(manager->entityIs("fruit", nullptr), "Assertion failed: entity");
}

}  // namespace
