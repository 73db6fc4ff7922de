#pragma once

#include <Orlix/foundation/CByteBuffer.h>

#include <algorithm>

namespace Orlix {

/** The sign of life on a socket connection, as it is sent: the two bytes AF 00, without a header. */
class CHeartBeat {
    static constexpr unsigned short VALUE = 0xAF; // low byte first

public:
    static constexpr unsigned int BYTES = sizeof(VALUE);

    CHeartBeat() { m_buffer.writeUSHORT(VALUE); }
    const unsigned char* getBytes() const noexcept { return m_buffer.buffer(); }

    /** Whether a received chunk is nothing but a heartbeat: it begins with AF, and the first byte that is not AF is its
     *  last. So AF AF 00 is one too, and AF 01, and that is meant; AF alone is none. One that the network joined to
     *  other data is not recognised. @param iLength at least 1. */
    static bool isHeartBeat(const unsigned char* pChunk, int iLength) {
        const unsigned char* const pLast = pChunk + iLength - 1;
        return *pChunk == VALUE && std::find_if(pChunk, pLast, isOther) == pLast && isOther(*pLast);
    }

private:
    CByteBuffer m_buffer;

    static bool isOther(unsigned char ucByte) { return ucByte != VALUE; }
};
} // namespace Orlix
