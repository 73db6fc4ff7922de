#include <Orlix/system/CFolder.h>

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CDataList.h>
#include <Orlix/system/CImpFolder.h>
#include <Orlix/system/CPath.h>

#include "support/Descriptors.h"
#include "support/MemoryLimit.h"
#include "support/OrdinaryUser.h"
#include "support/Sanitizer.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using namespace Orlix;
using OrlixTest::countDescriptors;
using OrlixTest::CTempFolder;
using OrlixTest::giveToOrdinaryUser;
using OrlixTest::readWhole;
using OrlixTest::runAsOrdinaryUser;
using OrlixTest::runInChild;
using OrlixTest::toText;
using OrlixTest::writeWhole;

namespace {

static_assert(std::is_base_of<CObject, CFolder>::value && std::is_base_of<CObject, IFolder::tagEntry>::value,
              "objects");
static_assert(std::is_base_of<IFolder, CImpFolder>::value && sizeof(CImpFolder) == sizeof(IFolder), "no fields");
static_assert(std::is_abstract<IFolder>::value && std::has_virtual_destructor<IFolder>::value, "an interface");
static_assert(sizeof(CFolder) == sizeof(CObject) + sizeof(CObjectArray<IFolder::tagEntry>), "one field");

typedef std::vector<std::string> FPaths;

std::string bytesOf(const CString& strText) {
    const std::wstring strWide(strText.getBuffer() ? strText.getBuffer() : L"");
    return std::string(strWide.begin(), strWide.end()); // the tests' names that are compared are ASCII
}

bool exists(const std::string& strPath) {
    struct stat state;
    return lstat(strPath.c_str(), &state) == 0;
}

void makeFolder(const std::string& strPath) { ASSERT_EQ(mkdir(strPath.c_str(), 0755), 0) << strPath; }

void makeLink(const std::string& strTarget, const std::string& strPath) {
    ASSERT_EQ(symlink(strTarget.c_str(), strPath.c_str()), 0) << strPath;
}

/** The names in a folder in the order that the system gives. */
FPaths listBySystem(const std::string& strFolder) {
    FPaths aryName;
    DIR* const pFolder = opendir(strFolder.c_str());
    while (const dirent* const pItem = readdir(pFolder)) {
        if (std::strcmp(pItem->d_name, ".") != 0 && std::strcmp(pItem->d_name, "..") != 0)
            aryName.push_back(pItem->d_name);
    }
    closedir(pFolder);
    return aryName;
}

/** Each entry as its path, its name and whether it is a folder. */
FPaths listEntries(const CFolder& folder) {
    FPaths aryLine;
    for (unsigned int i = 0; i < folder.getEntryCount(); ++i) {
        const IFolder::tagEntry& entry = *folder.getEntry(i);
        aryLine.push_back(bytesOf(entry.strPath) + " " + bytesOf(entry.strName) +
                          (entry.bFolder ? " folder" : " file"));
    }
    return aryLine;
}

FPaths sorted(FPaths aryPath) {
    std::sort(aryPath.begin(), aryPath.end());
    return aryPath;
}

FPaths listOf(CDataList<CString>& lstFile) {
    FPaths aryPath;
    lstFile.toHead();
    while (const CString* const pPath = lstFile.next())
        aryPath.push_back(bytesOf(*pPath));
    return aryPath;
}

/** A path of uiBytes bytes; all its folders are made, the last one too. */
std::string makeLongFolder(const std::string& strBase, std::size_t uiBytes) {
    std::string strPath = strBase;
    while (strPath.size() < uiBytes) {
        const std::size_t uiLeft = uiBytes - strPath.size() - 1;
        strPath += "/" + std::string(uiLeft > 202 ? 200 : uiLeft, 'd');
        mkdir(strPath.c_str(), 0755);
    }
    return strPath;
}

// ---- Entries

TEST(CFolder, TheFieldsOfAnEntryAreInOrder) {
    const IFolder::tagEntry entry;
    const auto at = [&entry](const void* pField) {
        return static_cast<const char*>(pField) - reinterpret_cast<const char*>(&entry);
    };
    EXPECT_EQ(at(&entry.strPath), static_cast<std::ptrdiff_t>(sizeof(CObject)));
    EXPECT_EQ(at(&entry.strName), at(&entry.strPath) + static_cast<std::ptrdiff_t>(sizeof(CString)));
    EXPECT_EQ(at(&entry.bFolder), at(&entry.strName) + static_cast<std::ptrdiff_t>(sizeof(CString)));
    EXPECT_FALSE(entry.bFolder);
}

TEST(CFolder, ListsWhatLiesInAFolder) {
    const CTempFolder temp;
    writeWhole(temp / "a.txt", "");
    writeWhole(temp / ".hidden", "");
    makeFolder(temp / "folder");
    makeFolder(temp / ".hidden-folder");
    ASSERT_EQ(mkfifo((temp / "pipe").c_str(), 0600), 0);
    makeLink("a.txt", temp / "to-file");
    makeLink("folder", temp / "to-folder");
    makeLink("missing", temp / "dangling");
    makeLink("circle", temp / "circle");
    FPaths aryExpected;
    for (const char* pEntry : {".hidden file", ".hidden-folder folder", "a.txt file", "circle file", "dangling file",
                               "folder folder", "pipe file", "to-file file", "to-folder file"}) {
        const std::string strName = std::string(pEntry).substr(0, std::string(pEntry).find(' '));
        aryExpected.push_back(temp / strName + " " + pEntry);
    }
    CFolder folder;
    for (const char* pEnd : {"", "/"}) { // one "/" either way
        ASSERT_TRUE(folder.open(toText(temp.getPath() + pEnd)));
        EXPECT_EQ(sorted(listEntries(folder)), aryExpected);
    }
}

TEST(CFolder, KeepsTheOrderOfTheSystem) {
    const CTempFolder temp;
    FPaths aryName;
    for (int i = 0; i < 300; ++i)
        writeWhole(temp / std::to_string(i * 7919 % 1000), "");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    for (unsigned int i = 0; i < folder.getEntryCount(); ++i)
        aryName.push_back(bytesOf(folder.getEntry(i)->strName));
    EXPECT_EQ(aryName, listBySystem(temp.getPath()));
    EXPECT_EQ(aryName.size(), 300u);
}

TEST(CFolder, HasNoEntryPastTheEnd) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    CFolder folder;
    EXPECT_EQ(folder.getEntryCount(), 0u);
    EXPECT_EQ(folder.getEntry(0), nullptr);
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    EXPECT_EQ(folder.getEntryCount(), 1u);
    EXPECT_NE(folder.getEntry(0), nullptr);
    EXPECT_EQ(folder.getEntry(1), nullptr);
    EXPECT_EQ(folder.getEntry(0xFFFFFFFF), nullptr);
}

