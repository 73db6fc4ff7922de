#pragma once

#include <cstddef>
#include <cstdint>

/** CRC-32 as zlib and gzip make it, so that what the host prints can be compared with other tools. */
class CChecksum {
public:
    /** @param pData may be null if uiSize is 0. @return 0 for no bytes. */
    static std::uint32_t compute(const unsigned char* pData, std::size_t uiSize) noexcept;
};
