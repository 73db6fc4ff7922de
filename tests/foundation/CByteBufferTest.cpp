#include <Orlix/foundation/CByteBuffer.h>

#include "support/ChildProcess.h"
#include "support/LogSettings.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using namespace Orlix;
using OrlixTest::CLogRecorder;
using OrlixTest::runInChild;

namespace {

static_assert(std::is_base_of<CObject, CByteBuffer>::value, "the library's root");
static_assert(!std::is_copy_constructible<CByteBuffer>::value && !std::is_copy_assignable<CByteBuffer>::value, "");
static_assert(!std::is_convertible<unsigned int, CByteBuffer>::value, "a number is no buffer");

const std::vector<std::wstring> NO_MEMORY{L"[Error][OrlixEngine] Out of memory."};

unsigned char* bytesOf(std::string& strBytes) { return reinterpret_cast<unsigned char*>(strBytes.data()); }

void write(CByteBuffer& buffer, const std::string& strBytes) {
    buffer.writeBuffer(reinterpret_cast<const unsigned char*>(strBytes.data()),
                       static_cast<unsigned int>(strBytes.size()));
}

std::string read(CByteBuffer& buffer, unsigned int uiCount) {
    std::string strBytes(uiCount, '#');
    strBytes.resize(buffer.readBuffer(bytesOf(strBytes), uiCount));
    return strBytes;
}

std::string contentOf(const CByteBuffer& buffer) {
    return buffer.getSize() == 0 ? std::string()
                                 : std::string(reinterpret_cast<const char*>(buffer.buffer()), buffer.getSize());
}

/** Size, capacity and position in a row. */
std::vector<unsigned int> stateOf(const CByteBuffer& buffer) {
    return {buffer.getSize(), buffer.getCapacity(), buffer.getPosition()};
}

typedef std::vector<unsigned int> TState;

/** Runs fnBody in a process of its own, where the memory layer reports blocks that are freed in error.
 *  @return the reports. */
template <class F> std::string reportsOf(F fnBody) {
    const OrlixTest::tagChildResult result = runInChild([&] { return fnBody(), 0; });
    return result.iExitCode == 0 ? result.strOutput : "crashed " + result.strOutput;
}

unsigned char* allocBytes(const std::string& strBytes) {
    void* const pBlock = CMemory::malloc(static_cast<unsigned int>(strBytes.size()), 0);
    std::memcpy(pBlock, strBytes.data(), strBytes.size());
    return static_cast<unsigned char*>(pBlock);
}

class CByteBufferProbe : public CByteBuffer {
public:
    /** How far behind the object's start each field lies, in the order of their declaration. */
    std::vector<std::ptrdiff_t> getOffsets() const {
        std::vector<std::ptrdiff_t> aryOffset;
        for (const void* pField : {static_cast<const void*>(&m_pBuffer), static_cast<const void*>(&m_bOwn),
                                   static_cast<const void*>(&m_uiCapacity), static_cast<const void*>(&m_uiSize),
                                   static_cast<const void*>(&m_uiIncrement), static_cast<const void*>(&m_uiPosition)})
            aryOffset.push_back(static_cast<const char*>(pField) - reinterpret_cast<const char*>(this));
        return aryOffset;
    }
    bool isOwn() const { return m_bOwn; }
};

TEST(CByteBuffer, TheFieldsAreInOrder) {
    const std::ptrdiff_t iFirst = sizeof(CObject);
    EXPECT_EQ(CByteBufferProbe().getOffsets(),
              (std::vector<std::ptrdiff_t>{iFirst, iFirst + 8, iFirst + 12, iFirst + 16, iFirst + 20, iFirst + 24}));
}

TEST(CByteBuffer, OwnsItsBlockUntilOneIsAttachedWithout) {
    std::string strBlock("abc");
    CByteBufferProbe buffer;
    EXPECT_TRUE(buffer.isOwn());
    buffer.attachBuffer(bytesOf(strBlock), 3, 3, false);
    EXPECT_FALSE(buffer.isOwn());
    buffer.clear();
    EXPECT_FALSE(buffer.isOwn()) << "clearing leaves that as it is";
    buffer.detachBuffer();
    EXPECT_TRUE(buffer.isOwn());
    buffer.attachBuffer(allocBytes("abc"), 3, 3, true);
    EXPECT_TRUE(buffer.isOwn());
}

// ---- Size and growth

TEST(CByteBuffer, IsEmptyAtFirst) {
    const CByteBuffer buffer;
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), nullptr);
    EXPECT_EQ(buffer.bytesAvailable(), 0u);
}

