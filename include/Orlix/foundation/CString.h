#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CStringCore.h>

#include <cstddef>

namespace Orlix {

/** The library's text: one code point per element, in a buffer of its own that fits exactly.
 *
 *  A string without text is either null (no buffer: never given any, or emptied) or blank (a buffer with nothing but
 *  the terminator, as from an empty literal). isEmpty() tells them apart; both have length 0 and compare equal.
 *  An argument may lie in the string's own buffer. Without memory a change leaves the string null or as it was.
 *  Threads: none of its own; strings are copied, not shared. */
class ORLIX_API CString : public CObject {
    ORLIX_HEAP_CLASS(L"CString")

public:
    CString() noexcept : m_pBuffer(nullptr), m_uiLength(0) {}
    CString(std::nullptr_t) noexcept : CString() {}
    /** @param pText copied; null gives a null string, an empty text a blank one. */
    CString(const wchar_t* pText);
    /** Copies the lesser of the text's length and uiCount; blank if that is 0, also for a null text. */
    CString(const wchar_t* pText, unsigned int uiCount);
    CString(const CString& strOther);
    /** Takes the buffer; the source is null afterwards. */
    CString(CString&& strOther) noexcept : CObject(), m_pBuffer(strOther.m_pBuffer), m_uiLength(strOther.m_uiLength) {
        strOther.m_pBuffer = nullptr;
        strOther.m_uiLength = 0;
    }
    CString(int iValue);
    CString(unsigned int uiValue);
    CString(long lValue);
    /** Renders with 4 decimals. */
    CString(float fValue);
    /** Renders true or false. */
    CString(bool bValue);
    /** Keeps narrow literals and foreign pointers from becoming a bool. */
    CString(const void*) = delete;
    ~CString() override {
        if (m_pBuffer)
            CMemory::free(m_pBuffer);
    }

    CString& operator=(std::nullptr_t) noexcept {
        free();
        return *this;
    }
    CString& operator=(const wchar_t* pText);
    CString& operator=(const CString& strOther);
    /** Takes the buffer; the source is null afterwards. From itself nothing changes. */
    CString& operator=(CString&& strOther) noexcept;
    CString& operator=(int iValue);
    CString& operator=(unsigned int uiValue);
    CString& operator=(long lValue);
    CString& operator=(float fValue);
    CString& operator=(bool bValue);
    CString& operator=(const void*) = delete;

    /** The text, terminated, valid until the next change; null for a null string. */
    const wchar_t* getBuffer() const noexcept { return m_pBuffer; }
    /** Makes the string null. */
    void free() noexcept {
        if (m_pBuffer)
            CMemory::free(m_pBuffer);
        m_pBuffer = nullptr;
        m_uiLength = 0;
    }
    /** Makes the string null. */
    void empty() noexcept { free(); }
    /** Makes the string null. @return its buffer, which the caller gives back with CMemory::free; null if it was null.
     */
    wchar_t* detach() noexcept {
        wchar_t* const pBuffer = m_pBuffer;
        m_pBuffer = nullptr;
        m_uiLength = 0;
        return pBuffer;
    }
    /** Frees the buffer and takes over another. @param pBuffer a terminated block of CMemory; null makes the string
     *  null. @param iLength the characters before the terminator; negative to have them counted. */
    void attach(wchar_t* pBuffer, int iLength);
    /** Becomes a copy, as from the constructor with the same arguments. */
    void fromBuffer(const wchar_t* pText, unsigned int uiCount);
    /** Copies as much as fits and terminates it. @param uiSize elements of the target.
     *  @return the characters copied; 0, and the target is not touched, without text or with no room at all. */
    unsigned int toBuffer(wchar_t* pTarget, unsigned int uiSize) const noexcept;

