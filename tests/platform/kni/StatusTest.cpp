#include "kni/Status.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "interface/AllIntfStatusDir.h"

namespace {

TEST(NamespaceNameTest, DefaultsToTheDefaultNamespace) {
  EXPECT_EQ(KernelNetInfo::NamespaceName().string(), "default");
}

TEST(NamespaceNameTest, AtMost150Bytes) {
  EXPECT_EQ(KernelNetInfo::NamespaceName(std::string(150, 'n')).string().size(), 150u);
  try {
    KernelNetInfo::NamespaceName name(std::string(151, 'n'));
    FAIL() << "a 151-byte name was accepted";
  } catch (const std::range_error& e) {
    EXPECT_STREQ(e.what(), "NamespaceName::bytes > 150 not allowed");
  }
}

TEST(KernelNetInfoStatusTest, PathNamesTheNamespace) {
  EXPECT_EQ(KernelNetInfo::Status::path(KernelNetInfo::NamespaceName("blue")), "kni/ns/blue/status");
  EXPECT_EQ(KernelNetInfo::Status::path(KernelNetInfo::NamespaceName(std::string(150, 'n'))),
            "kni/ns/" + std::string(150, 'n') + "/status");
}

TEST(KernelNetInfoStatusTest, MountRegistersOnceAndReusesWhatIsThere) {
  Quarn::Ptr<Hive::EntityManager> em = new Hive::EntityManager("agent");
  auto status = KernelNetInfo::statusMount(*em, KernelNetInfo::NamespaceName());
  ASSERT_TRUE(status);
  EXPECT_EQ(status->nsName().string(), "default");
  EXPECT_EQ(em->entity<KernelNetInfo::Status>("kni/ns/default/status"), status);
  EXPECT_EQ(KernelNetInfo::statusMount(*em, KernelNetInfo::NamespaceName()), status);
  EXPECT_EQ(em->entityCount(), 1u);
}

TEST(KernelNetInfoStatusTest, MountLeavesAnObjectOfAnotherTypeAlone) {
  Quarn::Ptr<Hive::EntityManager> em = new Hive::EntityManager("agent");
  Quarn::Ptr<Interface::AllIntfStatusDir> other = new Interface::AllIntfStatusDir;
  em->entityIs("kni/ns/default/status", other);
  EXPECT_EQ(KernelNetInfo::statusMount(*em, KernelNetInfo::NamespaceName()), nullptr);
  EXPECT_EQ(em->entity<Interface::AllIntfStatusDir>("kni/ns/default/status"), other);
}

}  // namespace