TEST(CFolder, OpeningAndClosingGiveTheEntriesUp) {
    const CTempFolder temp;
    makeFolder(temp / "two");
    writeWhole(temp / "two/a", "");
    writeWhole(temp / "two/b", "");
    makeFolder(temp / "none");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp / "two")));
    EXPECT_EQ(folder.getEntryCount(), 2u);
    ASSERT_TRUE(folder.open(toText(temp / "none"))) << "empty, but a folder";
    EXPECT_EQ(folder.getEntryCount(), 0u);
    ASSERT_TRUE(folder.open(toText(temp / "two")));
    folder.close();
    EXPECT_EQ(folder.getEntryCount(), 0u);
    for (const CString& strPath : {CString(), CString(L""), toText(temp / "missing"), toText(temp / "two/a")}) {
        ASSERT_TRUE(folder.open(toText(temp / "two")));
        EXPECT_FALSE(folder.open(strPath));
        EXPECT_EQ(folder.getEntryCount(), 0u);
    }
}

TEST(CFolder, OpensLinksAsTheSystemFollowsThem) {
    const CTempFolder temp;
    makeFolder(temp / "folder");
    writeWhole(temp / "folder/a", "");
    makeLink("folder", temp / "link");
    makeLink("missing", temp / "dangling");
    makeLink("circle", temp / "circle");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp / "link")));
    EXPECT_EQ(listEntries(folder), FPaths{temp / "link/a a file"});
    EXPECT_FALSE(folder.open(toText(temp / "dangling")));
    EXPECT_FALSE(folder.open(toText(temp / "circle")));
}

TEST(CFolder, NoDescriptorIsLeftOver) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    const std::ptrdiff_t iBefore = countDescriptors();
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    EXPECT_FALSE(CFolder().open(toText(temp / "a")));
    EXPECT_EQ(countDescriptors(), iBefore) << "an open folder holds its entries, not the folder";
}

TEST(CImpFolder, AppendsToWhatTheArrayHolds) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    CObjectArray<IFolder::tagEntry> aryEntry;
    CImpFolder imp;
    EXPECT_TRUE(imp.openFolder(toText(temp.getPath()), aryEntry));
    EXPECT_TRUE(imp.openFolder(toText(temp.getPath()), aryEntry));
    EXPECT_FALSE(imp.openFolder(toText(temp / "missing"), aryEntry));
    EXPECT_EQ(aryEntry.getSize(), 2u);
}

TEST(CFolder, AFolderThatMayNotBeReadIsNotOpened) {
    const CTempFolder temp;
    makeFolder(temp / "closed");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "closed").c_str(), 0300), 0);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFolder().open(toText(temp / "closed")) ? 1 : 0; }), 0);
}