    /** Whether the string is null; a blank string is not empty. */
    bool isEmpty() const noexcept { return m_pBuffer == nullptr; }
    unsigned int length() const noexcept { return m_uiLength; }
    /** The character, 0 at or beyond the length. */
    wchar_t charAt(unsigned int uiIndex) const noexcept { return uiIndex < m_uiLength ? m_pBuffer[uiIndex] : L'\0'; }
    unsigned int charCount(wchar_t ch) const noexcept { return CStringCore::charCount(m_pBuffer, m_uiLength, ch); }
    /** First index, -1 if there is none. */
    int indexOf(wchar_t ch) const noexcept { return CStringCore::findChar(m_pBuffer, m_uiLength, ch); }
    /** First match at or after uiStart, as an index into the whole string; -1 if there is none, if the pattern is empty
     *  and if the start lies beyond the text. */
    int indexOf(const wchar_t* pPattern, unsigned int uiStart = 0) const noexcept;
    int indexOf(const CString& strPattern, unsigned int uiStart = 0) const noexcept;
    /** Last index, -1 if there is none. */
    int lastIndexOf(wchar_t ch) const noexcept { return CStringCore::findLastChar(m_pBuffer, m_uiLength, ch); }
    /** Last match, -1 if there is none or the pattern is empty. */
    int lastIndexOf(const wchar_t* pPattern) const noexcept;
    int lastIndexOf(const CString& strPattern) const noexcept;
    /** Nothing begins with an empty text, not even an empty one. */
    bool startWith(const wchar_t* pPrefix) const noexcept { return CStringCore::strstart(m_pBuffer, pPrefix); }
    bool startWith(const CString& strPrefix) const noexcept { return startWith(strPrefix.m_pBuffer); }
    bool startWithIC(const wchar_t* pPrefix) const noexcept { return CStringCore::strstartIC(m_pBuffer, pPrefix); }
    bool startWithIC(const CString& strPrefix) const noexcept { return startWithIC(strPrefix.m_pBuffer); }
    /** @return -1, 0 or 1. */
    int compare(const wchar_t* pText) const noexcept { return CStringCore::strcmp(m_pBuffer, pText); }
    int compare(const CString& strOther) const noexcept { return compare(strOther.m_pBuffer); }
    int compareIC(const wchar_t* pText) const noexcept { return CStringCore::strcmpIC(m_pBuffer, pText); }
    int compareIC(const CString& strOther) const noexcept { return compareIC(strOther.m_pBuffer); }
    /** Compares from the last character backwards. @return -1, 0 or 1. */
    int compareReverse(const CString& strOther) const noexcept {
        return CStringCore::strrcmp(m_pBuffer, m_uiLength, strOther.m_pBuffer, strOther.m_uiLength);
    }
    int compareReverseIC(const CString& strOther) const noexcept {
        return CStringCore::strrcmpIC(m_pBuffer, m_uiLength, strOther.m_pBuffer, strOther.m_uiLength);
    }
    bool operator==(const wchar_t* pText) const noexcept { return compare(pText) == 0; }
    bool operator==(const CString& strOther) const noexcept { return compare(strOther) == 0; }
    bool operator!=(const wchar_t* pText) const noexcept { return compare(pText) != 0; }
    bool operator!=(const CString& strOther) const noexcept { return compare(strOther) != 0; }
    bool isNumberStart() const noexcept { return CStringCore::isNumberStart(m_pBuffer, m_uiLength); }
    /** The numbers that CStringConverter reads from the text; a null string reads as an empty text. */
    int toInt() const;
    unsigned int toUInt() const;
    long toLLong() const;
    float toFloat() const;
    bool toBool() const;
    /** A part of the text. @param uiCount 0, or more than there is, means up to the end.
     *  @return a null string if uiStart is at or beyond the length. */
    CString subString(unsigned int uiStart, unsigned int uiCount) const;
    /** The leading blanks, a null string if there are none. */
    CString getStartBlank() const;
    /** The number of leading blanks. */
    unsigned int getStarkBlankCount() const noexcept;
    /** A null string if both sides have length 0. */
    CString operator+(const wchar_t* pText) const;
    CString operator+(const CString& strOther) const;

    CString& append(const wchar_t* pText);
    /** The length grows by uiCount even if the text ends before: then the rest is filled with zeros. */
    CString& append(const wchar_t* pText, unsigned int uiCount);
    /** @param uiPos at or beyond the length appends the whole text, whatever uiCount says. @param uiCount characters of
     *  the text to insert, at most its length. */
    void insertString(unsigned int uiPos, const wchar_t* pText, unsigned int uiCount);
    void insertString(unsigned int uiPos, const wchar_t* pText);
    void insertString(unsigned int uiPos, const CString& strText);
    /** Deletes within the buffer, which keeps its size. @param uiCount may reach beyond the end. */
    void deleteString(unsigned int uiPos, unsigned int uiCount) noexcept;
    void replace(wchar_t chFrom, wchar_t chTo) noexcept { CStringCore::replace(m_pBuffer, m_uiLength, chFrom, chTo); }
    /** @param uiIndex stay below the length: an index equal to it overwrites the terminator. Above it, and on a null
     *  string, nothing happens. */
    void replaceAt(unsigned int uiIndex, wchar_t ch) noexcept;
    /** @param pFrom nothing happens if null or empty. @param pTo null is an empty text. */
    void replaceFirst(const wchar_t* pFrom, const wchar_t* pTo);
    /** Replaces matches from left to right; what was put in is not searched again.
     *  @param pFrom nothing happens if null or empty. @param pTo null is an empty text. */
    void replaceAll(const wchar_t* pFrom, const wchar_t* pTo);
    void toUppercase() noexcept { CStringCore::toUppercase(m_pBuffer, m_uiLength); }
    void toLowercase() noexcept { CStringCore::toLowercase(m_pBuffer, m_uiLength); }
    /** Strips blanks from the chosen ends. A string of blanks becomes blank, a null string stays null. */
    void trimBlank(bool bStart, bool bEnd);
    /** Strips a character from both ends. Unlike trimBlank it makes a null string blank; so do the next two. */
    void trim(wchar_t ch) { innerTrim(ch, true, true); }
    void trimStart(wchar_t ch) { innerTrim(ch, true, false); }
    void trimEnd(wchar_t ch) { innerTrim(ch, false, true); }

protected:
    wchar_t* m_pBuffer; // owned; m_uiLength + 1 elements, the last 0
    unsigned int m_uiLength;

private:
    void innerTrim(wchar_t ch, bool bStart, bool bEnd);
    void setCopy(const wchar_t* pText, unsigned int uiLength);
    void setBuffer(wchar_t* pBuffer, unsigned int uiLength) noexcept;
    CString concat(const wchar_t* pText, unsigned int uiLength) const;
    bool insertText(unsigned int uiPos, unsigned int uiRemoved, const wchar_t* pText, unsigned int uiLength);
};

/** A null string to refer to where there is no text. */
extern ORLIX_API const CString STRING_NULL;
} // namespace Orlix
