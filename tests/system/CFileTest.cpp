#include <Orlix/system/CFile.h>

#include <Orlix/system/CImpFile.h>

#include "support/ChildProcess.h"
#include "support/Descriptors.h"
#include "support/OrdinaryUser.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <type_traits>
#include <unistd.h>
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

static_assert(std::is_base_of<CObject, CFile>::value && !std::is_copy_constructible<CFile>::value, "owns a stream");
static_assert(std::is_base_of<IFile, CImpFile>::value && sizeof(CImpFile) == sizeof(IFile), "no fields");
static_assert(std::is_abstract<IFile>::value && std::has_virtual_destructor<IFile>::value, "an interface");
static_assert(CFile::SEEK_FROM_START == 0 && CFile::SEEK_FROM_CURRENT == 1 && CFile::SEEK_FROM_END == 2, "of fseek");
static_assert(std::is_same<decltype(CFile::getLastModifyTime(CString())), long>::value && sizeof(long) == 8, "64 bits");
static_assert(std::is_same<decltype(CFile().getFileSize()), unsigned int>::value, "32 bits");

class CFileProbe : public CFile {
public:
    bool isReadMode() const { return m_bReadMode; }
    std::ptrdiff_t getReadModeOffset() const { return offsetOf(&m_bReadMode); }
    std::ptrdiff_t getStreamOffset() const { return offsetOf(&m_pStream); }

private:
    std::ptrdiff_t offsetOf(const void* pField) const {
        return static_cast<const char*>(pField) - reinterpret_cast<const char*>(this);
    }
};

const unsigned char* bytesOf(const std::string& strBytes) {
    return reinterpret_cast<const unsigned char*>(strBytes.data());
}

bool write(CFile& file, const std::string& strBytes) {
    return file.writeData(bytesOf(strBytes), static_cast<unsigned int>(strBytes.size()));
}

/** What one readData of uiLength bytes brings; what it does not touch stays '#'. */
std::string read(CFile& file, unsigned int uiLength, bool bExpected = true) {
    std::string strBytes(uiLength, '#');
    EXPECT_EQ(file.readData(reinterpret_cast<unsigned char*>(strBytes.data()), uiLength), bExpected);
    return strBytes;
}

std::string randomBytes(std::size_t uiCount) {
    std::mt19937 random(static_cast<unsigned int>(uiCount));
    std::string strBytes(uiCount, '\0');
    for (char& ch : strBytes)
        ch = static_cast<char>(random());
    return strBytes;
}

bool exists(const std::string& strPath) {
    struct stat state;
    return lstat(strPath.c_str(), &state) == 0;
}

unsigned int modeOf(const std::string& strPath) {
    struct stat state;
    return stat(strPath.c_str(), &state) == 0 ? state.st_mode & 07777 : ~0u;
}

/** A path of uiBytes bytes over folders that exist, to a name that may be missing. */
std::string makeLongPath(const CTempFolder& temp, std::size_t uiBytes) {
    std::string strPath = temp.getPath();
    while (uiBytes - strPath.size() > 251) {
        strPath += "/" + std::string(200, 'd');
        mkdir(strPath.c_str(), 0755);
    }
    return strPath + "/" + std::string(uiBytes - strPath.size() - 1, 'n');
}

// ---- Opening

TEST(CFile, TheFieldsAreInOrder) {
    const std::ptrdiff_t iFirst = sizeof(CObject);
    EXPECT_EQ(CFileProbe().getReadModeOffset(), iFirst);
    EXPECT_EQ(CFileProbe().getStreamOffset(), iFirst + 8);
    static_assert(sizeof(CFile) == sizeof(CObject) + 16, "and there are no others");
}

TEST(CFile, IsClosedAtFirst) {
    CFileProbe file;
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(file.isReadMode());
    file.close();
    EXPECT_FALSE(file.isOpen());
}

TEST(CFile, OpensAnExistingFileForReading) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    CFile file;
    EXPECT_TRUE(file.open(toText(temp / "a"), L"rb"));
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(read(file, 7), "content");
}