TEST(CFolder, WhatCannotBeLookedAtCountsAsAFile) {
    const CTempFolder temp;
    makeFolder(temp / "list-only");
    makeFolder(temp / "list-only/folder");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "list-only").c_str(), 0400), 0); // its names can be read, but nothing behind them
    const int iCode = runAsOrdinaryUser([&] {
        CFolder folder;
        return folder.open(toText(temp / "list-only")) && folder.getEntryCount() == 1 && !folder.getEntry(0)->bFolder
                   ? 0
                   : 1;
    });
    ASSERT_EQ(chmod((temp / "list-only").c_str(), 0700), 0);
    EXPECT_EQ(iCode, 0);
}

TEST(CFolder, APathTakes511BytesWithItsDelimiter) {
    const CTempFolder temp;
    const std::string strFits = makeLongFolder(temp.getPath(), 510);
    CFolder folder;
    EXPECT_TRUE(folder.open(toText(strFits)));
    EXPECT_TRUE(folder.open(toText(strFits + "/")));
    EXPECT_FALSE(folder.open(toText(strFits + "//")));
    makeFolder(strFits + "d");
    EXPECT_FALSE(folder.open(toText(strFits + "d")));
    EXPECT_FALSE(folder.open(toText(strFits + std::string(490, 'd'))));
    EXPECT_FALSE(folder.open(toText(strFits + std::string(1490, 'd'))));
}

TEST(CFolder, APathIsNotCutWithinItsLastCharacters) {
    const CTempFolder temp;
    const std::string strCut = makeLongFolder(temp.getPath(), 509);
    CFolder folder;
    EXPECT_TRUE(folder.open(toText(strCut)));
    EXPECT_FALSE(folder.open(toText(strCut) + L"\u754C")) << "without its last character it would be another folder";
}

TEST(CFolder, AnEntryOfMoreThan511BytesCountsAsAFile) {
    const CTempFolder temp;
    const std::string strFolder = makeLongFolder(temp.getPath(), 500);
    makeFolder(strFolder + "/1234567890");  // 511 bytes
    makeFolder(strFolder + "/12345678901"); // 512 bytes
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(strFolder)));
    EXPECT_EQ(sorted(listEntries(folder)),
              (FPaths{strFolder + "/1234567890 1234567890 folder", strFolder + "/12345678901 12345678901 file"}));
}

TEST(CFolder, ABackslashAtTheEndIsTakenForADelimiter) {
    const CTempFolder temp;
    makeFolder(temp / "a\\");
    makeFolder(temp / "a\\/folder");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp / "a\\")));
    EXPECT_EQ(listEntries(folder), FPaths{temp / "a\\folder folder file"}) << "no slash is added, so nothing is there";
}

TEST(CFolder, NamesMayHaveAnyCharacters) {
    const CTempFolder temp;
    makeFolder(temp / "\xE7\x95\x8C");
    writeWhole(temp / "\xE7\x95\x8C/\xF0\x9F\x98\x80.txt", "");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    ASSERT_EQ(folder.getEntryCount(), 1u);
    EXPECT_TRUE(folder.getEntry(0)->strName == L"\u754C");
    EXPECT_TRUE(folder.getEntry(0)->bFolder);
    const CString strPath = folder.getEntry(0)->strPath;
    ASSERT_TRUE(folder.open(strPath));
    ASSERT_EQ(folder.getEntryCount(), 1u);
    EXPECT_TRUE(folder.getEntry(0)->strPath == strPath + L"/\U0001F600.txt");
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CFolder, AFolderWithoutMemoryForAllItsEntriesIsNotOpened) {
    const CTempFolder temp;
    makeFolder(temp / "small");
    for (int i = 0; i < 3000; ++i) // some 7 MB
        writeWhole(temp / (std::string(240, 'n') + std::to_string(i)), "");
    const int iCode = runInChild([&] {
                          CFolder folder;
                          void* volatile pReserve = std::malloc(1 << 20); // for the first of the entries
                          if (!folder.open(toText(temp / "small")) || !pReserve || !OrlixTest::limitMemory(0))
                              return 1;
                          OrlixTest::useUpMemory(); // earlier tests may have left more in the heap than it takes
                          std::free(pReserve);
                          if (folder.open(toText(temp.getPath())) || folder.getEntryCount() != 0)
                              return 2;
                          OrlixTest::unlimitMemory();
                          return folder.open(toText(temp.getPath())) && folder.getEntryCount() == 3001 ? 0 : 3;
                      }).iExitCode;
    EXPECT_EQ(iCode, 0);
}
#endif

// ---- Names that are no valid text

