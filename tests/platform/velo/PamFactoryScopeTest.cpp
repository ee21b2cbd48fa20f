#include "velo/PamFactoryScope.h"

#include <gtest/gtest.h>

#include "velo/MemPam.h"

namespace Velo {
namespace {

using FactoryPtr = Quarn::Ptr<PamFactory>;

TEST(PamFactoryScopeTest, InstallsTheFactoryWhileItLives) {
  FactoryPtr factory(new MemPamFactory);
  {
    PamFactoryScope scope(factory);
    EXPECT_EQ(pamFactory(), factory);
  }
  EXPECT_EQ(pamFactory(), nullptr);
}

TEST(PamFactoryScopeTest, NestedScopesPutBackTheFactoryEachFound) {
  FactoryPtr outer(new MemPamFactory);
  FactoryPtr inner(new MemPamFactory);
  {
    PamFactoryScope outerScope(outer);
    {
      PamFactoryScope innerScope(inner);
      EXPECT_EQ(pamFactory(), inner);
    }
    EXPECT_EQ(pamFactory(), outer);
    {
      PamFactoryScope noneScope(nullptr);
      EXPECT_EQ(pamFactory(), nullptr);
    }
    EXPECT_EQ(pamFactory(), outer);
  }
  EXPECT_EQ(pamFactory(), nullptr);
}

}  // namespace
}  // namespace Velo
