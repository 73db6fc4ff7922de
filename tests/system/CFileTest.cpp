#include <Orlix/system/CFile.h>

#include <Orlix/system/CImpFile.h>

#include "support/Descriptors.h"
#include "support/FileSystem.h"
#include "support/FullDisk.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <random>
#include <string>
#include <type_traits>
#include <unistd.h>

using namespace Orlix;
using OrlixTest::countDescriptors;
using OrlixTest::CTempFolder;
using OrlixTest::exists;
using OrlixTest::makeLongPath;
using OrlixTest::randomBytes;
using OrlixTest::readWhole;
using OrlixTest::runWithFullDisk;
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
} // namespace