TEST(CFolder, ANameThatIsNoTextEndsWhereItGoesWrong) {
    const CTempFolder temp;
    writeWhole(temp / "ab\xFF.txt", "");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    EXPECT_EQ(listEntries(folder), FPaths{temp / "ab ab file"});
}

TEST(CFolder, AFolderThatItsTextDoesNotLeadToCountsAsAFile) {
    const CTempFolder temp;
    makeFolder(temp / "ab\xFF");
    makeFolder(temp / "ab");
    makeFolder(temp / "\xFE");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    EXPECT_EQ(sorted(listEntries(folder)), (FPaths{temp / "  file", temp / "ab ab file", temp / "ab ab folder"}));
}

TEST(CFolder, NoNameBecomesTheFolderItselfOrTheOneAbove) {
    const CTempFolder temp;
    makeFolder(temp / ".\xFF");
    makeFolder(temp / "..\xFF");
    writeWhole(temp / "..\xFE", "");
    CFolder folder;
    ASSERT_TRUE(folder.open(toText(temp.getPath())));
    EXPECT_EQ(listEntries(folder), FPaths{});
}

TEST(CFolder, NamesThatAreNoTextLeadNoOperationAstray) {
    const CTempFolder temp;
    writeWhole(temp / "above", "content");
    makeFolder(temp / "folder");
    for (const char* pName : {"..\xFF", ".\xFF", "\xFF", "a\xFF"})
        makeFolder(temp / (std::string("folder/") + pName));
    writeWhole(temp / "folder/a", "content");
    CDataList<CString> lstFile;
    CFolder::findFilesByExt(toText(temp / "folder"), L"*", lstFile, true);
    EXPECT_EQ(sorted(listOf(lstFile)), (FPaths{temp / "folder/", temp / "folder/a", temp / "folder/a"}));
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "folder"), toText(temp / "copy"), true, true));
    EXPECT_EQ(sorted(listBySystem(temp / "copy")), FPaths{"a"});
    EXPECT_FALSE(CFolder::deleteFolder(toText(temp / "folder")));
    EXPECT_EQ(readWhole(temp / "above"), "content");
    EXPECT_EQ(listBySystem(temp / "folder").size() >= 4, true);
}

TEST(CFolder, APathThatIsNoTextIsNotOpened) {
    const CTempFolder temp;
    const wchar_t aryRest[] = {static_cast<wchar_t>(0xD800), 0}; // half of a surrogate pair
    writeWhole(temp / "a", "content");
    CFolder folder;
    EXPECT_FALSE(folder.open(toText(temp.getPath()) + aryRest)) << "what is left of it is another folder";
    EXPECT_FALSE(CFolder::deleteFolder(toText(temp.getPath()) + aryRest));
    EXPECT_EQ(readWhole(temp / "a"), "content");
}

// ---- Creating

TEST(CFolder, CreatesOneLevel) {
    const CTempFolder temp;
    EXPECT_TRUE(CFolder::createFolder(toText(temp / "a")));
    EXPECT_TRUE(std::filesystem::is_directory(temp / "a"));
    EXPECT_TRUE(CFolder::createFolder(toText(temp / "a"))) << "it is there already";
    EXPECT_TRUE(CFolder::createFolder(toText(temp / "b/")));
    EXPECT_TRUE(CFolder::createFolder(toText(temp / "a/b")));
    EXPECT_FALSE(CFolder::createFolder(toText(temp / "missing/b")));
    EXPECT_FALSE(exists(temp / "missing"));
    EXPECT_FALSE(CFolder::createFolder(CString()));
    EXPECT_FALSE(CFolder::createFolder(L""));
}

TEST(CFolder, CreatesNothingWhereSomethingElseIs) {
    const CTempFolder temp;
    makeFolder(temp / "folder");
    writeWhole(temp / "file", "");
    makeLink("folder", temp / "link");
    makeLink("missing", temp / "dangling");
    makeLink("circle", temp / "circle");
    EXPECT_TRUE(CFolder::createFolder(toText(temp / "link"))) << "a link to a folder is one";
    EXPECT_FALSE(CFolder::createFolder(toText(temp / "file")));
    EXPECT_FALSE(CFolder::createFolder(toText(temp / "file/below")));
    EXPECT_FALSE(CFolder::createFolder(toText(temp / "dangling")));
    EXPECT_FALSE(CFolder::createFolder(toText(temp / "circle")));
    EXPECT_FALSE(exists(temp / "missing"));
}

TEST(CFolder, ANewFolderHasAllPermissionsThatTheMaskLeaves) {
    const CTempFolder temp;
    const int iCode = runInChild([&] {
                          umask(026);
                          return CFolder::createFolder(toText(temp / "a")) ? 0 : 1;
                      }).iExitCode;
    EXPECT_EQ(iCode, 0);
    struct stat state;
    ASSERT_EQ(stat((temp / "a").c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 07777u, 01751u) << "the sticky bit too, since every bit is asked for";
}

TEST(CFolder, AFolderForReadingOnlyTakesNoNewFolder) {
    const CTempFolder temp;
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0555), 0);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFolder::createFolder(toText(temp / "a")) ? 1 : 0; }), 0);
    ASSERT_EQ(chmod(temp.getPath().c_str(), 0755), 0);
}

