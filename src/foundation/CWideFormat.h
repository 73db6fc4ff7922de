#pragma once

#include <Orlix/foundation/CString.h>

#include <cstdarg>
#include <cstddef>

namespace Orlix {

/** A format in which "%s" stands for a wide text. There is no escape, on purpose: "%%s" is rewritten too. */
class CWideFormat {
public:
    explicit CWideFormat(const wchar_t* pFormat);
    CWideFormat(const CWideFormat&) = delete;
    CWideFormat& operator=(const CWideFormat&) = delete;

    /** The format for the C library; null without memory. */
    const wchar_t* get() const noexcept { return m_pFormat; }

    /** Formats into a buffer that fits; blank when vscwprintf gives -1 and without memory. get() is not null. */
    CString render(va_list listArgs) const;

private:
    static constexpr std::size_t SHORT_FORMAT = 256;

    const wchar_t* m_pFormat;
    CString m_strLong;
    wchar_t m_aryShort[SHORT_FORMAT / 2 * 3 + 1]; // each "%s" grows by one character

    void rewriteShort(const wchar_t* pFound);
};
} // namespace Orlix