TEST(CByteBuffer, IsBuiltWithZeroBytes) {
    const CByteBuffer buffer(10, 6);
    EXPECT_EQ(stateOf(buffer), (TState{10, 16, 0}));
    EXPECT_EQ(contentOf(buffer), std::string(10, '\0'));
    EXPECT_EQ(buffer.bytesAvailable(), 10u);
    EXPECT_EQ(CByteBuffer(1).getCapacity(), 1025u);
}

TEST(CByteBuffer, GrowsByTheIncrement) {
    CByteBuffer buffer(0, 16);
    write(buffer, "0123456789");
    EXPECT_EQ(stateOf(buffer), (TState{10, 26, 10}));
    write(buffer, std::string(16, 'x'));
    EXPECT_EQ(stateOf(buffer), (TState{26, 26, 26}));
    write(buffer, "y");
    EXPECT_EQ(stateOf(buffer), (TState{27, 43, 27})) << "linear, not by doubling";
    buffer.setIncrement(0);
    write(buffer, std::string(17, 'z'));
    EXPECT_EQ(stateOf(buffer), (TState{44, 44, 44})) << "exact";
    EXPECT_EQ(contentOf(buffer), "0123456789" + std::string(16, 'x') + "y" + std::string(17, 'z'));
}

TEST(CByteBuffer, ChangesItsSizeWithinTheCapacityInPlace) {
    CByteBuffer buffer(0, 4);
    write(buffer, "abcdef");
    const unsigned char* const pBlock = buffer.buffer();
    buffer.requstSize(2);
    EXPECT_EQ(stateOf(buffer), (TState{2, 10, 6})) << "the position stays";
    buffer.requstSize(10);
    EXPECT_EQ(stateOf(buffer), (TState{10, 10, 6}));
    EXPECT_EQ(contentOf(buffer), std::string("abcdef\0\0\0\0", 10)) << "what was cut off is still there";
    EXPECT_EQ(buffer.buffer(), pBlock);
    buffer.requstSize(0);
    EXPECT_EQ(stateOf(buffer), (TState{0, 10, 6}));
    EXPECT_EQ(buffer.buffer(), pBlock) << "nothing is freed";
}

TEST(CByteBuffer, AGrowthKeepsTheContentAndZeroesTheRest) {
    CByteBuffer buffer(0, 2);
    write(buffer, "abcdef");
    buffer.requstSize(3); // def is no content any more
    buffer.requstSize(20);
    EXPECT_EQ(stateOf(buffer), (TState{20, 22, 6}));
    EXPECT_EQ(contentOf(buffer), "abc" + std::string(17, '\0'));
}

TEST(CByteBuffer, ASizeOf0Clears) {
    CByteBuffer buffer(10, 16);
    buffer.setPosition(4);
    buffer.setSize(0);
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), nullptr);
    buffer.setSize(3);
    EXPECT_EQ(stateOf(buffer), (TState{3, 19, 0}));
}

TEST(CByteBuffer, ClearsToNoBlock) {
    CByteBuffer buffer;
    buffer.clear();
    write(buffer, "abc");
    buffer.clear();
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), nullptr);
}

TEST(CByteBuffer, ThePositionStaysWithinTheSize) {
    CByteBuffer buffer(10);
    const struct {
        unsigned int uiGiven, uiPosition;
    } aryRow[] = {{0, 0}, {9, 9}, {10, 10}, {11, 10}, {4294967295u, 10}, {3, 3}};
    for (const auto& row : aryRow) {
        buffer.setPosition(row.uiGiven);
        EXPECT_EQ(buffer.getPosition(), row.uiPosition);
        EXPECT_EQ(buffer.bytesAvailable(), 10 - row.uiPosition);
    }
}

// ---- Writing

TEST(CByteBuffer, WritingInTheMiddleCutsOffTheRest) {
    CByteBuffer buffer;
    write(buffer, "0123456789");
    buffer.setPosition(0);
    write(buffer, "ab");
    EXPECT_EQ(contentOf(buffer), "ab");
    EXPECT_EQ(buffer.getPosition(), 2u);
    buffer.requstSize(10);
    EXPECT_EQ(contentOf(buffer), "ab23456789") << "the block itself is as it was";
    buffer.setPosition(4);
    buffer.writeBYTE('c');
    EXPECT_EQ(contentOf(buffer), "ab23c");
}

TEST(CByteBuffer, WritingNothingEndsTheContentAtThePosition) {
    CByteBuffer buffer;
    write(buffer, "0123456789");
    buffer.setPosition(3);
    write(buffer, "");
    EXPECT_EQ(contentOf(buffer), "012");
    buffer.setPosition(1);
    buffer.writeBuffer(nullptr, 5);
    EXPECT_EQ(contentOf(buffer), "012") << "null is not even that";
    EXPECT_EQ(buffer.getPosition(), 1u);
    buffer.writeBuffer(nullptr, 0); // what an empty container hands over
    EXPECT_EQ(contentOf(buffer), "0");
    EXPECT_EQ(buffer.getPosition(), 1u);
}

