#pragma once

#include "system/CShortBuffer.h"

namespace Orlix {

class CFile;

/** One line of the log, made of its parts. It is empty if it is too long to be formatted, and null without memory. */
class CLogLine {
public:
    /** @param pLevel null is an empty text; so are the others. */
    CLogLine(const wchar_t* pLevel, const wchar_t* pSource, const wchar_t* pText);
    CLogLine(const CLogLine&) = delete;
    CLogLine& operator=(const CLogLine&) = delete;

    /** Writes to standard output what printf makes of the line as a format, with the directives left standing. */
    void print() const;
    /** Writes UTF-16. */
    void writeTo(CFile& file) const;

private:
    static constexpr unsigned int SHORT_LINE = 512; // characters that need no heap

    typedef CShortBuffer<wchar_t, SHORT_LINE + 1> CText;
    struct tagParts;

    unsigned int m_uiLength;
    CText m_text; // terminated

    explicit CLogLine(const tagParts& parts);
};
} // namespace Orlix