TEST(CFolder, APathToCreateOrRemoveIsCutAt1023Bytes) {
    const CTempFolder temp;
    const std::string strBase = makeLongFolder(temp.getPath(), 1020);
    EXPECT_TRUE(CFolder::createFolder(toText(strBase + "/12345")));
    EXPECT_EQ(listBySystem(strBase), FPaths{"12"});
    EXPECT_TRUE(CFolder::createFolder(toText(strBase + "/12" + std::string(977, 'x')))) << "it is there already";
    CImpFolder imp;
    EXPECT_TRUE(imp.deleteFolder(toText(strBase + "/12345")));
    EXPECT_EQ(listBySystem(strBase), FPaths{});
}

// ---- Deleting

TEST(CFolder, DeletesATree) {
    const CTempFolder temp;
    makeFolder(temp / "a");
    makeFolder(temp / "a/b");
    makeFolder(temp / "a/b/c");
    makeFolder(temp / "a/.hidden");
    for (const char* pFile : {"a/1", "a/b/.2", "a/b/c/3", "a/.hidden/4"})
        writeWhole(temp / pFile, "content");
    writeWhole(temp / "other", "content");
    EXPECT_TRUE(CFolder::deleteFolder(toText(temp / "a")));
    EXPECT_EQ(listBySystem(temp.getPath()), FPaths{"other"});
    makeFolder(temp / "b");
    EXPECT_TRUE(CFolder::deleteFolder(toText(temp / "b/")));
    EXPECT_EQ(listBySystem(temp.getPath()), FPaths{"other"});
}

TEST(CFolder, DeletesNothingButFolders) {
    const CTempFolder temp;
    writeWhole(temp / "file", "content");
    writeWhole(temp / "file.txt", "content");
    for (const CString& strPath : {toText(temp / "file"), toText(temp / "file.txt"), toText(temp / "missing"),
                                   toText(temp / "missing.d"), CString(), CString(L"")})
        EXPECT_FALSE(CFolder::deleteFolder(strPath)) << strPath.getBuffer();
    EXPECT_EQ(sorted(listBySystem(temp.getPath())), (FPaths{"file", "file.txt"}));
}

TEST(CFolder, ALinkToAFolderIsNotDeletedNorFollowed) {
    const CTempFolder temp;
    makeFolder(temp / "folder");
    writeWhole(temp / "folder/a", "content");
    makeLink("folder", temp / "link");
    makeLink("missing", temp / "dangling");
    for (const char* pPath : {"link", "link/", "link//", "dangling", "dangling/"})
        EXPECT_FALSE(CFolder::deleteFolder(toText(temp / pPath))) << pPath;
    EXPECT_EQ(sorted(listBySystem(temp.getPath())), (FPaths{"dangling", "folder", "link"}));
    EXPECT_EQ(readWhole(temp / "folder/a"), "content");
}

TEST(CFolder, StopsDeletingAtWhatIsNeitherFolderNorRegularFile) {
    const CTempFolder temp;
    makeFolder(temp / "folder");
    for (int i = 0; i < 8; ++i)
        writeWhole(temp / ("folder/" + std::to_string(i)), "");
    makeLink("0", temp / "folder/link");
    for (int i = 8; i < 16; ++i)
        makeFolder(temp / ("folder/" + std::to_string(i)));
    const FPaths aryBefore = listBySystem(temp / "folder");
    const FPaths aryLeft(std::find(aryBefore.begin(), aryBefore.end(), "link"), aryBefore.end());
    EXPECT_FALSE(CFolder::deleteFolder(toText(temp / "folder")));
    EXPECT_EQ(sorted(listBySystem(temp / "folder")), sorted(aryLeft)) << "all in front of the link is gone";
}

TEST(CFolder, AFailureBelowStopsAllLevels) {
    const CTempFolder temp;
    makeFolder(temp / "a");
    makeFolder(temp / "a/b");
    ASSERT_EQ(mkfifo((temp / "a/b/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(CFolder::deleteFolder(toText(temp / "a")));
    EXPECT_TRUE(exists(temp / "a/b/pipe"));
}

TEST(CFolder, DeletingFailsAtAFileThatTheSystemKeeps) {
    const CTempFolder temp;
    makeFolder(temp / "a");
    makeFolder(temp / "a/kept");
    writeWhole(temp / "a/kept/1", "content");
    writeWhole(temp / "a/kept/2", "content");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "a/kept").c_str(), 0555), 0);
    const int iCode = runAsOrdinaryUser([&] { return CFolder::deleteFolder(toText(temp / "a")) ? 1 : 0; });
    ASSERT_EQ(chmod((temp / "a/kept").c_str(), 0755), 0);
    EXPECT_EQ(iCode, 0);
    EXPECT_EQ(sorted(listBySystem(temp / "a/kept")), (FPaths{"1", "2"}));
}