TEST(CByteBuffer, TypedValuesAreTheirBytes) {
    const short sValue = -2;
    const unsigned short usValue = 0xABCD;
    const int iValue = std::numeric_limits<int>::min();
    const unsigned int uiValue = 0xDEADBEEF;
    const float fValue = -1.5f;
    const double dValue = 1e300;
    std::string strExpected(1, '\xFE');
    const auto append = [&](const void* pValue, std::size_t uiSize) {
        strExpected.append(static_cast<const char*>(pValue), uiSize);
    };
    append(&sValue, 2);
    append(&usValue, 2);
    append(&iValue, 4);
    append(&uiValue, 4);
    append(&fValue, 4);
    append(&dValue, 8);
    CByteBuffer buffer(0, 0); // each write grows
    CByteBuffer roomy(0, 100);
    for (CByteBuffer* pBuffer : {&buffer, &roomy}) {
        pBuffer->writeBYTE(0xFE);
        pBuffer->writeSHORT(sValue);
        pBuffer->writeUSHORT(usValue);
        pBuffer->writeINT(iValue);
        pBuffer->writeUINT(uiValue);
        pBuffer->writeFLOAT(fValue);
        pBuffer->writeDOUBLE(dValue);
        EXPECT_EQ(contentOf(*pBuffer), strExpected);
        EXPECT_EQ(pBuffer->getPosition(), 25u);
        pBuffer->setPosition(0);
        EXPECT_EQ(pBuffer->readBYTE(), 0xFE);
        EXPECT_EQ(pBuffer->readSHORT(), sValue);
        EXPECT_EQ(pBuffer->readUSHORT(), usValue);
        EXPECT_EQ(pBuffer->readINT(), iValue);
        EXPECT_EQ(pBuffer->readUINT(), uiValue);
        EXPECT_EQ(pBuffer->readFLOAT(), fValue);
        EXPECT_EQ(pBuffer->readDOUBLE(), dValue);
        EXPECT_EQ(pBuffer->bytesAvailable(), 0u);
    }
    EXPECT_EQ(buffer.getCapacity(), 25u);
}

TEST(CByteBuffer, DataMayLieInTheBuffer) {
    CByteBuffer buffer(0, 2);
    write(buffer, "0123456789");
    buffer.writeBuffer(buffer.buffer() + 2, 5); // grows: the block it lies in is given up
    EXPECT_EQ(contentOf(buffer), "012345678923456");
    buffer.setPosition(3);
    buffer.writeBuffer(buffer.buffer() + 1, 8); // overlaps itself
    EXPECT_EQ(contentOf(buffer), "01212345678");
}

// ---- Reading

TEST(CByteBuffer, ReadsWhatThereIs) {
    CByteBuffer buffer;
    write(buffer, "0123456789");
    EXPECT_EQ(read(buffer, 4), "");
    buffer.setPosition(0);
    EXPECT_EQ(read(buffer, 4), "0123");
    EXPECT_EQ(read(buffer, 0), "");
    EXPECT_EQ(buffer.readBuffer(nullptr, 4), 0u);
    EXPECT_EQ(buffer.getPosition(), 4u);
    EXPECT_EQ(read(buffer, 100), "456789");
    EXPECT_EQ(buffer.getPosition(), 10u);
    std::string strTarget(10, '#');
    buffer.setPosition(8);
    EXPECT_EQ(buffer.readBuffer(bytesOf(strTarget), 4294967295u), 2u);
    EXPECT_EQ(strTarget, "89########");
}

// The bytes go over one after the other, so what has been read already is read again.
TEST(CByteBuffer, ReadsForwardAlsoIntoItself) {
    CByteBuffer buffer;
    write(buffer, "0123456789");
    buffer.setPosition(0);
    EXPECT_EQ(buffer.readBuffer(buffer.buffer() + 3, 6), 6u);
    EXPECT_EQ(contentOf(buffer), "0120120129");
    EXPECT_EQ(buffer.getPosition(), 6u);
    buffer.setPosition(2);
    EXPECT_EQ(buffer.readBuffer(buffer.buffer(), 7), 7u);
    EXPECT_EQ(contentOf(buffer), "2012012129");
}