TEST(CFile, AMissingFileIsNotOpenedForReadingAndNotMade) {
    const CTempFolder temp;
    CFile file;
    for (const wchar_t* pMode : {L"rb", L"r", L"r+b"}) {
        EXPECT_FALSE(file.open(toText(temp / "a"), pMode));
        EXPECT_FALSE(file.isOpen());
        EXPECT_FALSE(file.open(toText(temp / "folder/a"), pMode));
    }
    EXPECT_FALSE(file.open(toText(temp / "a"), true));
    EXPECT_FALSE(exists(temp / "a"));
    EXPECT_FALSE(exists(temp / "folder"));
}

TEST(CFile, NeedsAPathAndAMode) {
    const CTempFolder temp;
    CFileProbe file;
    EXPECT_FALSE(file.open(CString(), L"rb"));
    EXPECT_FALSE(file.isReadMode()) << "nothing was begun";
    EXPECT_FALSE(file.open(L"", L"wb"));
    EXPECT_FALSE(file.open(CString(), false));
    EXPECT_FALSE(file.open(L"", true));
    EXPECT_FALSE(file.open(toText(temp / "a"), nullptr));
    EXPECT_FALSE(file.open(toText(temp / "a"), L"no mode, but w for writing")) << "the system refuses it";
    EXPECT_FALSE(exists(temp / "a"));
}

TEST(CFile, OpeningClosesTheFileBefore) {
    const CTempFolder temp;
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
    ASSERT_TRUE(write(file, "first"));
    ASSERT_TRUE(file.open(toText(temp / "b"), L"wb"));
    EXPECT_EQ(readWhole(temp / "a"), "first");
    ASSERT_TRUE(write(file, "second"));
    EXPECT_FALSE(file.open(CString(), L"wb")) << "and so does an opening that comes to nothing";
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(readWhole(temp / "b"), "second");
    ASSERT_TRUE(file.open(toText(temp / "c"), L"wb"));
    ASSERT_TRUE(write(file, "third"));
    EXPECT_FALSE(file.open(L"", true));
    EXPECT_EQ(readWhole(temp / "c"), "third");
}

TEST(CFile, TheModeDecidesAboutReadMode) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    CFileProbe file;
    const struct {
        const wchar_t* pMode;
        bool bReadMode;
    } aryRow[] = {{L"r", true},   {L"rb", true},   {L"r+b", true},  {L"rb+", true},
                  {L"ab", false}, {L"a+b", false}, {L"w+b", false}, {L"wb", false}};
    for (const auto& row : aryRow) {
        EXPECT_TRUE(file.open(toText(temp / "a"), row.pMode));
        EXPECT_EQ(file.isReadMode(), row.bReadMode) << row.pMode;
    }
    EXPECT_TRUE(file.open(toText(temp / "a"), true));
    EXPECT_TRUE(file.isReadMode());
    EXPECT_TRUE(file.open(toText(temp / "a"), false));
    EXPECT_FALSE(file.isReadMode());
    EXPECT_TRUE(file.open(toText(temp / "a"), L"rb"));
    file.close();
    EXPECT_FALSE(file.isReadMode());
}

TEST(CFile, OpeningForWritingMakesOneMissingFolder) {
    const CTempFolder temp;
    CFile file;
    for (const wchar_t* pMode : {L"w", L"wb", L"a", L"ab", L"w+b", L"a+b"}) {
        EXPECT_TRUE(file.open(toText(temp / "new/a"), pMode)) << pMode;
        file.close();
        std::filesystem::remove_all(temp / "new");
    }
    EXPECT_TRUE(file.open(toText(temp / "new/a"), false));
    EXPECT_TRUE(exists(temp / "new/a"));
}

TEST(CFile, OpeningForWritingMakesNoTwoFolders) {
    const CTempFolder temp;
    CFile file;
    EXPECT_FALSE(file.open(toText(temp / "new/newer/a"), L"wb"));
    EXPECT_FALSE(file.open(toText(temp / "new/newer/a"), false));
    EXPECT_FALSE(exists(temp / "new"));
}

