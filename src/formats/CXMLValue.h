#pragma once

#include <Orlix/foundation/CString.h>

namespace Orlix {

/** An attribute's value as the reader makes it: a CString whose characters stand in the same block as itself, so that
 *  it costs one allocation and not two. It must never be changed, for a change would free the characters alone; the
 *  tree only hands it out for reading, and replaces it as a whole. */
class CXMLValue final : public CString {
public:
    /** @return a value of uiLength characters, terminated but otherwise to be written at pChars; null without memory.
     *  A length of 0 is no case for this: an empty value is a null string. */
    static CString* create(std::size_t uiLength, wchar_t*& pChars);

    ~CXMLValue() override {
        m_pBuffer = nullptr;
        m_uiLength = 0;
    }

private:
    CXMLValue(wchar_t* pChars, unsigned int uiLength) noexcept {
        m_pBuffer = pChars;
        m_uiLength = uiLength;
        pChars[uiLength] = 0;
    }
};
} // namespace Orlix
