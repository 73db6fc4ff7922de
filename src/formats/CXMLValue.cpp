#include "formats/CXMLValue.h"

#include <climits>
#include <new>

namespace Orlix {

CString* CXMLValue::create(std::size_t uiLength, wchar_t*& pChars) {
    const std::size_t uiSize = sizeof(CXMLValue) + (uiLength + 1) * sizeof(wchar_t);
    void* const pBlock = uiSize <= UINT_MAX ? CString::operator new(uiSize) : nullptr;
    if (!pBlock)
        return nullptr;
    pChars = reinterpret_cast<wchar_t*>(static_cast<unsigned char*>(pBlock) + sizeof(CXMLValue));
    return ::new (pBlock) CXMLValue(pChars, static_cast<unsigned int>(uiLength));
}
} // namespace Orlix
