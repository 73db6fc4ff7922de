#pragma once

#include <cstddef>

namespace Orlix {

/** The byte work of UTF-8 with at most three bytes a character, for CStringConverter, whose header has the rules.
 *  Lengths are known beforehand, so no loop looks for a terminator. */
class CUTF8Codec {
public:
    /** Encodes until the source ends or the next character does not fit.
     *  @param uiRoom bytes that may be written. @return the bytes written; no terminator is. */
    static std::size_t encode(const wchar_t* pSource, std::size_t uiLength, unsigned char* pTarget, std::size_t uiRoom);

    /** @return how many characters decode writes at most; for well-formed bytes exactly as many. */
    static std::size_t countCharacters(const unsigned char* pSource, std::size_t uiLength);

    /** @param pTarget room for countCharacters. @return the characters written; no terminator is. */
    static std::size_t decode(const unsigned char* pSource, std::size_t uiLength, wchar_t* pTarget);
};
} // namespace Orlix