TEST(CFolder, AnEmptyFolderThatMayNotBeReadIsDeletedAllTheSame) {
    const CTempFolder temp;
    makeFolder(temp / "closed");
    giveToOrdinaryUser(temp.getPath());
    ASSERT_EQ(chmod((temp / "closed").c_str(), 0000), 0);
    EXPECT_EQ(runAsOrdinaryUser([&] { return CFolder::deleteFolder(toText(temp / "closed")) ? 0 : 1; }), 0);
    EXPECT_FALSE(exists(temp / "closed"));
}

// ---- Copying

/** Every folder and file below a folder, by their paths from there: a folder's content is "/". */
std::map<std::string, std::string> readTree(const std::string& strFolder) {
    std::map<std::string, std::string> mapTree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(strFolder))
        mapTree[entry.path().string().substr(strFolder.size())] =
            entry.is_directory() ? "/" : readWhole(entry.path().string());
    return mapTree;
}

/** Some folders and files, by chance, and always a file of 0 and one of 3000 bytes. */
void makeTree(const std::string& strFolder, std::mt19937& random) {
    FPaths aryFolder{strFolder};
    std::filesystem::create_directories(strFolder);
    writeWhole(strFolder + "/empty", "");
    writeWhole(strFolder + "/large.bin", std::string(3000, 'x'));
    for (unsigned int i = random() % 20; i != 0; --i) {
        const std::string strIn = aryFolder[random() % aryFolder.size()];
        static const char* const ENDS[] = {"", ".txt", ".TXT", ".png", ".tar.gz", "."};
        const std::string strPath = strIn + "/" + std::string(random() % 2, '.') + "ab"[random() % 2] +
                                    std::to_string(random() % 10) + ENDS[random() % 6];
        if (exists(strPath))
            continue;
        if (random() % 3 == 0) {
            mkdir(strPath.c_str(), 0755);
            aryFolder.push_back(strPath);
        } else {
            writeWhole(strPath, std::to_string(random()));
        }
    }
}

TEST(CFolder, CopiesWholeTrees) {
    std::mt19937 random(31);
    for (int i = 0; i < 30; ++i) {
        const CTempFolder temp;
        makeTree(temp / "from", random);
        EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), true, false));
        EXPECT_EQ(readTree(temp / "to"), readTree(temp / "from"));
        EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "from/"), toText(temp / "to/"), true, true));
        EXPECT_EQ(readTree(temp / "to"), readTree(temp / "from"));
    }
}

TEST(CFolder, CopiesTheFilesOfTheTopLevelAlone) {
    const CTempFolder temp;
    makeFolder(temp / "from");
    makeFolder(temp / "from/folder");
    writeWhole(temp / "from/folder/b", "b");
    EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "none"), false, false));
    EXPECT_TRUE(std::filesystem::is_directory(temp / "none")) << "made although nothing is copied";
    EXPECT_EQ(listBySystem(temp / "none"), FPaths{});
    writeWhole(temp / "from/a", "a");
    EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), false, false));
    EXPECT_EQ(readTree(temp / "to"), (std::map<std::string, std::string>{{"/a", "a"}}));
}

TEST(CFolder, CopiesTheRestWhereOneFileFails) {
    const CTempFolder temp;
    makeFolder(temp / "from");
    makeFolder(temp / "from/sub");
    makeFolder(temp / "to");
    makeFolder(temp / "to/sub");
    for (const char* pName : {"a", "b", "c", "sub/d", "sub/e"})
        writeWhole(temp / (std::string("from/") + pName), "new");
    writeWhole(temp / "to/b", "old");
    writeWhole(temp / "to/sub/d", "old");
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), true, false));
    EXPECT_EQ(readTree(temp / "to"),
              (std::map<std::string, std::string>{
                  {"/a", "new"}, {"/b", "old"}, {"/c", "new"}, {"/sub", "/"}, {"/sub/d", "old"}, {"/sub/e", "new"}}));
    EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), true, true));
    EXPECT_EQ(readTree(temp / "to"), readTree(temp / "from"));
}

TEST(CFolder, AFailureDeepInATreeIsTold) {
    const CTempFolder temp;
    std::filesystem::create_directories(temp / "from/a/b");
    makeLink("missing", temp / "from/a/b/dangling");
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), true, true));
    EXPECT_TRUE(std::filesystem::is_directory(temp / "to/a/b"));
}

