#include <Orlix/system/CFile.h>

#include <Orlix/system/CImpFile.h>

#include "support/ChildProcess.h"
#include "support/FileSystem.h"
#include "support/FullDisk.h"
#include "support/OrdinaryUser.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <string>
#include <unistd.h>

using namespace Orlix;
using OrlixTest::CTempFolder;
using OrlixTest::exists;
using OrlixTest::giveToOrdinaryUser;
using OrlixTest::modeOf;
using OrlixTest::randomBytes;
using OrlixTest::readWhole;
using OrlixTest::runAsOrdinaryUser;
using OrlixTest::runInChild;
using OrlixTest::runWithFullDisk;
using OrlixTest::toText;
using OrlixTest::writeWhole;

namespace {

/** One thing of each kind, all over a folder. */
void makeOneOfEach(const CTempFolder& temp) {
    writeWhole(temp / "file", "content");
    mkdir((temp / "folder").c_str(), 0755);
    mkfifo((temp / "pipe").c_str(), 0600);
    ASSERT_EQ(symlink("file", (temp / "to-file").c_str()), 0);
    ASSERT_EQ(symlink("folder", (temp / "to-folder").c_str()), 0);
    ASSERT_EQ(symlink("missing", (temp / "dangling").c_str()), 0);
    ASSERT_EQ(symlink("circle", (temp / "circle").c_str()), 0);
}

TEST(CFile, TellsWhatExistsAndWhatIsAFile) {
    const CTempFolder temp;
    makeOneOfEach(temp);
    const struct {
        const char* pName;
        bool bExists, bFile;
    } aryRow[] = {{"file", true, true},
                  {"folder", true, false},
                  {"pipe", true, true},
                  {"to-file", true, true},
                  {"to-folder", true, true}, // a link is no folder, wherever it leads
                  {"to-folder/", true, false},
                  {"dangling", true, true},
                  {"circle", true, true},
                  {"file/below", false, false},
                  {"missing", false, false},
                  {"missing.txt", false, true}, // where nothing is the name alone decides
                  {".missing", false, true},
                  {"missing.", false, false},
                  {"miss.ing/name", false, false},
                  {"miss.ing\\name", false, false},
                  {"circle/b.txt", false, true}};
    CImpFile imp;
    for (const auto& row : aryRow) {
        const CString strPath = toText(temp / row.pName);
        EXPECT_EQ(CFile::isExist(strPath), row.bExists) << row.pName;
        EXPECT_EQ(imp.isExist(strPath), row.bExists) << row.pName;
        EXPECT_EQ(CFile::isFile(strPath), row.bFile) << row.pName;
        EXPECT_EQ(imp.isFile(strPath), row.bExists && row.bFile) << row.pName << ", which must be there";
    }
    EXPECT_FALSE(CFile::isExist(CString()));
    EXPECT_FALSE(CFile::isFile(CString()));
}

TEST(CFile, ReadOnlyMeansThatTheOwnerMayReadAndNoMore) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    giveToOrdinaryUser(temp.getPath());
    const struct {
        unsigned int uiMode;
        bool bReadOnly;
    } aryRow[] = {{0400, true},  {0444, true},  {0477, true},  {0600, false}, {0644, false}, {0500, false},
                  {0700, false}, {0200, false}, {0300, false}, {0000, false}, {0066, false}, {07400, true}};
    for (const auto& row : aryRow) {
        ASSERT_EQ(chmod((temp / "a").c_str(), row.uiMode), 0);
        const int iCode = runAsOrdinaryUser([&] { return CFile::isReadOnly(toText(temp / "a")) ? 1 : 0; });
        EXPECT_EQ(iCode, row.bReadOnly ? 1 : 0) << std::oct << row.uiMode;
    }
    EXPECT_FALSE(CFile::isReadOnly(toText(temp / "missing")));
}

TEST(CFile, ReadOnlyIsAskedAboutWhatALinkLeadsTo) {
    const CTempFolder temp;
    makeOneOfEach(temp);
    ASSERT_EQ(chmod((temp / "file").c_str(), 0400), 0);
    EXPECT_TRUE(CFile::isReadOnly(toText(temp / "to-file")));
    EXPECT_FALSE(CFile::isReadOnly(toText(temp / "dangling")));
    EXPECT_FALSE(CFile::isReadOnly(toText(temp / "circle")));
    EXPECT_FALSE(CFile::isReadOnly(toText(temp / "folder")));
}

