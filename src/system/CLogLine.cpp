#include "system/CLogLine.h"

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CFile.h>

#include "foundation/CTextBuffer.h"

#include <cstdio>
#include <cwchar>

namespace Orlix {
namespace {

constexpr std::size_t LONGEST_LINE = 524287; // characters; formatting gives up above

struct tagPart {
    const wchar_t* pText;
    std::size_t uiLength;

    explicit tagPart(const wchar_t* pGiven) : pText(pGiven), uiLength(pGiven ? std::wcslen(pGiven) : 0) {}
};

wchar_t* put(wchar_t* pTarget, const tagPart& part) { return CTextBuffer::put(pTarget, part.pText, part.uiLength); }

template <std::size_t uiSize> wchar_t* put(wchar_t* pTarget, const wchar_t (&aryLiteral)[uiSize]) {
    return CTextBuffer::put(pTarget, aryLiteral, uiSize - 1);
}

/** What printf makes of a format that gets no arguments. @param pTarget room for as much as there is in pFormat. */
void renderFormat(const wchar_t* pFormat, wchar_t* pTarget) {
    while (*pFormat != L'\0') {
        const bool bEscaped = pFormat[0] == L'%' && pFormat[1] == L'%';
        *pTarget++ = *pFormat;
        pFormat += bEscaped ? 2 : 1;
        if (bEscaped && *pFormat == L's') // printf rewrites every "%s", the one in "%%s" too
            *pTarget++ = L'l';
    }
    *pTarget = L'\0';
}
} // namespace

struct CLogLine::tagParts {
    tagPart level, source, text;

    unsigned int countLine() const {
        constexpr std::size_t FRAME = 7; // [][] and the blank, CR LF
        const std::size_t uiLength = level.uiLength + source.uiLength + text.uiLength + FRAME;
        return uiLength <= LONGEST_LINE ? static_cast<unsigned int>(uiLength) : 0;
    }
};

CLogLine::CLogLine(const wchar_t* pLevel, const wchar_t* pSource, const wchar_t* pText)
    : CLogLine(tagParts{tagPart(pLevel), tagPart(pSource), tagPart(pText)}) {}

CLogLine::CLogLine(const tagParts& parts) : m_uiLength(parts.countLine()), m_text(m_uiLength + 1) {
    wchar_t* pWrite = m_text.get();
    if (!pWrite)
        return;
    if (m_uiLength != 0) {
        pWrite = put(put(pWrite, L"["), parts.level);
        pWrite = put(put(pWrite, L"]["), parts.source);
        pWrite = put(put(put(pWrite, L"] "), parts.text), L"\r\n");
    }
    *pWrite = L'\0';
}

void CLogLine::print() const {
    if (!m_text.get())
        return;
    if (!std::wmemchr(m_text.get(), L'%', m_uiLength)) {
        std::fputws(m_text.get(), stdout);
        return;
    }
    CText rendered(m_uiLength + 1);
    if (!rendered.get())
        return;
    renderFormat(m_text.get(), rendered.get());
    std::fputws(rendered.get(), stdout);
}

void CLogLine::writeTo(CFile& file) const {
    const unsigned int uiBytes = m_uiLength * 2;
    CShortBuffer<unsigned char, SHORT_LINE * 2> bytes(uiBytes);
    if (!m_text.get() || !bytes.get())
        return;
    CStringConverter::convertToUTF16(m_text.get(), bytes.get(), uiBytes);
    file.writeData(bytes.get(), uiBytes);
}
} // namespace Orlix
