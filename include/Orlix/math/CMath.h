#pragma once

#include <Orlix/foundation/OrlixApi.h>

#include <climits>
#include <cmath>

namespace Orlix {

/** The scalar operations and constants that the geometry stands on, in single precision.
 *
 *  Several differ from what their names suggest: roundUp, round, invSqrt, getNonZero and POS_INFINITY. All of that is
 *  meant; callers rely on it. What is not said otherwise goes to the system library, with its NaN and its error state.
 *  Where an int is made of a float, one that is NaN or out of range gives INT_MIN; integer arithmetic wraps.
 *  Threads: all pure but random, which shares the state of the system's generator and is not locked. */
class ORLIX_API CMath {
public:
    CMath() = delete;

    static constexpr float LOW_EPSILON = 0.001f;
    static constexpr float HIGH_EPSILON = 0x1p-23f; // the distance from 1 to the next float
    static constexpr float HALF_PI = 1.5707964f;
    static constexpr float PI = 3.1415927f;
    /** Negative in spite of its name, and finite: a mark for extents without end that no real one has. */
    static constexpr float POS_INFINITY = -10000.0f;

    /** The least int stays as it is. */
    static constexpr int abs(int iValue) noexcept { return iValue < 0 ? toSigned(0u - toUnsigned(iValue)) : iValue; }
    /** Changes the sign of what is below 0 and nothing else: -0 and NaN come back as they are. */
    static constexpr float abs(float fValue) noexcept { return 0.0f > fValue ? -fValue : fValue; }

    /** The first if it is below the second, otherwise the second; so with a NaN always the second. */
    static constexpr int getMin(int a, int b) noexcept { return a < b ? a : b; }
    static constexpr unsigned int getMin(unsigned int a, unsigned int b) noexcept { return a < b ? a : b; }
    static constexpr float getMin(float a, float b) noexcept { return a < b ? a : b; }

    /** The first if it is above the second, otherwise the second; so with a NaN always the second. */
    static constexpr int getMax(int a, int b) noexcept { return a > b ? a : b; }
    static constexpr unsigned int getMax(unsigned int a, unsigned int b) noexcept { return a > b ? a : b; }
    static constexpr float getMax(float a, float b) noexcept { return a > b ? a : b; }

    static constexpr void swap(int& a, int& b) noexcept { exchange(a, b); }
    static constexpr void swap(unsigned int& a, unsigned int& b) noexcept { exchange(a, b); }
    static constexpr void swap(float& a, float& b) noexcept { exchange(a, b); }

    /** Swaps only if the first is greater, so that the first ends up the smaller; a NaN stays where it is. */
    static constexpr void swapAtMinMax(int& a, int& b) noexcept { sort(a, b); }
    static constexpr void swapAtMinMax(unsigned int& a, unsigned int& b) noexcept { sort(a, b); }
    static constexpr void swapAtMinMax(float& a, float& b) noexcept { sort(a, b); }

    /** Brings a value into a range. With low above high the result is low; a NaN becomes high. */
    static constexpr int clamp(int iValue, int iLow, int iHigh) noexcept { return getMax(getMin(iValue, iHigh), iLow); }
    static constexpr unsigned int clamp(unsigned int uiValue, unsigned int uiLow, unsigned int uiHigh) noexcept {
        return getMax(getMin(uiValue, uiHigh), uiLow);
    }
    static constexpr float clamp(float fValue, float fLow, float fHigh) noexcept {
        return getMax(getMin(fValue, fHigh), fLow);
    }

    /** @return -1, 0 or 1; 0 for NaN. */
    static constexpr int sign(int iValue) noexcept { return (iValue > 0) - (iValue < 0); }
    static constexpr int sign(float fValue) noexcept { return (fValue > 0.0f) - (fValue < 0.0f); }

    /** Truncates toward zero, so a negative value goes up. */
    static constexpr int roundDown(float fValue) noexcept { return truncate(fValue); }
    /** Truncates toward zero and adds 1: a whole number goes up too, and -1.5 gives 0. */
    static constexpr int roundUp(float fValue) noexcept { return toSigned(toUnsigned(truncate(fValue)) + 1u); }
    /** Adds 0.5 in double precision and truncates toward zero: a negative half goes toward zero. */
    static constexpr int round(float fValue) noexcept { return truncate(static_cast<double>(fValue) + 0.5); }