TEST(CFile, QuestionsDoNotWaitForTheOtherEndOfAPipe) {
    const CTempFolder temp;
    ASSERT_EQ(mkfifo((temp / "pipe").c_str(), 0400), 0);
    EXPECT_TRUE(CFile::isReadOnly(toText(temp / "pipe")));
    EXPECT_NE(CFile::getLastModifyTime(toText(temp / "pipe")), 0);
}

TEST(CFile, SetWritableAddsTheOwnersBitAlone) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    for (const unsigned int uiMode : {0400u, 0444u, 0555u, 0600u, 04455u}) {
        ASSERT_EQ(chmod((temp / "a").c_str(), uiMode), 0);
        EXPECT_TRUE(CFile::setWritable(toText(temp / "a")));
        EXPECT_EQ(modeOf(temp / "a"), uiMode | 0200u);
    }
    EXPECT_FALSE(CFile::setWritable(toText(temp / "missing")));
    EXPECT_FALSE(CFile::setWritable(CString()));
}

TEST(CFile, SetWritableFailsWhereTheSystemRefuses) {
    const CTempFolder temp;
    writeWhole(temp / "unreadable", "");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "unreadable").c_str(), 0100), 0);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFile::setWritable(toText(temp / "unreadable")) ? 1 : 0; }), 0);
    EXPECT_EQ(modeOf(temp / "unreadable"), 0100u);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFile::setWritable(L"/etc/passwd") ? 1 : 0; }), 0) << "another's file";
}

TEST(CFile, TellsTheTimeOfTheLastChange) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    for (const long lSeconds : {1234567890L, 5000000000L, 1L}) { // the second one takes more than 32 bits
        const timespec aryTime[2] = {{42, 0}, {lSeconds, 999999999}};
        ASSERT_EQ(utimensat(AT_FDCWD, (temp / "a").c_str(), aryTime, 0), 0);
        EXPECT_EQ(CFile::getLastModifyTime(toText(temp / "a")), lSeconds);
    }
    EXPECT_EQ(CFile::getLastModifyTime(toText(temp / "missing")), 0);
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "a").c_str(), 0200), 0);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFile::getLastModifyTime(toText(temp / "a")) == 0 ? 0 : 1; }), 0);
}

TEST(CFile, RenamesAndMoves) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    mkdir((temp / "folder").c_str(), 0755);
    EXPECT_TRUE(CFile::renameFile(toText(temp / "a"), toText(temp / "folder/b")));
    EXPECT_FALSE(exists(temp / "a"));
    EXPECT_EQ(readWhole(temp / "folder/b"), "content");
    EXPECT_TRUE(CFile::renameFile(toText(temp / "folder"), toText(temp / "moved"))) << "a folder too";
    EXPECT_EQ(readWhole(temp / "moved/b"), "content");
}

TEST(CFile, RenamesNothingOntoWhatExists) {
    const CTempFolder temp;
    makeOneOfEach(temp);
    writeWhole(temp / "a", "content");
    for (const char* pTarget : {"file", "folder", "pipe", "to-file", "dangling", "circle"})
        EXPECT_FALSE(CFile::renameFile(toText(temp / "a"), toText(temp / pTarget))) << pTarget;
    EXPECT_EQ(readWhole(temp / "a"), "content");
    CImpFile imp;
    EXPECT_TRUE(imp.renameFile(toText(temp / "a"), toText(temp / "file"))) << "the system itself replaces";
}

TEST(CFile, RenamesNothingToAnotherCase) {
    const CTempFolder temp;
    writeWhole(temp / "A.txt", "content");
    EXPECT_FALSE(CFile::renameFile(toText(temp / "A.txt"), toText(temp / "a.txt")));
    EXPECT_FALSE(CFile::renameFile(toText(temp / "A.txt"), toText(temp / "A.txt")));
    EXPECT_EQ(readWhole(temp / "A.txt"), "content");
    EXPECT_FALSE(exists(temp / "a.txt"));
}

TEST(CFile, RenamingNeedsASourceAndAFolder) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    EXPECT_FALSE(CFile::renameFile(toText(temp / "missing"), toText(temp / "b")));
    EXPECT_FALSE(CFile::renameFile(toText(temp / "a"), toText(temp / "missing/b"))) << "which is not made";
    EXPECT_FALSE(exists(temp / "missing"));
    EXPECT_TRUE(exists(temp / "a"));
}

TEST(CFile, DeletesRegularFilesOnly) {
    const CTempFolder temp;
    makeOneOfEach(temp);
    for (const char* pName : {"folder", "pipe", "to-file", "to-folder", "dangling", "circle"}) {
        EXPECT_FALSE(CFile::deleteFile(toText(temp / pName))) << pName;
        EXPECT_TRUE(exists(temp / pName)) << pName;
    }
    EXPECT_EQ(readWhole(temp / "file"), "content");
    EXPECT_TRUE(CFile::deleteFile(toText(temp / "file")));
    EXPECT_FALSE(exists(temp / "file"));
}

