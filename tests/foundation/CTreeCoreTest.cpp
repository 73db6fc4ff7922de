#include <Orlix/foundation/CTreeCore.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

TEST(CTreeCore, AnEmptyTreeHasNothingToUpdate) {
    EXPECT_EQ(CTreeCore(nullptr, 0).updateToRoot(nullptr), nullptr);
    EXPECT_EQ(CTreeCore(nullptr, 0).updateChanged(nullptr), nullptr);
}
} // namespace