TEST(CFile, WritingTruncatesAndAppendingDoesNot) {
    const CTempFolder temp;
    writeWhole(temp / "a", "old content");
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), L"ab"));
    ASSERT_TRUE(write(file, "!"));
    file.close();
    EXPECT_EQ(readWhole(temp / "a"), "old content!");
    ASSERT_TRUE(file.open(toText(temp / "a"), false));
    file.close();
    EXPECT_EQ(readWhole(temp / "a"), "");
    writeWhole(temp / "a", "old content");
    ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
    EXPECT_EQ(readWhole(temp / "a"), "");
}

TEST(CFile, ReadOnlyTakesNoWriting) {
    const CTempFolder temp;
    writeWhole(temp / "a", "content");
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), true));
    EXPECT_FALSE(write(file, "x"));
    EXPECT_EQ(read(file, 7), "content");
    file.close();
    EXPECT_EQ(readWhole(temp / "a"), "content");
}

TEST(CFile, AModeIsCutAt31Bytes) {
    const CTempFolder temp;
    writeWhole(temp / "a", "x");
    CFile file;
    EXPECT_TRUE(file.open(toText(temp / "a"), (L"rb" + std::wstring(100, L'b')).c_str()));
    EXPECT_FALSE(write(file, "y"));
}

TEST(CFile, AFolderIsNotOpenedForWriting) {
    const CTempFolder temp;
    CFile file;
    EXPECT_FALSE(file.open(toText(temp.getPath()), L"wb"));
    EXPECT_FALSE(file.open(toText(temp.getPath()), false));
}

TEST(CFile, AFolderOpensForReadingButGivesNothing) {
    const CTempFolder temp;
    CFile file;
    ASSERT_TRUE(file.open(toText(temp.getPath()), L"rb")); // as the system has it
    EXPECT_EQ(read(file, 1, false), "#");
}

TEST(CFile, LinksOpenAsTheSystemFollowsThem) {
    const CTempFolder temp;
    ASSERT_EQ(symlink("missing", (temp / "dangling").c_str()), 0);
    ASSERT_EQ(symlink("circle2", (temp / "circle1").c_str()), 0);
    ASSERT_EQ(symlink("circle1", (temp / "circle2").c_str()), 0);
    CFile file;
    EXPECT_FALSE(file.open(toText(temp / "circle1"), L"rb"));
    EXPECT_FALSE(file.open(toText(temp / "circle1"), L"wb"));
    EXPECT_FALSE(file.open(toText(temp / "dangling"), L"rb"));
    EXPECT_FALSE(exists(temp / "missing"));
    EXPECT_TRUE(file.open(toText(temp / "dangling"), L"wb"));
    EXPECT_TRUE(exists(temp / "missing"));
}

TEST(CFile, APathIsCutAt1023Bytes) {
    const CTempFolder temp;
    const std::string strFits = makeLongPath(temp, 1023);
    CFile file;
    for (const std::size_t uiMore : {0u, 1u, 977u}) {
        ASSERT_TRUE(file.open(toText(strFits + std::string(uiMore, 'x')), L"wb")) << uiMore << " bytes more";
        ASSERT_TRUE(write(file, std::to_string(uiMore)));
        file.close();
        EXPECT_EQ(readWhole(strFits), std::to_string(uiMore)) << "the cut path names this file";
        EXPECT_TRUE(CFile::isExist(toText(strFits + std::string(uiMore, 'x'))));
    }
}

TEST(CFile, APathIsCutBetweenCharacters) {
    const CTempFolder temp;
    const std::string strFits = makeLongPath(temp, 1021);
    CFile file;
    ASSERT_TRUE(file.open(toText(strFits) + L"\u754C", L"wb")); // its three bytes would end behind the limit
    EXPECT_TRUE(exists(strFits));
}

TEST(CFile, NamesMayHaveAnyCharacters) {
    const CTempFolder temp;
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "") + L"\u754C\u00E9\U0001F600", L"wb"));
    EXPECT_TRUE(exists(temp / "\xE7\x95\x8C\xC3\xA9\xF0\x9F\x98\x80"));
}

