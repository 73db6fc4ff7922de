#include <Orlix/foundation/CArrayPtr.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

template <class T> T* allocate(unsigned int uiCount) {
    return static_cast<T*>(CMemory::malloc(static_cast<unsigned int>(uiCount * sizeof(T)), 0));
}

// A freed unit is the next one its pool hands out, which tells when, and that only once, a block was freed.
template <class T> void expectNextBlock(unsigned int uiCount, const void* pFreed) {
    T* const pFirst = allocate<T>(uiCount);
    T* const pSecond = allocate<T>(uiCount);
    EXPECT_EQ(pFirst, pFreed);
    EXPECT_NE(pSecond, pFreed) << "freed twice";
    CMemory::free(pSecond);
    CMemory::free(pFirst);
}

TEST(CArrayPtr, StartsEmpty) {
    const CArrayPtr<unsigned char> ary;
    EXPECT_EQ(ary.getArray(), nullptr);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_TRUE(ary.isEmpty());
}

TEST(CArrayPtr, HoldsItsBlockAndFreesItOnce) {
    wchar_t* const pBlock = allocate<wchar_t>(5);
    {
        const CArrayPtr<wchar_t> ary(pBlock, 5);
        EXPECT_EQ(ary.getArray(), pBlock);
        EXPECT_EQ(ary.getSize(), 5u);
        EXPECT_FALSE(ary.isEmpty());
        ary[4] = L'x';
        EXPECT_EQ(pBlock[4], L'x');
    }
    expectNextBlock<wchar_t>(5, pBlock);
}

TEST(CArrayPtr, TakesANullBlockWithItsCount) {
    const CArrayPtr<unsigned char> ary(nullptr, 3);
    EXPECT_TRUE(ary.isEmpty());
    EXPECT_EQ(ary.getSize(), 3u);
}

TEST(CArrayPtr, CopyEmptiesTheSource) {
    unsigned char* const pBlock = allocate<unsigned char>(9);
    CArrayPtr<unsigned char> arySource(pBlock, 9);
    const CArrayPtr<unsigned char> aryCopy(arySource);
    EXPECT_EQ(arySource.getArray(), nullptr);
    EXPECT_EQ(arySource.getSize(), 0u);
    EXPECT_EQ(aryCopy.getArray(), pBlock);
    EXPECT_EQ(aryCopy.getSize(), 9u);
}

unsigned int takeByValue(CArrayPtr<unsigned char> ary) { return ary.getSize(); }

TEST(CArrayPtr, PassingByValueLeavesTheSourceEmptyAndFreesOnce) {
    unsigned char* const pBlock = allocate<unsigned char>(9);
    CArrayPtr<unsigned char> ary(pBlock, 9);
    EXPECT_EQ(takeByValue(ary), 9u);
    EXPECT_TRUE(ary.isEmpty());
    EXPECT_EQ(ary.getSize(), 0u);
    expectNextBlock<unsigned char>(9, pBlock);
}

TEST(CArrayPtr, AssignmentFreesTheOldBlockAndTakesTheNew) {
    unsigned char* const pOld = allocate<unsigned char>(9);
    unsigned char* const pNew = allocate<unsigned char>(99);
    CArrayPtr<unsigned char> ary(pOld, 9);
    CArrayPtr<unsigned char> arySource(pNew, 99);
    ary = arySource;
    EXPECT_EQ(ary.getArray(), pNew);
    EXPECT_EQ(ary.getSize(), 99u);
    EXPECT_TRUE(arySource.isEmpty());
    EXPECT_EQ(arySource.getSize(), 0u);
    expectNextBlock<unsigned char>(9, pOld);
}

TEST(CArrayPtr, AssignmentTakesFromATemporary) {
    unsigned char* const pBlock = allocate<unsigned char>(9);
    CArrayPtr<unsigned char> ary;
    ary = CArrayPtr<unsigned char>(pBlock, 9);
    EXPECT_EQ(ary.getArray(), pBlock);
    EXPECT_EQ(ary.getSize(), 9u);
}

TEST(CArrayPtr, AssignmentOfItselfKeepsTheBlock) {
    unsigned char* const pBlock = allocate<unsigned char>(9);
    CArrayPtr<unsigned char> ary(pBlock, 9);
    const CArrayPtr<unsigned char>& arySelf = ary;
    ary = arySelf;
    EXPECT_EQ(ary.getArray(), pBlock);
    EXPECT_EQ(ary.getSize(), 9u);
}
} // namespace
