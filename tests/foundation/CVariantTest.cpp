#include <Orlix/foundation/CVariant.h>

#include <Orlix/foundation/CString.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Orlix;
using OrlixTest::runInChild;

namespace {

static_assert(sizeof(CVariant) == 24 && !std::is_polymorphic<CVariant>::value, "three fields and no base");
static_assert(!std::is_constructible<CVariant, const int*>::value, "a pointer is no bool");
static_assert(!std::is_constructible<CVariant, CString>::value && !std::is_constructible<CVariant, long long>::value,
              "neither is nor becomes one of the types");
static_assert(!std::is_constructible<CVariant, std::vector<bool>::reference>::value, "it would become an int");

/** Sees and sets what has no operation. */
class CVariantProbe : public CVariant {
public:
    using CVariant::CVariant;
    using CVariant::operator=;
    void setType(unsigned int uiType) { m_eType = static_cast<EType>(uiType); }
    void* getBlock() const { return m_pArray; }
    const unsigned char* getValueBytes() const { return m_aryValue; }
    std::ptrdiff_t getValueOffset() const { return offsetOf(m_aryValue); }
    std::ptrdiff_t getArrayOffset() const { return offsetOf(&m_pArray); }
    std::ptrdiff_t getTypeOffset() const { return offsetOf(&m_eType); }

private:
    std::ptrdiff_t offsetOf(const void* pField) const {
        return static_cast<const char*>(pField) - reinterpret_cast<const char*>(this);
    }
};

template <class T> class CVariantOf : public testing::Test {};

typedef testing::Types<wchar_t, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                       unsigned long, float, double, bool>
    TNumbers;

struct tagTypeName {
    template <class T> static std::string GetName(int) { return "Tag" + std::to_string(CVariant(T()).getType()); }
};
TYPED_TEST_SUITE(CVariantOf, TNumbers, tagTypeName);

template <class T> T someValue() { return static_cast<T>(std::numeric_limits<T>::max() / 2 + T(1)); }

template <class T> std::vector<T> valuesOf(const CVariant& variant) {
    const T* const pArray = variant.getArray<T>();
    return std::vector<T>(pArray, pArray + variant.getCount());
}

TYPED_TEST(CVariantOf, KeepsANumber) {
    typedef TypeParam T;
    for (const T tValue : {std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max(), someValue<T>(), T()}) {
        const CVariant built(tValue);
        EXPECT_EQ(built.get<T>(), tValue);
        CVariant assigned;
        assigned = tValue;
        EXPECT_EQ(assigned.get<T>(), tValue);
        EXPECT_EQ(assigned.getType(), built.getType());
        const CVariant copied(built);
        EXPECT_EQ(copied.get<T>(), tValue);
        EXPECT_EQ(copied.getType(), built.getType());
        CVariant copy(someValue<T>());
        copy.copyFrom(built);
        EXPECT_EQ(copy.get<T>(), tValue);
        EXPECT_EQ(built.getCount(), 0u);
        EXPECT_EQ(built.getArray<T>(), nullptr);
    }
}

TYPED_TEST(CVariantOf, KeepsACopyOfAnArray) {
    typedef TypeParam T;
    T aryValue[] = {someValue<T>(), T(), std::numeric_limits<T>::max()};
    const std::vector<T> aryExpected(aryValue, aryValue + 3);
    const CVariant built(aryValue, 3);
    CVariant filled;
    filled.copyFrom(aryValue, 3);
    const CVariant copied(built);
    CVariant assigned(1);
    assigned = built;
    aryValue[0] = T();
    for (const CVariant* pVariant :
         {&built, &copied, static_cast<const CVariant*>(&filled), static_cast<const CVariant*>(&assigned)}) {
        EXPECT_EQ(pVariant->getCount(), 3u);
        EXPECT_EQ(valuesOf<T>(*pVariant), aryExpected);
        EXPECT_EQ(pVariant->getType(), built.getType());
        EXPECT_EQ(pVariant->get<T>(), T()) << "an array is no number";
    }
    EXPECT_NE(copied.getArray<T>(), built.getArray<T>());
}

TYPED_TEST(CVariantOf, AnArrayMayBeEmpty) {
    typedef TypeParam T;
    const T tValue = T();
    const CVariant built(&tValue, 0);
    const CVariant null(static_cast<const T*>(nullptr), 5);
    for (const CVariant* pVariant : {&built, &null}) {
        EXPECT_EQ(pVariant->getCount(), 0u);
        EXPECT_NE(pVariant->getArray<T>(), nullptr);
        EXPECT_EQ(pVariant->getType(), CVariant(tValue).getType() + 14);
    }
}

TYPED_TEST(CVariantOf, ItselfAndItsOwnArrayAreCopiedRight) {
    typedef TypeParam T;
    const T aryValue[] = {T(), someValue<T>(), std::numeric_limits<T>::max()};
    const std::vector<T> aryExpected(aryValue, aryValue + 3);
    CVariant variant(aryValue, 3);
    const CVariant& self = variant;
    const T* const pArray = variant.getArray<T>();
    variant = self;
    EXPECT_EQ(variant.getArray<T>(), pArray) << "assigned to itself it keeps its very array";
    variant.copyFrom(self);
    EXPECT_EQ(valuesOf<T>(variant), aryExpected);
    variant.copyFrom(variant.getArray<T>(), 3);
    EXPECT_EQ(valuesOf<T>(variant), aryExpected);
    variant.copyFrom(variant.getArray<T>() + 1, 2);
    EXPECT_EQ(valuesOf<T>(variant), (std::vector<T>{aryExpected[1], aryExpected[2]}));
    variant = someValue<T>();
    variant = self;
    variant.copyFrom(self);
    EXPECT_EQ(variant.get<T>(), someValue<T>());
}

TYPED_TEST(CVariantOf, ACountThatWrapsIsNoMemory) {
    typedef TypeParam T;
    constexpr unsigned int MOST = 4294967295u;
    const T tValue = T();
    for (const unsigned int uiCount : {MOST, MOST / static_cast<unsigned int>(sizeof(T))}) {
        CVariant variant(&tValue, 1);
        variant.copyFrom(&tValue, uiCount);
        EXPECT_EQ(variant.getType(), CVariant::TYPE_EMPTY);
        EXPECT_EQ(variant.getArray<T>(), nullptr);
        EXPECT_EQ(variant.getCount(), 0u);
    }
}

TEST(CVariant, TheTagsAreNumbered) {
    const struct {
        unsigned int uiNumber;
        CVariant scalar;
    } aryRow[] = {{0, CVariant()},
                  {1, CVariant(L'x')},
                  {2, CVariant(static_cast<signed char>(1))},
                  {3, CVariant(static_cast<unsigned char>(1))},
                  {4, CVariant(static_cast<short>(1))},
                  {5, CVariant(static_cast<unsigned short>(1))},
                  {6, CVariant(1)},
                  {7, CVariant(1u)},
                  {10, CVariant(1L)},
                  {11, CVariant(1UL)},
                  {12, CVariant(1.0f)},
                  {13, CVariant(1.0)},
                  {14, CVariant(true)},
                  {15, CVariant(L"x", 1)},
                  {16, CVariant(static_cast<const signed char*>(nullptr), 0)},
                  {17, CVariant(static_cast<const unsigned char*>(nullptr), 0)},
                  {18, CVariant(static_cast<const short*>(nullptr), 0)},
                  {19, CVariant(static_cast<const unsigned short*>(nullptr), 0)},
                  {20, CVariant(static_cast<const int*>(nullptr), 0)},
                  {21, CVariant(static_cast<const unsigned int*>(nullptr), 0)},
                  {24, CVariant(static_cast<const long*>(nullptr), 0)},
                  {25, CVariant(static_cast<const unsigned long*>(nullptr), 0)},
                  {26, CVariant(static_cast<const float*>(nullptr), 0)},
                  {27, CVariant(static_cast<const double*>(nullptr), 0)},
                  {28, CVariant(static_cast<const bool*>(nullptr), 0)}};
    for (const auto& row : aryRow)
        EXPECT_EQ(row.scalar.getType(), row.uiNumber);
    EXPECT_EQ(CVariant::TYPE_WCHAR, 1u);
    EXPECT_EQ(CVariant::TYPE_CHAR, 2u);
    EXPECT_EQ(CVariant::TYPE_LONG, 10u);
    EXPECT_EQ(CVariant::TYPE_BOOL, 14u);
    EXPECT_EQ(CVariant::TYPE_WCHAR_ARRAY, 15u);
    EXPECT_EQ(CVariant::TYPE_UINT_ARRAY, 21u);
    EXPECT_EQ(CVariant::TYPE_LONG_ARRAY, 24u);
    EXPECT_EQ(CVariant::TYPE_BOOL_ARRAY, 28u);
}

TEST(CVariant, TheFieldsAreInOrder) {
    const CVariantProbe probe;
    EXPECT_EQ(probe.getValueOffset(), 0);
    EXPECT_EQ(probe.getArrayOffset(), 8);
    EXPECT_EQ(probe.getTypeOffset(), 16);
    const int aryValue[] = {1, 2, 3};
    const CVariantProbe array(aryValue, 3);
    unsigned int uiCount = 0;
    std::memcpy(&uiCount, array.getValueBytes(), sizeof(uiCount));
    EXPECT_EQ(uiCount, 3u) << "the low half of the value";
}

TEST(CVariant, GivesAValueOnlyForItsOwnType) {
    const CVariant variant(5);
    EXPECT_EQ(variant.get<int>(), 5);
    EXPECT_EQ(variant.get<unsigned int>(), 0u);
    EXPECT_EQ(variant.get<long>(), 0);
    EXPECT_EQ(variant.get<bool>(), false);
    const CVariant array(L"ab", 2);
    EXPECT_STREQ(array.getArray<wchar_t>(), L"ab");
    EXPECT_EQ(array.getArray<int>(), nullptr);
    EXPECT_EQ(CVariant().get<int>(), 0);
    EXPECT_EQ(CVariant().getArray<int>(), nullptr);
}

TEST(CVariant, ANumberOfAnotherTypeIsPromoted) {
    enum EPlain { PLAIN = -7 };
    enum EFixed : unsigned int { FIXED = 7 };
    const CVariant aryInt[] = {'x', PLAIN, u'x'}, aryUInt[] = {FIXED, U'x'};
    for (const CVariant& variant : aryInt)
        EXPECT_EQ(variant.getType(), CVariant::TYPE_INT);
    for (const CVariant& variant : aryUInt)
        EXPECT_EQ(variant.getType(), CVariant::TYPE_UINT);
    EXPECT_EQ(aryInt[0].get<int>(), 120);
    EXPECT_EQ(aryInt[1].get<int>(), -7);
    CVariant assigned(L"abc", 3);
    assigned = 'y';
    EXPECT_EQ(assigned.get<int>(), 121);
}

TEST(CVariant, OnlyCharactersGetATerminator) {
    CVariant variant(L"abcdef", 3);
    EXPECT_STREQ(variant.getArray<wchar_t>(), L"abc");
    const CVariant copied(variant);
    EXPECT_STREQ(copied.getArray<wchar_t>(), L"abc");
    variant.copyFrom(L"", 0);
    EXPECT_STREQ(variant.getArray<wchar_t>(), L"");
}

/** A block of the size that the variant is about to ask for, filled and given back: the pool hands it out next. */
void dirtyBlock(unsigned int uiSize) {
    void* const pBlock = CMemory::malloc(uiSize, 0);
    std::memset(pBlock, 0x5A, uiSize);
    CMemory::free(pBlock);
}

TEST(CVariant, AnArrayHasOneElementMoreThanItHolds) {
    const int aryValue[] = {1, 2, 3};
    dirtyBlock(16);
    const CVariant variant(aryValue, 3);
    const int* const pArray = variant.getArray<int>();
    EXPECT_EQ(pArray[2], 3);
    EXPECT_EQ(pArray[3], 0x5A5A5A5A) << "as it came";
}

TEST(CVariant, ANumberReplacesAnArray) {
    CVariant variant(L"abc", 3); // the counting of units at the end of each test finds an array that stays behind
    variant = 5;
    EXPECT_EQ(variant.get<int>(), 5);
    EXPECT_EQ(variant.getCount(), 0u);
    variant.copyFrom(L"abc", 3);
    variant = CVariant(6);
    EXPECT_EQ(variant.get<int>(), 6);
    variant = CVariant(L"def", 3);
    variant.copyFrom(L"ghi", 3);
    variant.copyFrom(CVariant(L"jkl", 3));
    EXPECT_STREQ(variant.getArray<wchar_t>(), L"jkl");
    variant.clear();
    EXPECT_EQ(variant.getType(), CVariant::TYPE_EMPTY);
    EXPECT_EQ(variant.getArray<wchar_t>(), nullptr);
    variant.clear();
    variant = CVariant();
    EXPECT_EQ(variant.getType(), CVariant::TYPE_EMPTY);
}

// The copy of a number does not clear first, on purpose: that is for operator=. The array is lost.
TEST(CVariant, CopyingANumberOverAnArrayLeavesTheArrayBehind) {
    CVariantProbe variant(L"abc", 3);
    void* const pBlock = variant.getBlock();
    variant.copyFrom(CVariant(5));
    EXPECT_EQ(variant.get<int>(), 5);
    EXPECT_EQ(variant.getBlock(), pBlock);
    EXPECT_STREQ(static_cast<const wchar_t*>(pBlock), L"abc") << "not freed";
    variant.clear();
    EXPECT_STREQ(static_cast<const wchar_t*>(pBlock), L"abc") << "not even now";
    CMemory::free(pBlock);
}

TYPED_TEST(CVariantOf, ANumberIsCopiedByItsWidth) {
    const TypeParam tValue = someValue<TypeParam>();
    CVariantProbe variant(-1L);
    variant.copyFrom(CVariant(tValue));
    unsigned char aryExpected[8];
    std::memset(aryExpected, 0xFF, sizeof(aryExpected));
    std::memcpy(aryExpected, &tValue, sizeof(tValue));
    EXPECT_EQ(std::memcmp(variant.getValueBytes(), aryExpected, sizeof(aryExpected)), 0);
}

TEST(CVariant, AFreeTagIsTakenOverWithoutAValue) {
    for (const unsigned int uiType : {0u, 8u, 9u, 22u, 23u, 29u, 1000u, 4294967295u}) {
        CVariantProbe odd(-1L);
        odd.setType(uiType);
        CVariantProbe copied(5L);
        copied.copyFrom(odd);
        EXPECT_EQ(copied.getType(), uiType);
        copied.setType(CVariant::TYPE_LONG);
        EXPECT_EQ(copied.get<long>(), 5) << uiType;
        CVariant assigned(L"abc", 3);
        assigned = odd;
        EXPECT_EQ(assigned.getType(), uiType);
        EXPECT_EQ(assigned.getCount(), 0u);
        EXPECT_EQ(CVariant(odd).getType(), uiType);
    }
}

TEST(CVariant, IsAllocatedByTheLibrarysRoute) {
    CVariant* const pVariant = new CVariant(L"abc", 3);
    EXPECT_EQ(pVariant->getCount(), 3u);
    delete pVariant;
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CVariant, WithoutMemoryItBecomesEmpty) {
    EXPECT_EQ(runInChild([] {
                  constexpr unsigned int COUNT = 1 << 24; // more than the heap of a process that ran other tests keeps
                  static int s_aryLarge[COUNT];
                  CVariant variant(1L), large(s_aryLarge, COUNT);
                  if (!OrlixTest::limitMemory(1 << 19))
                      return 1;
                  variant.copyFrom(s_aryLarge, COUNT);
                  if (variant.getType() != CVariant::TYPE_EMPTY || variant.getArray<int>())
                      return 2;
                  const CVariant copied(large), built(s_aryLarge, COUNT);
                  if (copied.getType() != CVariant::TYPE_EMPTY || built.getType() != CVariant::TYPE_EMPTY)
                      return 3;
                  large.copyFrom(large.getArray<int>(), COUNT);
                  return large.getType() == CVariant::TYPE_EMPTY && large.getCount() == 0 ? 0 : 4;
              }).iExitCode,
              0);
}
#endif
} // namespace