TEST(CFile, APathEndsBeforeAnInvalidCharacter) {
    const CTempFolder temp;
    const wchar_t aryRest[] = {static_cast<wchar_t>(0xD800), L'b', 0}; // half of a surrogate pair
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a") + aryRest, L"wb"));
    EXPECT_TRUE(exists(temp / "a"));
}

// ---- Closing

TEST(CFile, TheDestructorCloses) {
    const CTempFolder temp;
    {
        CFile file;
        ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
        ASSERT_TRUE(write(file, "content"));
        EXPECT_EQ(readWhole(temp / "a"), "") << "still buffered";
    }
    EXPECT_EQ(readWhole(temp / "a"), "content");
}

TEST(CFile, NoDescriptorIsLeftOver) {
    const CTempFolder temp;
    const std::ptrdiff_t iBefore = countDescriptors();
    {
        CFile file;
        ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
        ASSERT_TRUE(file.open(toText(temp / "a"), L"rb"));
        EXPECT_EQ(countDescriptors(), iBefore + 1);
        CFile::isReadOnly(toText(temp / "a"));
        CFile::setWritable(toText(temp / "a"));
        CFile::getLastModifyTime(toText(temp / "a"));
        CFile::copyFile(toText(temp / "a"), toText(temp / "b"), true);
        EXPECT_EQ(countDescriptors(), iBefore + 1);
    }
    EXPECT_EQ(countDescriptors(), iBefore);
}

/** Runs fnBody where no file can grow beyond uiBytes, as on a disk that is full then. */
template <class F> int runWithFullDisk(unsigned int uiBytes, F fnBody) {
    return runInChild([&] {
               std::signal(SIGXFSZ, SIG_IGN);
               const rlimit limit{uiBytes, uiBytes};
               return setrlimit(RLIMIT_FSIZE, &limit) == 0 ? fnBody() : 123;
           })
        .iExitCode;
}

TEST(CFile, IsClosedAlsoWhenTheLastBytesDoNotFit) {
    const CTempFolder temp;
    const int iCode = runWithFullDisk(0, [&] {
        CFile file;
        if (!file.open(toText(temp / "a"), L"wb") || !write(file, "buffered"))
            return 1;
        file.close();
        return file.isOpen() || file.getFileSize() != 0 || write(file, "more") ? 2 : 0;
    });
    EXPECT_EQ(iCode, 0);
}

TEST(CFile, WritingFailsWhenTheDiskIsFull) {
    const CTempFolder temp;
    const int iCode = runWithFullDisk(10000, [&] {
        CFile file;
        return file.open(toText(temp / "a"), L"wb") && write(file, randomBytes(8192)) &&
                       !write(file, randomBytes(100000)) && file.isOpen()
                   ? 0
                   : 1;
    });
    EXPECT_EQ(iCode, 0);
    EXPECT_EQ(readWhole(temp / "a"), randomBytes(8192) + randomBytes(100000).substr(0, 10000 - 8192));
}

// ---- Reading and writing

TEST(CFile, NothingToDoIsTrueOnAnOpenFileOnly) {
    const CTempFolder temp;
    unsigned char byte = '#';
    CFile file;
    EXPECT_FALSE(file.writeData(&byte, 0));
    EXPECT_FALSE(file.writeData(nullptr, 0));
    EXPECT_FALSE(file.writeData(nullptr, 5));
    EXPECT_FALSE(file.readData(&byte, 0));
    EXPECT_FALSE(file.readData(nullptr, 0));
    EXPECT_FALSE(file.readData(nullptr, 5));
    ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
    EXPECT_TRUE(file.writeData(&byte, 0));
    EXPECT_TRUE(file.writeData(nullptr, 0));
    EXPECT_TRUE(file.writeData(nullptr, 5));
    EXPECT_TRUE(file.readData(&byte, 0)) << "nothing is read, so the mode does not matter";
    EXPECT_TRUE(file.readData(nullptr, 0));
    EXPECT_TRUE(file.readData(nullptr, 5));
    file.close();
    EXPECT_EQ(readWhole(temp / "a"), "");
    EXPECT_EQ(byte, '#');
}