TEST(CFolder, ALinkToAFolderIsNotCopied) {
    const CTempFolder temp;
    std::filesystem::create_directories(temp / "from/folder");
    makeLink("folder", temp / "from/link");
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "to"), true, true));
    EXPECT_FALSE(std::filesystem::is_directory(temp / "to/link"));
}

TEST(CFolder, CopiesNoFolderOntoItsOwnName) {
    const CTempFolder temp;
    makeFolder(temp / "a");
    writeWhole(temp / "a/1", "content");
    for (const char* pTo : {"a", "a/", "a\\", "A", "A/"}) {
        EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "a"), toText(temp / pTo), true, true)) << pTo;
        EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "a/"), toText(temp / pTo), true, true)) << pTo;
    }
    EXPECT_EQ(listBySystem(temp.getPath()), FPaths{"a"});
    EXPECT_EQ(readWhole(temp / "a/1"), "content");
}

TEST(CFolder, CopyingNeedsASourceAndATargetsParent) {
    const CTempFolder temp;
    makeFolder(temp / "from");
    writeWhole(temp / "file", "");
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "missing"), toText(temp / "to"), true, true));
    EXPECT_FALSE(exists(temp / "to")) << "the source is looked at first";
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "missing/to"), true, true));
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), toText(temp / "file"), true, true));
    EXPECT_FALSE(CFolder::copyFilesTo(CString(), toText(temp / "to"), true, true));
    EXPECT_FALSE(CFolder::copyFilesTo(toText(temp / "from"), CString(), true, true));
    EXPECT_FALSE(CFolder::copyFilesTo(CString(), CString(), true, true));
}

TEST(CFolder, CopyingIntoItselfComesToAnEnd) {
    const CTempFolder temp;
    makeFolder(temp / "a");
    writeWhole(temp / "a/1", "content");
    EXPECT_TRUE(CFolder::copyFilesTo(toText(temp / "a"), toText(temp / "a/b"), true, false));
    EXPECT_EQ(readTree(temp / "a"),
              (std::map<std::string, std::string>{{"/1", "content"}, {"/b", "/"}, {"/b/1", "content"}}));
}

// ---- Finding

/** What a search must give: the paths for which fnMatch takes the name, by the order of the system, depth first. */
template <class F> void findByModel(const std::string& strFolder, bool bRecursive, F fnMatch, FPaths& aryFound) {
    for (const std::string& strName : listBySystem(strFolder)) {
        const std::string strPath = strFolder + "/" + strName;
        if (!std::filesystem::is_directory(strPath)) {
            if (fnMatch(strName))
                aryFound.push_back(strPath);
        } else if (bRecursive) {
            findByModel(strPath, bRecursive, fnMatch, aryFound);
        }
    }
}

std::string lower(std::string strText) {
    for (char& ch : strText)
        ch = ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + 32) : ch;
    return strText;
}

std::string externOf(const std::string& strName) {
    const std::size_t uiDot = strName.rfind('.');
    return uiDot == std::string::npos ? "" : strName.substr(uiDot + 1);
}

std::string titleOf(const std::string& strName) {
    const std::size_t uiDot = strName.rfind('.');
    return uiDot == 0 ? strName : strName.substr(0, uiDot);
}

TEST(CFolder, FindsByExtensionAsAModelDoes) {
    std::mt19937 random(5);
    for (int i = 0; i < 40; ++i) {
        const CTempFolder temp;
        makeTree(temp / "x.txt", random);
        for (const FPaths& aryExtension :
             {FPaths{"txt"}, FPaths{"TXT"}, FPaths{"gz", "Png"}, FPaths{""}, FPaths{"*"}, FPaths{"png", "*", "txt"},
              FPaths{"tar.gz"}, FPaths{".txt"}, FPaths{"t*"}, FPaths{"*t"}, FPaths{}}) {
            const bool bRecursive = random() % 2 == 0;
            FPaths aryExpected;
            findByModel(
                temp / "x.txt", bRecursive,
                [&](const std::string& strName) {
                    return std::any_of(aryExtension.begin(), aryExtension.end(), [&](const std::string& strTried) {
                        return strTried == "*" || lower(strTried) == lower(externOf(strName));
                    });
                },
                aryExpected);
            CDataArray<CString> aryText;
            for (const std::string& strExtension : aryExtension)
                aryText.add(toText(strExtension));
            CDataList<CString> lstFile;
            CFolder::findFilesByExt(toText(temp / "x.txt"), aryText, lstFile, bRecursive);
            EXPECT_EQ(listOf(lstFile), aryExpected) << testing::PrintToString(aryExtension);
            if (aryExtension.size() == 1) {
                CDataList<CString> lstOne;
                CFolder::findFilesByExt(toText(temp / "x.txt"), aryText[0], lstOne, bRecursive);
                EXPECT_EQ(listOf(lstOne), aryExpected);
            }
        }
    }
}

