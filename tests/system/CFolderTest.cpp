#include <Orlix/system/CFolder.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace Orlix;
using OrlixTest::CTempFolder;
using OrlixTest::toText;
using OrlixTest::writeWhole;

namespace {

TEST(CFolder, ListsFilesAndFolders) {
    const CTempFolder temp;
    writeWhole(temp / "a.txt", "");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    ASSERT_EQ(folder.getEntryCount(), 1u);
    EXPECT_TRUE(folder.getEntry(0)->strPath == toText(temp / "a.txt"));
    EXPECT_EQ(folder.getEntry(1), nullptr);
}
} // namespace