template <class T> void expectTooShort(T (CByteBuffer::*pRead)()) {
    for (unsigned int uiLeft = 0; uiLeft < sizeof(T); ++uiLeft) {
        CByteBuffer buffer;
        write(buffer, std::string(10, '\x7F'));
        buffer.setPosition(10 - uiLeft);
        EXPECT_EQ((buffer.*pRead)(), T()) << uiLeft;
        EXPECT_EQ(buffer.bytesAvailable(), 0u) << "the position moves on";
        EXPECT_EQ(buffer.getPosition(), 10u);
    }
    CByteBuffer buffer;
    write(buffer, std::string(sizeof(T), '\x7F'));
    buffer.setPosition(0);
    EXPECT_NE((buffer.*pRead)(), T());
    EXPECT_EQ(buffer.bytesAvailable(), 0u);
}

template <class T> auto noexceptAway(T (CByteBuffer::*pRead)() noexcept) -> T (CByteBuffer::*)() { return pRead; }

TEST(CByteBuffer, AValueThatIsCutShortReadsAs0) {
    expectTooShort(noexceptAway(&CByteBuffer::readSHORT));
    expectTooShort(noexceptAway(&CByteBuffer::readUSHORT));
    expectTooShort(noexceptAway(&CByteBuffer::readINT));
    expectTooShort(noexceptAway(&CByteBuffer::readUINT));
    expectTooShort(noexceptAway(&CByteBuffer::readFLOAT));
    expectTooShort(noexceptAway(&CByteBuffer::readDOUBLE));
}

TEST(CByteBuffer, ReadByteChecksNothing) {
    CByteBuffer buffer(0, 4);
    write(buffer, "abc");
    buffer.requstSize(1);
    buffer.setPosition(1);
    EXPECT_EQ(buffer.readBYTE(), 'b') << "behind the content, but in the block";
    EXPECT_EQ(buffer.readBYTE(), 'c');
    EXPECT_EQ(buffer.readBYTE(), 0);
    EXPECT_EQ(buffer.getPosition(), 4u);
}

TEST(CByteBuffer, APositionAboveTheSizeReadsNothing) {
    CByteBuffer buffer;
    write(buffer, "0123456789");
    buffer.requstSize(4);
    EXPECT_EQ(buffer.getPosition(), 10u);
    EXPECT_EQ(buffer.bytesAvailable(), 4294967290u);
    EXPECT_EQ(read(buffer, 3), "");
    EXPECT_EQ(buffer.readINT(), 0);
    EXPECT_EQ(buffer.readDOUBLE(), 0.0);
    EXPECT_EQ(buffer.getPosition(), 10u);
    write(buffer, "x");
    EXPECT_EQ(contentOf(buffer), "0123456789x");
}

// ---- Blocks of the caller's

TEST(CByteBuffer, TakesOverABlock) {
    CByteBuffer buffer(5, 3);
    unsigned char* const pBlock = allocBytes("abcdef");
    buffer.attachBuffer(pBlock, 6, 4, true);
    EXPECT_EQ(stateOf(buffer), (TState{4, 6, 0}));
    EXPECT_EQ(buffer.buffer(), pBlock);
    EXPECT_EQ(read(buffer, 10), "abcd");
    write(buffer, "gh");
    EXPECT_EQ(buffer.buffer(), pBlock);
    write(buffer, "i");
    EXPECT_EQ(stateOf(buffer), (TState{7, 10, 7}));
    EXPECT_EQ(contentOf(buffer), "abcdghi");
    EXPECT_NE(buffer.buffer(), pBlock) << "grown, and the block freed";
}

TEST(CByteBuffer, UsesABlockThatItDoesNotOwn) {
    std::string strBlock("abcdef");
    CByteBuffer buffer(5, 3);
    buffer.attachBuffer(bytesOf(strBlock), 6, 2, false);
    buffer.setPosition(2);
    write(buffer, "CDEF");
    EXPECT_EQ(strBlock, "abCDEF");
    buffer.requstSize(7);
    EXPECT_EQ(stateOf(buffer), (TState{6, 6, 6})) << "it cannot grow";
    buffer.setSize(7);
    EXPECT_EQ(buffer.getSize(), 6u);
    buffer.requstSize(3);
    EXPECT_EQ(stateOf(buffer), (TState{3, 6, 6}));
    buffer.clear();
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), bytesOf(strBlock)) << "still there";
}

// Not prevented, on purpose: the size stays, and the caller has to know how much room there is.
TEST(CByteBuffer, WritesBeyondTheCapacityOfABlockThatItDoesNotOwn) {
    std::string strBlock("abcdefghijkl");
    CByteBuffer buffer;
    buffer.attachBuffer(bytesOf(strBlock), 4, 2, false);
    write(buffer, "ABCDEF");
    EXPECT_EQ(strBlock, "ABCDEFghijkl");
    EXPECT_EQ(stateOf(buffer), (TState{2, 4, 6}));
    buffer.writeSHORT(0x4747);
    EXPECT_EQ(strBlock, "ABCDEFGGijkl");
    EXPECT_EQ(stateOf(buffer), (TState{2, 4, 8}));
    EXPECT_EQ(read(buffer, 4), "");
    buffer.clear();
    write(buffer, "xy");
    EXPECT_EQ(strBlock, "xyCDEFGGijkl") << "and so it is after clearing";
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 2}));
}