TEST(CFolder, FindsByTitleAsAModelDoes) {
    std::mt19937 random(6);
    for (int i = 0; i < 40; ++i) {
        const CTempFolder temp;
        makeTree(temp / "x.txt", random);
        for (const char* pTitle : {"a", "a1", "A1", "b.", ".a1", "large", "tar", "", "x"}) {
            for (const bool bExact : {false, true}) {
                const bool bRecursive = random() % 2 == 0;
                const std::string strTitle = pTitle;
                FPaths aryExpected;
                findByModel(
                    temp / "x.txt", bRecursive,
                    [&](const std::string& strName) {
                        if (bExact)
                            return titleOf(strName) == strTitle;
                        return !strTitle.empty() && titleOf(strName).find(strTitle) != std::string::npos;
                    },
                    aryExpected);
                CDataList<CString> lstFile;
                CFolder::findFilesByFileTile(toText(temp / "x.txt"), toText(strTitle), lstFile, bExact, bRecursive);
                EXPECT_EQ(listOf(lstFile), aryExpected) << strTitle << (bExact ? " exactly" : " anywhere");
            }
        }
    }
}

TEST(CFolder, FindsThesePlainCases) {
    const CTempFolder temp;
    writeWhole(temp / "a.txt", "");
    writeWhole(temp / "xaby.png", "");
    const auto findExt = [&](const wchar_t* pExtension) {
        CDataList<CString> lstFile;
        CFolder::findFilesByExt(toText(temp.getPath()), pExtension, lstFile, false);
        return sorted(listOf(lstFile));
    };
    const auto findTitle = [&](const wchar_t* pTitle, bool bExact) {
        CDataList<CString> lstFile;
        CFolder::findFilesByFileTile(toText(temp.getPath()), pTitle, lstFile, bExact, false);
        return listOf(lstFile);
    };
    EXPECT_EQ(findExt(L"TXT"), FPaths{temp / "a.txt"});
    EXPECT_EQ(findExt(L"*"), (FPaths{temp / "a.txt", temp / "xaby.png"}));
    EXPECT_EQ(findTitle(L"ab", false), FPaths{temp / "xaby.png"});
    EXPECT_EQ(findTitle(L"ab", true), FPaths{});
    EXPECT_EQ(findTitle(L"xaby", true), FPaths{temp / "xaby.png"});
    EXPECT_EQ(findTitle(L"XABY", true), FPaths{}) << "the case of a title counts";
    EXPECT_EQ(findTitle(L"AB", false), FPaths{});
    EXPECT_EQ(findTitle(L"png", false), FPaths{}) << "the extension is no part of the title";
}

TEST(CFolder, AFoundFileStandsInTheListOnce) {
    const CTempFolder temp;
    writeWhole(temp / "a.txt", "");
    CDataArray<CString> aryExtension;
    for (const wchar_t* pExtension : {L"txt", L"TXT", L"*", L"*"})
        aryExtension.add(pExtension);
    CDataList<CString> lstFile;
    CFolder::findFilesByExt(toText(temp.getPath()), aryExtension, lstFile, true);
    EXPECT_EQ(listOf(lstFile), FPaths{temp / "a.txt"});
}

TEST(CFolder, FindingAppendsToTheList) {
    const CTempFolder temp;
    writeWhole(temp / "a.txt", "");
    CDataList<CString> lstFile;
    lstFile.add(L"first");
    CFolder::findFilesByExt(toText(temp.getPath() + "/"), L"txt", lstFile, false);
    CFolder::findFilesByFileTile(toText(temp.getPath()), L"a", lstFile, true, false);
    CFolder::findFilesByExt(toText(temp / "missing"), L"*", lstFile, true);
    CFolder::findFilesByExt(CString(), L"*", lstFile, true);
    CFolder::findFilesByFileTile(toText(temp / "a.txt"), L"a", lstFile, false, true);
    EXPECT_EQ(listOf(lstFile), (FPaths{"first", temp / "a.txt", temp / "a.txt"}));
}

TEST(CFolder, FindingEntersNoLink) {
    const CTempFolder temp;
    makeFolder(temp / "folder");
    writeWhole(temp / "folder/a.txt", "");
    makeLink(".", temp / "folder/loop");
    CDataList<CString> lstFile;
    CFolder::findFilesByExt(toText(temp / "folder"), L"*", lstFile, true);
    EXPECT_EQ(sorted(listOf(lstFile)), (FPaths{temp / "folder/a.txt", temp / "folder/loop"}));
}
} // namespace