TEST(CFile, DeletingWhatIsMissingIsDone) {
    const CTempFolder temp;
    EXPECT_TRUE(CFile::deleteFile(toText(temp / "missing")));
    EXPECT_TRUE(CFile::deleteFile(CString()));
    CImpFile imp;
    EXPECT_FALSE(imp.deleteFile(toText(temp / "missing"))) << "the system has nothing to delete";
}

TEST(CFile, DeletingCountsAsDoneAlsoWhereTheSystemRefuses) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0555), 0);
    const int iCode = runAsOrdinaryUser([&] { return CFile::deleteFile(toText(temp / "a")) ? 0 : 1; });
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0755), 0);
    EXPECT_EQ(iCode, 0) << "meant: what the system says is not looked at";
    EXPECT_EQ(readWhole(temp / "a"), "content");
}

TEST(CFile, AFolderForReadingOnlyTakesNoNewFile) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0555), 0);
    const int iCode = runAsOrdinaryUser([&] {
        CFile file;
        const CString strOld = toText(temp / "a"), strNew = toText(temp / "b");
        return (file.open(strNew, L"wb") ? 1 : 0) + (CFile::renameFile(strOld, strNew) ? 2 : 0) +
               (CFile::copyFile(strOld, strNew, true) ? 4 : 0) + (file.open(strOld, L"r+b") ? 0 : 8);
    });
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0755), 0);
    EXPECT_EQ(iCode, 0);
    EXPECT_FALSE(exists(temp / "b"));
}

TEST(CFile, CopiesAroundTheBlockSize) {
    const CTempFolder temp;
    for (const std::size_t uiSize : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 5000u, 1000003u}) {
        const std::string strBytes = randomBytes(uiSize);
        writeWhole(temp / "a", strBytes);
        EXPECT_TRUE(CFile::copyFile(toText(temp / "a"), toText(temp / "b"), true)) << uiSize;
        EXPECT_TRUE(readWhole(temp / "b") == strBytes) << uiSize;
        EXPECT_TRUE(readWhole(temp / "a") == strBytes) << uiSize;
    }
}

TEST(CFile, CopiesNeitherPermissionsNorTimes) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    ASSERT_EQ(chmod((temp / "a").c_str(), 0755), 0);
    const timespec aryTime[2] = {{42, 0}, {42, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (temp / "a").c_str(), aryTime, 0), 0);
    ASSERT_TRUE(CFile::copyFile(toText(temp / "a"), toText(temp / "b"), false));
    EXPECT_EQ(modeOf(temp / "b") & 0111, 0u);
    EXPECT_NE(CFile::getLastModifyTime(toText(temp / "b")), 42);
}

TEST(CFile, CopiesOntoAnExistingFileOnlyToOverwrite) {
    const CTempFolder temp;
    writeWhole(temp / "a", "new");
    writeWhole(temp / "b", "old content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "a"), toText(temp / "b"), false));
    EXPECT_EQ(readWhole(temp / "b"), "old content");
    EXPECT_TRUE(CFile::copyFile(toText(temp / "a"), toText(temp / "b"), true));
    EXPECT_EQ(readWhole(temp / "b"), "new");
}

TEST(CFile, CopyingMakesAReadOnlyTargetWritable) {
    const CTempFolder temp;
    writeWhole(temp / "a", "new");
    writeWhole(temp / "b", "old content");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "b").c_str(), 0444), 0);
    const auto copy = [&](bool bOverwrite) {
        return runAsOrdinaryUser(
            [&] { return CFile::copyFile(toText(temp / "a"), toText(temp / "b"), bOverwrite) ? 1 : 0; });
    };
    EXPECT_EQ(copy(false), 0);
    EXPECT_EQ(modeOf(temp / "b"), 0444u);
    EXPECT_EQ(copy(true), 1);
    EXPECT_EQ(modeOf(temp / "b"), 0644u);
    EXPECT_EQ(readWhole(temp / "b"), "new");
}

