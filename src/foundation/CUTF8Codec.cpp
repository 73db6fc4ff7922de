#include "foundation/CUTF8Codec.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Orlix {

namespace {

// Most text is ASCII, so both ways first try this many characters at once.
constexpr std::size_t BLOCK = 16;

constexpr std::size_t MIXED = BLOCK * 3;   // characters to encode one by one after a block that was not all ASCII
constexpr std::size_t CODE_BYTES_MOST = 3; // of one character

typedef std::uint8_t VBytes __attribute__((vector_size(BLOCK)));
typedef std::int8_t VSignedBytes __attribute__((vector_size(BLOCK)));
typedef std::uint64_t VPair __attribute__((vector_size(BLOCK)));
typedef std::uint16_t VShorts __attribute__((vector_size(BLOCK * 2)));
typedef std::uint32_t VWords __attribute__((vector_size(BLOCK * 4)));
static_assert(sizeof(wchar_t) == 4, "a character is a code point");

/** Makes sixteen characters of sixteen bytes if all are ASCII, otherwise nothing. */
bool widenAsciiBlock(const unsigned char* pSource, wchar_t* pTarget) {
    VBytes vBytes;
    std::memcpy(&vBytes, pSource, sizeof(vBytes));
    const VPair vPair = reinterpret_cast<VPair>(vBytes);
    if (((vPair[0] | vPair[1]) & 0x8080808080808080u) != 0)
        return false;
    // Through 16 bits, because in one step the compilers take the vector apart.
    const VWords vWords = __builtin_convertvector(__builtin_convertvector(vBytes, VShorts), VWords);
    std::memcpy(pTarget, &vWords, sizeof(vWords));
    return true;
}

/** The way back: stores nothing unless all sixteen are ASCII. */
bool narrowAsciiBlock(const wchar_t* pSource, unsigned char* pTarget) {
    std::uint64_t aryPair[BLOCK / 2];
    std::memcpy(aryPair, pSource, sizeof(aryPair));
    const std::uint64_t uiAll =
        (aryPair[0] | aryPair[1] | aryPair[2] | aryPair[3]) | (aryPair[4] | aryPair[5] | aryPair[6] | aryPair[7]);
    if ((uiAll & 0xFFFFFF80FFFFFF80u) != 0)
        return false;
    // With nothing but zeros above the lowest byte, 32 bits may be halved as if they were two numbers of 16 bits: that
    // is one instruction everywhere, and the order of the bytes does not matter.
    VShorts aryShorts[2];
    std::memcpy(aryShorts, pSource, sizeof(aryShorts));
    const VBytes aryHalved[2] = {__builtin_convertvector(aryShorts[0], VBytes),
                                 __builtin_convertvector(aryShorts[1], VBytes)};
    VShorts vHalved;
    std::memcpy(&vHalved, aryHalved, sizeof(vHalved));
    const VBytes vBytes = __builtin_convertvector(vHalved, VBytes);
    std::memcpy(pTarget, &vBytes, sizeof(vBytes));
    return true;
}

bool isContinuation(unsigned char uiByte) { return (uiByte & 0xC0u) == 0x80u; }

unsigned char toContinuation(std::uint32_t uiBits) { return static_cast<unsigned char>(0x80u | (uiBits & 0x3Fu)); }

/** @return behind the one to three bytes. */
unsigned char* putCode(std::uint32_t uiCode, unsigned char* pTarget) {
    if (uiCode < 0x80) {
        pTarget[0] = static_cast<unsigned char>(uiCode);
        return pTarget + 1;
    }
    if (uiCode < 0x800) {
        pTarget[0] = static_cast<unsigned char>(0xC0u | uiCode >> 6);
        pTarget[1] = toContinuation(uiCode);
        return pTarget + 2;
    }
    // There is no four-byte form: bits above the 16th are lost on purpose.
    pTarget[0] = static_cast<unsigned char>(0xE0u | (uiCode >> 12 & 0x0Fu));
    pTarget[1] = toContinuation(uiCode >> 6);
    pTarget[2] = toContinuation(uiCode);
    return pTarget + CODE_BYTES_MOST;
}
} // namespace

