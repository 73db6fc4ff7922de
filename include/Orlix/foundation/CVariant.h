#pragma once

#include <Orlix/foundation/CObject.h>

#include <cstring>
#include <type_traits>
#include <utility>

namespace Orlix {

/** One number, or one copied array of numbers, and the tag that says which.
 *
 *  Values go in through the constructors, operator= and copyFrom, for the types of the tags; a single number of another
 *  type goes in as what C++ promotes it to, a char as an int. A pointer is no bool.
 *  Threads: no lock, one at a time. Ownership: arrays are copied, in and out of other variants. */
class ORLIX_API CVariant {
    ORLIX_HEAP_CLASS(L"CVariant")

public:
    /** An array's tag is that of its elements and 14 more. 8, 9, 22 and 23 are free. */
    enum EType : unsigned int {
        TYPE_EMPTY = 0,
        TYPE_WCHAR = 1,
        TYPE_CHAR = 2, ///< signed char
        TYPE_UCHAR = 3,
        TYPE_SHORT = 4,
        TYPE_USHORT = 5,
        TYPE_INT = 6,
        TYPE_UINT = 7,
        TYPE_LONG = 10,
        TYPE_ULONG = 11,
        TYPE_FLOAT = 12,
        TYPE_DOUBLE = 13,
        TYPE_BOOL = 14,
        TYPE_WCHAR_ARRAY = 15,
        TYPE_CHAR_ARRAY = 16,
        TYPE_UCHAR_ARRAY = 17,
        TYPE_SHORT_ARRAY = 18,
        TYPE_USHORT_ARRAY = 19,
        TYPE_INT_ARRAY = 20,
        TYPE_UINT_ARRAY = 21,
        TYPE_LONG_ARRAY = 24,
        TYPE_ULONG_ARRAY = 25,
        TYPE_FLOAT_ARRAY = 26,
        TYPE_DOUBLE_ARRAY = 27,
        TYPE_BOOL_ARRAY = 28
    };

private:
    template <class T> static constexpr EType typeOf() noexcept {
        return std::is_same<T, wchar_t>::value          ? TYPE_WCHAR
               : std::is_same<T, signed char>::value    ? TYPE_CHAR
               : std::is_same<T, unsigned char>::value  ? TYPE_UCHAR
               : std::is_same<T, short>::value          ? TYPE_SHORT
               : std::is_same<T, unsigned short>::value ? TYPE_USHORT
               : std::is_same<T, int>::value            ? TYPE_INT
               : std::is_same<T, unsigned int>::value   ? TYPE_UINT
               : std::is_same<T, long>::value           ? TYPE_LONG
               : std::is_same<T, unsigned long>::value  ? TYPE_ULONG
               : std::is_same<T, float>::value          ? TYPE_FLOAT
               : std::is_same<T, double>::value         ? TYPE_DOUBLE
               : std::is_same<T, bool>::value           ? TYPE_BOOL
                                                        : TYPE_EMPTY;
    }

    template <class T> static constexpr EType arrayTypeOf() noexcept {
        return static_cast<EType>(typeOf<T>() + (TYPE_WCHAR_ARRAY - TYPE_WCHAR));
    }

    template <class T> using TIfNumber = std::enable_if_t<typeOf<T>() != TYPE_EMPTY>;
    // What would be chosen among one function per type. Not for classes: what those convert to may be narrower.
    template <class T, class = std::enable_if_t<!std::is_class_v<T>>>
    using TNumberOf = std::conditional_t<typeOf<T>() != TYPE_EMPTY, T, decltype(+std::declval<T>())>;

public:
    /** Empty. */
    CVariant() noexcept : m_aryValue{}, m_pArray(nullptr), m_eType(TYPE_EMPTY) {}
    template <class T, class TNumber = TNumberOf<T>, class = TIfNumber<TNumber>>
    CVariant(T tValue) noexcept : CVariant() {
        setScalar<TNumber>(tValue);
    }
    /** Copies an array, as copyFrom does. */
    template <class T, class = TIfNumber<T>> CVariant(const T* pSource, unsigned int uiCount) : CVariant() {
        copyFrom(pSource, uiCount);
    }
    CVariant(const CVariant& other) : CVariant() { copyFrom(other); }
    ~CVariant() { clear(); }

    template <class T, class TNumber = TNumberOf<T>, class = TIfNumber<TNumber>>
    CVariant& operator=(T tValue) noexcept {
        clear();
        setScalar<TNumber>(tValue);
        return *this;
    }
    CVariant& operator=(const CVariant& other);

    /** Becomes a copy of an array; characters get a terminator behind them. Without memory it becomes empty.
     *  @param pSource may lie in its own array; null is an array of no elements. */
    template <class T, class = TIfNumber<T>> void copyFrom(const T* pSource, unsigned int uiCount) {
        copyArray(pSource, uiCount, arrayTypeOf<T>());
    }
    /** Takes another one's tag and value; a free tag comes without a value.
     *  Unlike operator= it does not clear first for the copy of a single number: its own array is then LOST. */
    void copyFrom(const CVariant& other);
    /** Makes it empty and frees its array. */
    void clear() noexcept;

    EType getType() const noexcept { return m_eType; }

    /** @return the number if its type is exactly T; otherwise T(). */
    template <class T> T get() const noexcept {
        static_assert(typeOf<T>() != TYPE_EMPTY, "not a type of the tags");
        T tValue = T();
        if (m_eType == typeOf<T>())
            std::memcpy(&tValue, m_aryValue, sizeof(T));
        return tValue;
    }

    /** @return the array, still owned here, until the next change; null if its elements are not exactly T. */
    template <class T> const T* getArray() const noexcept {
        static_assert(typeOf<T>() != TYPE_EMPTY, "not a type of the tags");
        return m_eType == arrayTypeOf<T>() ? static_cast<const T*>(m_pArray) : nullptr;
    }

    /** The elements of the array; 0 if there is none. */
    unsigned int getCount() const noexcept;

protected:
    alignas(8) unsigned char m_aryValue[8]; // a number from its first byte on, or an array's count in the first four
    void* m_pArray;                         // owned while the tag is an array's
    EType m_eType;

private:
    template <class T> void setScalar(T tValue) noexcept {
        std::memcpy(m_aryValue, &tValue, sizeof(T));
        m_eType = typeOf<T>();
    }

    void copyArray(const void* pSource, unsigned int uiCount, EType eType);
};
} // namespace Orlix
