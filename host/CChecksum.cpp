#include "CChecksum.h"

#include <array>

namespace {

constexpr std::uint32_t POLYNOMIAL = 0xEDB88320; // the lowest bit goes first

constexpr std::array<std::uint32_t, 256> makeTable() {
    std::array<std::uint32_t, 256> aryTable{};
    for (std::uint32_t uiByte = 0; uiByte < aryTable.size(); ++uiByte) {
        std::uint32_t uiValue = uiByte;
        for (int iBit = 0; iBit < 8; ++iBit)
            uiValue = uiValue >> 1 ^ (uiValue & 1 ? POLYNOMIAL : 0);
        aryTable[uiByte] = uiValue;
    }
    return aryTable;
}

constexpr std::array<std::uint32_t, 256> TABLE = makeTable();
} // namespace

std::uint32_t CChecksum::compute(const unsigned char* pData, std::size_t uiSize) noexcept {
    std::uint32_t uiValue = 0xFFFFFFFF;
    for (std::size_t i = 0; i < uiSize; ++i)
        uiValue = uiValue >> 8 ^ TABLE[(uiValue ^ pData[i]) & 0xFF];
    return ~uiValue;
}