std::size_t CUTF8Codec::encode(const wchar_t* pSource, std::size_t uiLength, unsigned char* pTarget,
                               std::size_t uiRoom) {
    const wchar_t* const pEnd = pSource + uiLength;
    unsigned char* pWrite = pTarget;
    unsigned char* const pLimit = pTarget + uiRoom;
    while (pEnd - pSource >= std::ptrdiff_t(MIXED) && pLimit - pWrite >= std::ptrdiff_t(MIXED * CODE_BYTES_MOST)) {
        if (narrowAsciiBlock(pSource, pWrite)) {
            pSource += BLOCK;
            pWrite += BLOCK;
            continue;
        }
        // Where other characters are there are more: some go one by one before a block is tried again.
        for (const wchar_t* const pStop = pSource + MIXED; pSource != pStop; ++pSource)
            pWrite = putCode(static_cast<std::uint32_t>(*pSource), pWrite);
    }
    for (; pEnd - pSource >= std::ptrdiff_t(BLOCK) && pLimit - pWrite >= std::ptrdiff_t(BLOCK) &&
           narrowAsciiBlock(pSource, pWrite);
         pSource += BLOCK)
        pWrite += BLOCK;
    // Too little is left of either side to go on without looking.
    for (; pSource != pEnd; ++pSource) {
        const std::uint32_t uiCode = static_cast<std::uint32_t>(*pSource);
        const std::ptrdiff_t iNeeded = 1 + (uiCode >= 0x80) + (uiCode >= 0x800);
        if (pLimit - pWrite < iNeeded)
            break;
        pWrite = putCode(uiCode, pWrite);
    }
    return static_cast<std::size_t>(pWrite - pTarget);
}

std::size_t CUTF8Codec::countCharacters(const unsigned char* pSource, std::size_t uiLength) {
    // Each character that decode writes uses up one byte that is no continuation byte.
    constexpr std::size_t MOST_BLOCKS = 255; // after as many a lane of the sum is full
    const unsigned char* const pEnd = pSource + uiLength;
    std::size_t uiCount = 0;
    while (pEnd - pSource >= std::ptrdiff_t(BLOCK)) {
        VBytes vSum{};
        const std::size_t uiBlocks = std::min(static_cast<std::size_t>(pEnd - pSource) / BLOCK, MOST_BLOCKS);
        for (std::size_t i = 0; i < uiBlocks; ++i, pSource += BLOCK) {
            VSignedBytes vBytes;
            std::memcpy(&vBytes, pSource, sizeof(vBytes));
            vSum -= reinterpret_cast<VBytes>(vBytes >= -64); // a comparison that holds gives -1
        }
        for (std::size_t i = 0; i < BLOCK; ++i)
            uiCount += vSum[i];
    }
    for (; pSource != pEnd; ++pSource)
        uiCount += !isContinuation(*pSource);
    return uiCount;
}

std::size_t CUTF8Codec::decode(const unsigned char* pSource, std::size_t uiLength, wchar_t* pTarget) {
    const unsigned char* const pEnd = pSource + uiLength;
    wchar_t* pWrite = pTarget;
    while (pSource < pEnd) {
        while (pEnd - pSource >= std::ptrdiff_t(BLOCK) && widenAsciiBlock(pSource, pWrite)) {
            pSource += BLOCK;
            pWrite += BLOCK;
        }
        const unsigned char* const pStop = pSource + std::min<std::ptrdiff_t>(pEnd - pSource, BLOCK);
        while (pSource < pStop) {
            const unsigned int uiFirst = *pSource;
            if (uiFirst < 0x80) {
                *pWrite++ = static_cast<wchar_t>(uiFirst);
                ++pSource;
            } else if (uiFirst >= 0xE0) { // 0xF0 and above too: there is no four-byte form
                if (pEnd - pSource < 3)
                    return static_cast<std::size_t>(pWrite - pTarget);
                // What follows is taken without a look at it, on purpose: a lead byte always swallows its tail.
                *pWrite++ =
                    static_cast<wchar_t>((uiFirst & 0x0Fu) << 12 | (pSource[1] & 0x3Fu) << 6 | (pSource[2] & 0x3Fu));
                pSource += 3;
            } else if (uiFirst >= 0xC0) {
                if (pEnd - pSource < 2)
                    return static_cast<std::size_t>(pWrite - pTarget);
                *pWrite++ = static_cast<wchar_t>((uiFirst & 0x1Fu) << 6 | (pSource[1] & 0x3Fu));
                pSource += 2;
            } else {
                ++pSource; // a stray continuation byte is dropped
            }
        }
    }
    return static_cast<std::size_t>(pWrite - pTarget);
}
} // namespace Orlix