    static constexpr bool isNaN(float fValue) noexcept { return fValue != fValue; }
    /** Nearer to 0 than the double 0.0001, so the float nearest to that, which lies below it, is zero. */
    static constexpr bool isZero(float fValue) noexcept { return static_cast<double>(abs(fValue)) < 0.0001; }
    /** Whether two values lie nearer than fEpsilon; false with a NaN. */
    static constexpr bool isEqual(float a, float b, float fEpsilon) noexcept { return fEpsilon > abs(a - b); }
    /** The negation of isEqual: true with a NaN. */
    static constexpr bool isNotEqual(float a, float b, float fEpsilon) noexcept { return !isEqual(a, b, fEpsilon); }
    /** The value, or 0.0001 if it is zero: positive also for a small negative one. */
    static constexpr float getNonZero(float fValue) noexcept { return isZero(fValue) ? 0.0001f : fValue; }

    /** Wraps like repeated multiplication in 32 bits. */
    static constexpr int pow(int iBase, unsigned int uiExponent) noexcept {
        return toSigned(pow(toUnsigned(iBase), uiExponent));
    }
    // By squaring: Knuth, The Art of Computer Programming 2, 4.6.3. A product that wraps is the same in any order.
    static constexpr unsigned int pow(unsigned int uiBase, unsigned int uiExponent) noexcept {
        unsigned int uiPower = 1;
        for (; uiExponent != 0; uiExponent >>= 1, uiBase *= uiBase) {
            if (uiExponent & 1)
                uiPower *= uiBase;
        }
        return uiPower;
    }
    /** Multiplies uiExponent times, rounding each product; another order would round differently. */
    static constexpr float pow(float fBase, unsigned int uiExponent) noexcept {
        float fPower = 1.0f;
        for (; uiExponent != 0; --uiExponent)
            fPower *= fBase;
        return fPower;
    }
    static float pow(int iBase, float fExponent) noexcept { return ::powf(static_cast<float>(iBase), fExponent); }
    static float pow(unsigned int uiBase, float fExponent) noexcept {
        return ::powf(static_cast<float>(uiBase), fExponent);
    }
    static float pow(float fBase, float fExponent) noexcept { return ::powf(fBase, fExponent); }

    static constexpr float sqr(float fValue) noexcept { return fValue * fValue; }
    /** NaN below 0, where the system library has set its error state. */
    static float sqrt(float fValue) noexcept { return ::sqrtf(fValue); }
    /** 1 divided by the value, not by its root, whatever the name promises; infinite for 0. */
    static constexpr float invSqrt(float fValue) noexcept { return 1.0f / fValue; }

    /** The remainder of a / b with the sign of a. */
    static float fmod(float a, float b) noexcept { return ::fmodf(a, b); }
    static float log(float fValue) noexcept { return ::logf(fValue); }
    static float log10(float fValue) noexcept { return ::log10f(fValue); }
    static float exp(float fValue) noexcept { return ::expf(fValue); }

    // Angles are in radians.
    static float sin(float fAngle) noexcept { return ::sinf(fAngle); }
    static float cos(float fAngle) noexcept { return ::cosf(fAngle); }
    static float tan(float fAngle) noexcept { return ::tanf(fAngle); }
    static float asin(float fValue) noexcept { return ::asinf(fValue); }
    static float acos(float fValue) noexcept { return ::acosf(fValue); }
    static float atan(float fValue) noexcept { return ::atanf(fValue); }
    static float atan2(float y, float x) noexcept { return ::atan2f(y, x); }
    static float sinh(float fValue) noexcept { return ::sinhf(fValue); }
    static float cosh(float fValue) noexcept { return ::coshf(fValue); }
    static float tanh(float fValue) noexcept { return ::tanhf(fValue); }

    /** Degrees from radians, by one product. */
    static constexpr float toAngle(float fRadians) noexcept { return fRadians * 57.29578f; }
    /** Radians from degrees, by a product and then a quotient: the order decides the last bit. */
    static constexpr float toRadian(float fDegrees) noexcept { return fDegrees * PI / 180.0f; }

    /** The next number of rand(). The first call seeds the generator with the time. */
    static int random();
    /** A number from iLow to iHigh, both included. The first call of this form seeds the generator once more. It is
     *  the caller's error if the count of numbers is 0 in 32 bits (iHigh one below iLow, or all ints); then it gives
     *  iLow. */
    static int random(int iLow, int iHigh);

private:
    static constexpr unsigned int toUnsigned(int iValue) noexcept { return static_cast<unsigned int>(iValue); }
    static constexpr int toSigned(unsigned int uiValue) noexcept { return static_cast<int>(uiValue); }

    template <class T> static constexpr void exchange(T& a, T& b) noexcept {
        const T kept = a;
        a = b;
        b = kept;
    }
    template <class T> static constexpr void sort(T& a, T& b) noexcept {
        if (a > b)
            exchange(a, b);
    }

    // NaN fails the test and takes the other way.
    template <class T> static constexpr int truncate(T tValue) noexcept {
        constexpr T LIMIT = 2147483648;
        return tValue < LIMIT && tValue > -LIMIT ? static_cast<int>(tValue) : INT_MIN;
    }
};
} // namespace Orlix