TEST(CFile, CopiesNoFileOntoItself) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    ASSERT_EQ(link((temp / "a").c_str(), (temp / "hard").c_str()), 0);
    ASSERT_EQ(symlink("a", (temp / "soft").c_str()), 0);
    for (const char* pTarget : {"a", "A", "./a", "hard", "soft"}) {
        EXPECT_FALSE(CFile::copyFile(toText(temp / "a"), toText(temp / pTarget), true)) << pTarget;
        EXPECT_EQ(readWhole(temp / "a"), "content") << pTarget;
    }
    EXPECT_FALSE(CFile::copyFile(toText(temp / "soft"), toText(temp / "a"), true));
    EXPECT_EQ(readWhole(temp / "a"), "content");
    EXPECT_FALSE(exists(temp / "A")) << "the case does not count";
    CImpFile imp;
    EXPECT_FALSE(imp.copyFile(toText(temp / "a"), toText(temp / "a")));
    EXPECT_EQ(readWhole(temp / "a"), "content");
}

TEST(CFile, CopyingMakesOneMissingFolder) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    EXPECT_TRUE(CFile::copyFile(toText(temp / "a"), toText(temp / "new/b"), false));
    EXPECT_EQ(readWhole(temp / "new/b"), "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "a"), toText(temp / "newer/newest/b"), false));
    EXPECT_FALSE(exists(temp / "newer"));
}

TEST(CFile, ABareNameIsNoNewTarget) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    writeWhole(temp / "old", "");
    const int iCode = runInChild([&] {
                          if (chdir(temp.getPath().c_str()) != 0)
                              return 1;
                          if (CFile::copyFile(L"a", L"new", false)) // it has no folder that could be made
                              return 2;
                          return CFile::copyFile(L"a", L"old", true) && CFile::copyFile(L"a", L"./b", true) ? 0 : 3;
                      }).iExitCode;
    EXPECT_EQ(iCode, 0);
    EXPECT_FALSE(exists(temp / "new"));
    EXPECT_EQ(readWhole(temp / "old"), "content");
}

TEST(CFile, AMissingSourceLeavesTheTargetAlone) {
    const CTempFolder temp;
    writeWhole(temp / "b", "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "missing"), toText(temp / "b"), true));
    EXPECT_EQ(readWhole(temp / "b"), "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "missing"), toText(temp / "new"), true));
    EXPECT_FALSE(exists(temp / "new"));
}

TEST(CFile, AFolderIsNotCopied) {
    const CTempFolder temp;
    mkdir((temp / "folder").c_str(), 0755);
    writeWhole(temp / "a", "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "folder"), toText(temp / "b"), false));
    EXPECT_FALSE(CFile::copyFile(toText(temp / "a"), toText(temp / "folder"), true));
}

TEST(CFile, CopyingFollowsLinks) {
    const CTempFolder temp;
    makeOneOfEach(temp);
    EXPECT_TRUE(CFile::copyFile(toText(temp / "to-file"), toText(temp / "b"), false));
    EXPECT_EQ(readWhole(temp / "b"), "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "file"), toText(temp / "dangling"), false)) << "the link exists";
    EXPECT_TRUE(CFile::copyFile(toText(temp / "file"), toText(temp / "dangling"), true));
    EXPECT_EQ(readWhole(temp / "missing"), "content");
    EXPECT_FALSE(CFile::copyFile(toText(temp / "circle"), toText(temp / "c"), false));
    EXPECT_FALSE(CFile::copyFile(toText(temp / "file"), toText(temp / "circle"), true));
}

TEST(CFile, CopyingStopsWhenTheDiskIsFull) {
    const CTempFolder temp;
    const std::string strBytes = randomBytes(100000);
    writeWhole(temp / "a", strBytes);
    const int iCode =
        runWithFullDisk(50000, [&] { return CFile::copyFile(toText(temp / "a"), toText(temp / "b"), false) ? 1 : 0; });
    EXPECT_EQ(iCode, 0);
    EXPECT_TRUE(readWhole(temp / "b") == strBytes.substr(0, 50000));
}

TEST(CFile, ADiskThatIsFullOnlyAtTheCloseGoesUnnoticed) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    const int iCode =
        runWithFullDisk(3, [&] { return CFile::copyFile(toText(temp / "a"), toText(temp / "b"), false) ? 1 : 0; });
    EXPECT_EQ(iCode, 1) << "every write into the buffer was good, and no more is asked";
    EXPECT_EQ(readWhole(temp / "b"), "con");
}

TEST(CFile, CopiesTheSizeThat32BitsTell) {
    const CTempFolder temp;
    writeWhole(temp / "a", "first");
    ASSERT_EQ(truncate((temp / "a").c_str(), (1L << 32) + 3), 0);
    EXPECT_TRUE(CFile::copyFile(toText(temp / "a"), toText(temp / "b"), false));
    EXPECT_EQ(readWhole(temp / "b"), "fir");
}
} // namespace