TEST(CFile, AClosedFileNeitherReadsNorWrites) {
    CFile file;
    EXPECT_FALSE(write(file, "x"));
    EXPECT_EQ(read(file, 1, false), "#");
}

TEST(CFile, AShortReadIsFalseButDelivers) {
    const CTempFolder temp;
    writeWhole(temp / "a", "abcde");
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), true));
    EXPECT_EQ(read(file, 3), "abc");
    EXPECT_EQ(read(file, 4, false), "de##");
    EXPECT_EQ(read(file, 1, false), "#") << "at the end";
    file.seekTo(3, CFile::SEEK_FROM_START);
    EXPECT_EQ(read(file, 2), "de") << "exactly up to the end";
}

TEST(CFile, AFileForWritingIsNotRead) {
    const CTempFolder temp;
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
    ASSERT_TRUE(write(file, "abc"));
    file.seekTo(0, CFile::SEEK_FROM_START);
    EXPECT_EQ(read(file, 1, false), "#");
}

TEST(CFile, CarriesLargeBlocksWhole) {
    const CTempFolder temp;
    const std::string strBytes = randomBytes(5000001);
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), false));
    EXPECT_TRUE(write(file, strBytes));
    ASSERT_TRUE(file.open(toText(temp / "a"), true));
    EXPECT_EQ(file.getFileSize(), 5000001u);
    EXPECT_TRUE(read(file, 5000001) == strBytes);
}

TEST(CFile, SeeksFromEachOrigin) {
    const CTempFolder temp;
    writeWhole(temp / "a", "0123456789");
    CFile file;
    file.seekTo(3, CFile::SEEK_FROM_START); // closed: nothing happens
    ASSERT_TRUE(file.open(toText(temp / "a"), true));
    file.seekTo(3, CFile::SEEK_FROM_START);
    EXPECT_EQ(read(file, 1), "3");
    file.seekTo(2, CFile::SEEK_FROM_CURRENT);
    EXPECT_EQ(read(file, 1), "6");
    file.seekTo(-3, CFile::SEEK_FROM_CURRENT);
    EXPECT_EQ(read(file, 1), "4");
    file.seekTo(-1, CFile::SEEK_FROM_END);
    EXPECT_EQ(read(file, 1), "9");
    file.seekTo(2, CFile::SEEK_FROM_START);
    file.seekTo(-1, CFile::SEEK_FROM_START); // in front of the file: refused
    file.seekTo(0, static_cast<CFile::ESeekType>(77));
    EXPECT_EQ(read(file, 1), "2");
}

TEST(CFile, TheSizeLeavesThePositionWhereItWas) {
    const CTempFolder temp;
    writeWhole(temp / "a", "0123456789");
    CFile file;
    EXPECT_EQ(file.getFileSize(), 0u) << "closed";
    ASSERT_TRUE(file.open(toText(temp / "a"), L"r+b"));
    EXPECT_EQ(read(file, 4), "0123");
    EXPECT_EQ(file.getFileSize(), 10u);
    EXPECT_EQ(read(file, 2), "45");
    file.seekTo(9, CFile::SEEK_FROM_START);
    ASSERT_TRUE(write(file, "9abc"));
    EXPECT_EQ(file.getFileSize(), 13u) << "with what is still buffered";
    ASSERT_TRUE(write(file, "d"));
    file.close();
    EXPECT_EQ(readWhole(temp / "a"), "0123456789abcd");
}

TEST(CFile, TheSizeHas32Bits) {
    const CTempFolder temp;
    writeWhole(temp / "a", "");
    ASSERT_EQ(truncate((temp / "a").c_str(), (1L << 32) + 5), 0); // without data, so it takes no room
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), true));
    EXPECT_EQ(file.getFileSize(), 5u) << "the upper part is lost";
}