TEST(CByteBuffer, WithoutABlockThatItDoesNotOwnNothingIsWritten) {
    CByteBuffer buffer(5);
    buffer.attachBuffer(nullptr, 100, 50, false);
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    write(buffer, "abc");
    buffer.writeINT(1);
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    buffer.attachBuffer(nullptr, 100, 50, true);
    write(buffer, "abc");
    EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(CByteBuffer, AttachingFreesTheOwnBlockBefore) {
    CByteBuffer buffer(5); // the counting of units at the end of each test finds a block that is not
    std::string strBlock("abc");
    buffer.attachBuffer(allocBytes("abcdef"), 6, 6, true);
    buffer.attachBuffer(bytesOf(strBlock), 3, 3, false);
    buffer.attachBuffer(allocBytes("ghi"), 3, 3, true);
    EXPECT_EQ(contentOf(buffer), "ghi");
}

TEST(CByteBuffer, AttachingTheBlockThatIsAttachedFreesNothing) {
    EXPECT_EQ(reportsOf([] {
                  CByteBuffer buffer;
                  write(buffer, "abc");
                  buffer.attachBuffer(buffer.buffer(), 3, 2, true);
                  if (contentOf(buffer) != "ab")
                      std::abort();
                  buffer.clear();
              }),
              "");
}

TEST(CByteBuffer, DetachingFreesAnOwnBlock) {
    CByteBuffer buffer(5);
    buffer.detachBuffer();
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), nullptr);
    write(buffer, "abc");
    EXPECT_EQ(contentOf(buffer), "abc");
}

// Kept as it is: the next growth frees a block that was never the buffer's own.
TEST(CByteBuffer, AGrowthFreesADetachedBlock) {
    CByteBuffer buffer(0, 16);
    unsigned char* const pBlock = allocBytes("abcdef");
    buffer.attachBuffer(pBlock, 6, 6, false);
    buffer.detachBuffer();
    EXPECT_EQ(stateOf(buffer), (TState{0, 0, 0}));
    EXPECT_EQ(buffer.buffer(), pBlock) << "nothing is freed at once";
    EXPECT_EQ(std::memcmp(pBlock, "abcdef", 6), 0);
    buffer.writeBuffer(pBlock + 2, 3); // reads it before that
    EXPECT_EQ(contentOf(buffer), "cde");
    EXPECT_EQ(stateOf(buffer), (TState{3, 19, 3}));
    EXPECT_NE(buffer.buffer(), pBlock);
}

TEST(CByteBuffer, ClearingAndAttachingFreeADetachedBlockToo) {
    CByteBuffer buffer;
    buffer.attachBuffer(allocBytes("abcdef"), 6, 6, false);
    buffer.detachBuffer();
    buffer.clear();
    EXPECT_EQ(buffer.buffer(), nullptr);
    buffer.attachBuffer(allocBytes("abcdef"), 6, 6, false);
    buffer.detachBuffer();
    std::string strBlock("abc");
    buffer.attachBuffer(bytesOf(strBlock), 3, 3, false);
    EXPECT_EQ(contentOf(buffer), "abc");
}

TEST(CByteBuffer, ABlockThatIsDetachedAndNotWrittenAgainStaysTheCallers) {
    EXPECT_EQ(reportsOf([] {
                  unsigned char* const pBlock = allocBytes("abcdef");
                  CByteBuffer* const pBuffer = new CByteBuffer;
                  pBuffer->attachBuffer(pBlock, 6, 6, false);
                  pBuffer->detachBuffer();
                  delete pBuffer;
                  CMemory::free(pBlock); // reported if it has been freed before
              }),
              "");
    unsigned char aryBlock[] = {1, 2, 3}; // not from CMemory, so freeing it would read what lies in front
    CByteBuffer buffer;
    buffer.attachBuffer(aryBlock, 3, 3, false);
    buffer.detachBuffer();
}

// ---- Moving to the head

