#pragma once

#include <cstdint>

namespace Orlix {

/** Tells quickly that a character cannot be in a table. */
class CCharFilter {
public:
    void add(wchar_t ch) noexcept {
        const std::uint32_t uiCode = static_cast<std::uint32_t>(ch);
        if (uiCode < 128)
            m_aryAscii[uiCode / 64] |= std::uint64_t(1) << uiCode % 64;
        else
            m_bOthers = true;
    }
    bool mayHave(wchar_t ch) const noexcept {
        const std::uint32_t uiCode = static_cast<std::uint32_t>(ch);
        return uiCode < 128 ? (m_aryAscii[uiCode / 64] >> uiCode % 64 & 1) != 0 : m_bOthers;
    }

private:
    std::uint64_t m_aryAscii[2] = {0, 0};
    bool m_bOthers = false; // a character above ASCII is in the table
};
} // namespace Orlix