TEST(CFile, WhatHasNoPositionsHasNoSize) {
    const CTempFolder temp;
    ASSERT_EQ(mkfifo((temp / "pipe").c_str(), 0600), 0);
    const int iBothEnds = ::open((temp / "pipe").c_str(), O_RDWR);
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "pipe"), L"rb"));
    EXPECT_EQ(file.getFileSize(), 0u);
    ::close(iBothEnds);
}

TEST(CFile, IsEmptyIsTheWrongWayRoundForAnOpenFile) {
    const CTempFolder temp;
    writeWhole(temp / "full", "x");
    writeWhole(temp / "empty", "");
    CFile file;
    EXPECT_TRUE(file.isEmpty()) << "closed";
    ASSERT_TRUE(file.open(toText(temp / "full"), true));
    EXPECT_TRUE(file.isEmpty()) << "meant: callers rely on it";
    ASSERT_TRUE(file.open(toText(temp / "empty"), true));
    EXPECT_FALSE(file.isEmpty()) << "meant: callers rely on it";
}

TEST(CFile, FlushMakesVisibleWhatWasWritten) {
    const CTempFolder temp;
    CFile file;
    file.flush(); // closed: nothing happens
    ASSERT_TRUE(file.open(toText(temp / "a"), L"wb"));
    ASSERT_TRUE(write(file, "abc"));
    EXPECT_EQ(readWhole(temp / "a"), "");
    file.flush();
    EXPECT_EQ(readWhole(temp / "a"), "abc");
    EXPECT_TRUE(file.isOpen());
}

/** A file in memory with one position. */
struct tagFileModel {
    std::string strBytes;
    std::size_t uiPosition = 0;

    void write(const std::string& strNew) {
        strBytes.resize(std::max(strBytes.size(), uiPosition + strNew.size()), '\0');
        strBytes.replace(uiPosition, strNew.size(), strNew);
        uiPosition += strNew.size();
    }
    std::string read(std::size_t uiCount) {
        const std::string strRead = uiPosition < strBytes.size() ? strBytes.substr(uiPosition, uiCount) : std::string();
        uiPosition += strRead.size();
        return strRead;
    }
    void seek(long lTo) {
        if (lTo >= 0)
            uiPosition = static_cast<std::size_t>(lTo);
    }
};

TEST(CFile, AgreesWithAModelOverRandomCalls) {
    const CTempFolder temp;
    std::mt19937 random(7);
    CFile file;
    ASSERT_TRUE(file.open(toText(temp / "a"), L"w+b"));
    tagFileModel model;
    for (int i = 0; i < 20000; ++i) {
        const unsigned int uiCount = random() % 100 == 0 ? random() % 20000 : random() % 40;
        const int iOffset = static_cast<int>(random() % 3000) - 1000;
        file.seekTo(0, CFile::SEEK_FROM_CURRENT); // between reading and writing
        switch (random() % 6) {
        case 0: {
            const std::string strNew = randomBytes(uiCount);
            ASSERT_TRUE(write(file, strNew));
            if (uiCount != 0)
                model.write(strNew);
            break;
        }
        case 1: {
            std::string strExpected = model.read(uiCount);
            const bool bWhole = strExpected.size() == uiCount;
            strExpected.resize(uiCount, '#');
            ASSERT_EQ(read(file, uiCount, bWhole), strExpected);
            break;
        }
        case 2:
            file.seekTo(iOffset, CFile::SEEK_FROM_START);
            model.seek(iOffset);
            break;
        case 3:
            file.seekTo(iOffset, CFile::SEEK_FROM_CURRENT);
            model.seek(static_cast<long>(model.uiPosition) + iOffset);
            break;
        case 4:
            file.seekTo(iOffset, CFile::SEEK_FROM_END);
            model.seek(static_cast<long>(model.strBytes.size()) + iOffset);
            break;
        default:
            ASSERT_EQ(file.getFileSize(), model.strBytes.size());
        }
    }
    file.close();
    EXPECT_TRUE(readWhole(temp / "a") == model.strBytes);
}

// ---- What lies at a path

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

// ---- Renaming and deleting

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

// ---- Copying

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