TEST(CByteBuffer, MovesTheRestToTheHead) {
    const struct {
        unsigned int uiCount;
        const char* pContent;
    } aryRow[] = {{0, "0123456789"}, {1, "123456789"}, {3, "3456789"}, {5, "56789"},     {7, "789"},
                  {9, "9"},          {10, ""},         {11, ""},       {4294967295u, ""}};
    for (const auto& row : aryRow) {
        CByteBuffer buffer(0, 6);
        write(buffer, "0123456789");
        buffer.setPosition(4);
        buffer.moveToHead(row.uiCount);
        const unsigned int uiRest = static_cast<unsigned int>(std::strlen(row.pContent));
        EXPECT_EQ(contentOf(buffer), row.pContent);
        EXPECT_EQ(stateOf(buffer), (TState{uiRest, 16, uiRest})) << row.uiCount;
        write(buffer, "x");
        EXPECT_EQ(contentOf(buffer), std::string(row.pContent) + "x");
    }
    CByteBuffer empty;
    empty.moveToHead(0);
    empty.moveToHead(5);
    EXPECT_EQ(stateOf(empty), (TState{0, 0, 0}));
}

// ---- Plain bytes

TEST(CByteBuffer, CopiesForwardAlsoWithinABlock) {
    for (std::size_t uiFrom = 0; uiFrom < 45; ++uiFrom)
        for (std::size_t uiTo = 0; uiTo < 45; ++uiTo)
            for (const unsigned int uiCount : {0u, 1u, 5u, 15u, 16u, 17u, 22u, 23u, 24u, 55u}) {
                std::string strBlock(100, '\0'), strModel;
                for (std::size_t i = 0; i < strBlock.size(); ++i)
                    strBlock[i] = static_cast<char>(i);
                strModel = strBlock;
                for (std::size_t i = 0; i < uiCount; ++i)
                    strModel[uiTo + i] = strModel[uiFrom + i];
                CByteBuffer::memcopy(bytesOf(strBlock) + uiTo, bytesOf(strBlock) + uiFrom, uiCount);
                ASSERT_EQ(strBlock, strModel) << uiFrom << " to " << uiTo << ", " << uiCount;
            }
    std::string strBlock("abc");
    CByteBuffer::memcopy(nullptr, bytesOf(strBlock), 3);
    CByteBuffer::memcopy(bytesOf(strBlock), nullptr, 3);
    EXPECT_EQ(strBlock, "abc");
}

TEST(CByteBuffer, FillsWithTheLowByte) {
    std::string strBlock("abcdef");
    CByteBuffer::memclear(bytesOf(strBlock) + 1, 0x12345678, 3);
    EXPECT_EQ(strBlock, "axxxef");
    CByteBuffer::memclear(bytesOf(strBlock), -1, 1);
    CByteBuffer::memclear(bytesOf(strBlock) + 5, 0, 0);
    EXPECT_EQ(strBlock, "\xFFxxxef");
    CByteBuffer::memclear(nullptr, 0, 6);
}

// ---- No memory, and sizes that wrap

TEST(CByteBuffer, ASizeThatWrapsIsOutOfMemory) {
    const CLogRecorder recorder;
    CByteBuffer buffer(0, 16);
    write(buffer, "abc");
    buffer.requstSize(4294967295u - 15);
    EXPECT_EQ(recorder.getLines(), NO_MEMORY);
    buffer.setIncrement(4294967295u);
    buffer.setSize(20);
    EXPECT_EQ(recorder.getLines().size(), 2u);
    write(buffer, std::string(20, 'x'));
    buffer.requstSize(19);
    buffer.setPosition(19);
    buffer.writeINT(1);
    EXPECT_EQ(recorder.getLines().size(), 4u);
    EXPECT_EQ(stateOf(buffer), (TState{19, 19, 19}));
    EXPECT_EQ(contentOf(buffer).substr(0, 3), "abc");
}

TEST(CByteBuffer, APositionThatWrapsIsOutOfMemory) {
    const CLogRecorder recorder;
    std::string strBlock("abcdef");
    CByteBuffer own(0, 16), foreign;
    foreign.attachBuffer(bytesOf(strBlock), 6, 6, false);
    for (CByteBuffer* pBuffer : {&own, &foreign}) {
        pBuffer->setPosition(0);
        write(*pBuffer, "ABC");
        pBuffer->writeBuffer(bytesOf(strBlock), 4294967293u);
        EXPECT_EQ(contentOf(*pBuffer), "ABC");
        EXPECT_EQ(pBuffer->getPosition(), 3u);
    }
    EXPECT_EQ(strBlock, "ABCdef");
    EXPECT_EQ(recorder.getLines(), (std::vector<std::wstring>{NO_MEMORY[0], NO_MEMORY[0]}));
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CByteBuffer, WithoutMemoryNothingChanges) {
    const OrlixTest::tagChildResult result = runInChild([] {
        constexpr unsigned int LARGE = 1 << 26; // more than the heap of a process that ran other tests keeps
        CConfigParser::getInstance();
        CByteBuffer buffer(0, LARGE);
        const std::string strLarge(LARGE, 'x');
        write(buffer, "abc");
        write(buffer, strLarge.substr(3));
        if (!OrlixTest::limitMemory(1 << 19))
            return 1;
        write(buffer, strLarge);
        buffer.setSize(3 * LARGE);
        buffer.requstSize(4294967295u - LARGE);
        if (stateOf(buffer) != TState{LARGE, LARGE + 3, LARGE} || std::memcmp(buffer.buffer(), "abcxxx", 6) != 0)
            return 2;
        const CByteBuffer none(LARGE);
        return stateOf(none) == TState{0, 0, 0} && !none.buffer() ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
    const std::string strLine = "[Error][OrlixEngine] Out of memory.\r\n";
    EXPECT_EQ(result.strOutput, strLine + strLine + strLine + strLine);
}
#endif

// ---- Against a model

/** What the buffer does, byte by byte and without any hurry. */
class CBufferModel {
public:
    std::vector<unsigned char> aryBlock; // as long as the capacity
    unsigned int uiSize = 0, uiPosition = 0, uiIncrement = 0;
    bool bOwn = true;

    void resize(unsigned int uiNew) {
        if (uiNew > aryBlock.size()) {
            if (!bOwn)
                return;
            std::vector<unsigned char> aryNew(uiNew + uiIncrement);
            std::copy_n(aryBlock.begin(), uiSize, aryNew.begin());
            aryBlock = aryNew;
        }
        uiSize = uiNew;
    }
    void write(const std::string& strBytes) {
        resize(uiPosition + static_cast<unsigned int>(strBytes.size()));
        for (const char ch : strBytes)
            aryBlock[uiPosition++] = static_cast<unsigned char>(ch);
    }
    std::string read(unsigned int uiCount) {
        std::string strBytes;
        while (uiCount-- != 0 && uiPosition < uiSize)
            strBytes += static_cast<char>(aryBlock[uiPosition++]);
        return strBytes;
    }
    void clear() {
        if (bOwn)
            aryBlock.clear();
        uiSize = uiPosition = 0;
    }
    void moveToHead(unsigned int uiCount) {
        const unsigned int uiRest = uiCount < uiSize ? uiSize - uiCount : 0;
        for (unsigned int i = 0; i < uiRest; ++i)
            aryBlock[i] = aryBlock[i + uiCount];
        uiSize = uiPosition = uiRest;
    }
    std::string getContent() const { return std::string(aryBlock.begin(), aryBlock.begin() + uiSize); }
};

/** The value of the bytes, 0 if they are too few. */
template <class T> T valueOf(const std::string& strBytes) {
    T tValue = T();
    if (strBytes.size() == sizeof(T))
        std::memcpy(&tValue, strBytes.data(), sizeof(T));
    return tValue;
}

template <class T> std::string bytesOfValue(T tValue) {
    return std::string(reinterpret_cast<const char*>(&tValue), sizeof(T));
}

class CModelRun {
public:
    /** @param uiScale of all sizes: with a large one the blocks are larger than those of the pools. */
    CModelRun(unsigned int uiSeed, unsigned int uiScale) : m_random(uiSeed), m_uiScale(uiScale) {
        m_model.uiIncrement = m_random() % 40 * m_uiScale;
        m_buffer.setIncrement(m_model.uiIncrement);
    }

    void step() {
        const unsigned int uiNumber = static_cast<unsigned int>(m_random() % 60) * m_uiScale;
        switch (m_random() % 16) {
        case 0:
            return resize(uiNumber, m_random() % 2 == 0);
        case 1:
            return position(uiNumber);
        case 2:
            return increment(uiNumber * 2 / 3);
        case 3:
            return moveToHead(uiNumber);
        case 4:
            return m_random() % 8 == 0 ? clear() : attach(uiNumber);
        case 5:
            return writeValue(&CByteBuffer::writeBYTE, static_cast<unsigned char>(m_random()));
        case 6:
            return writeValue(&CByteBuffer::writeSHORT, static_cast<short>(m_random()));
        case 7:
            return writeValue(&CByteBuffer::writeUINT, static_cast<unsigned int>(m_random()));
        case 8:
            return writeValue(&CByteBuffer::writeDOUBLE, static_cast<double>(m_random()));
        case 9:
            return readValue(&CByteBuffer::readUSHORT);
        case 10:
            return readValue(&CByteBuffer::readINT);
        case 11:
            return readValue(&CByteBuffer::readDOUBLE);
        case 12:
            return readByte();
        case 13:
            return append(randomBytes(uiNumber));
        case 14:
            return appendOwn(uiNumber);
        default:
            EXPECT_EQ(read(m_buffer, uiNumber), m_model.read(uiNumber));
        }
    }

    void check() const {
        ASSERT_EQ(m_buffer.getSize(), m_model.uiSize);
        ASSERT_EQ(m_buffer.getCapacity(), m_model.aryBlock.size());
        ASSERT_EQ(m_buffer.getPosition(), m_model.uiPosition);
        ASSERT_EQ(m_buffer.bytesAvailable(), m_model.uiSize - m_model.uiPosition);
        ASSERT_EQ(contentOf(m_buffer), m_model.getContent());
    }

private:
    std::mt19937 m_random;
    const unsigned int m_uiScale;
    CByteBuffer m_buffer;
    CBufferModel m_model;
    std::string m_strForeign;

    std::string randomBytes(unsigned int uiCount) {
        std::string strBytes(uiCount, '\0');
        for (char& ch : strBytes)
            ch = static_cast<char>(m_random());
        return strBytes;
    }
    void resize(unsigned int uiSize, bool bSet) {
        bSet ? m_buffer.setSize(uiSize) : m_buffer.requstSize(uiSize);
        bSet&& uiSize == 0 ? forget() : m_model.resize(uiSize);
    }
    void position(unsigned int uiPosition) {
        m_buffer.setPosition(uiPosition);
        m_model.uiPosition = std::min(uiPosition, m_model.uiSize);
    }
    void increment(unsigned int uiIncrement) {
        m_buffer.setIncrement(uiIncrement);
        m_model.uiIncrement = uiIncrement;
    }
    void moveToHead(unsigned int uiCount) {
        m_buffer.moveToHead(uiCount);
        m_model.moveToHead(uiCount);
    }
    void clear() {
        m_buffer.clear();
        forget();
    }
    /** After clearing a block of the caller's only the writing behind its capacity is left; so one's own follows. */
    void forget() {
        if (!m_model.bOwn)
            m_buffer.attachBuffer(nullptr, 0, 0, true);
        m_model.bOwn = true;
        m_model.clear();
    }
    void attach(unsigned int uiCapacity) {
        m_model.bOwn = m_random() % 2 == 0;
        m_strForeign = randomBytes(uiCapacity + 1);
        m_model.aryBlock.assign(m_strForeign.begin(), m_strForeign.end());
        m_model.uiSize = static_cast<unsigned int>(m_random() % (uiCapacity + 2));
        m_model.uiPosition = 0;
        m_buffer.attachBuffer(m_model.bOwn ? allocBytes(m_strForeign) : bytesOf(m_strForeign), uiCapacity + 1,
                              m_model.uiSize, m_model.bOwn);
    }
    bool mayWrite(std::size_t uiCount) const {
        return m_model.bOwn || m_model.uiPosition + uiCount <= m_model.aryBlock.size();
    }
    void append(const std::string& strBytes) {
        if (!mayWrite(strBytes.size()))
            return;
        write(m_buffer, strBytes);
        m_model.write(strBytes);
    }
    /** What lies from some byte of the content to its end, once more. */
    void appendOwn(unsigned int uiNumber) {
        const std::string strContent = m_model.getContent();
        const unsigned int uiFrom = std::min(uiNumber, m_model.uiSize);
        const unsigned int uiCount = std::min(m_model.uiSize - uiFrom, 60 * m_uiScale);
        if (uiCount == 0 || !mayWrite(uiCount))
            return;
        m_buffer.writeBuffer(m_buffer.buffer() + uiFrom, uiCount);
        m_model.write(strContent.substr(uiFrom, uiCount));
    }
    template <class T> void writeValue(void (CByteBuffer::*pWrite)(T), T tValue) {
        if (!mayWrite(sizeof(T)))
            return;
        (m_buffer.*pWrite)(tValue);
        m_model.write(bytesOfValue(tValue));
    }
    template <class T> void readValue(T (CByteBuffer::*pRead)() noexcept) {
        const T tValue = (m_buffer.*pRead)();
        EXPECT_EQ(bytesOfValue(tValue), bytesOfValue(valueOf<T>(m_model.read(sizeof(T)))));
    }
    void readByte() {
        if (m_model.uiPosition < m_model.aryBlock.size()) {
            EXPECT_EQ(m_buffer.readBYTE(), m_model.aryBlock[m_model.uiPosition++]);
        }
    }
};

TEST(CByteBuffer, DoesWhatItsModelDoes) {
    for (unsigned int uiSeed = 0; uiSeed < 200; ++uiSeed) {
        SCOPED_TRACE(uiSeed);
        CModelRun run(uiSeed, uiSeed % 2 == 0 ? 1 : 50);
        for (int i = 0; i < 1000 && !testing::Test::HasFailure(); ++i) {
            run.step();
            run.check();
        }
    }
}
} // namespace
