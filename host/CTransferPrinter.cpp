#include "CTransferPrinter.h"

#include "CChecksum.h"
#include "TextOf.h"

#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/input/CCursor.h>

#include <string>

using namespace Orlix;

namespace {

/** Control characters, the two line ends of Unicode, and halves of characters, which no terminal's encoding has. */
bool breaksLine(wchar_t ch) {
    return ch < 0x20 || (ch >= 0x7F && ch < 0xA0) || ch == 0x2028 || ch == 0x2029 || (ch >= 0xD800 && ch < 0xE000);
}

std::wstring referTo(wchar_t ch) {
    if (ch == L'\r')
        return L"&cr;";
    if (ch == L'\n')
        return L"&lf;";
    return L"&#" + std::to_wstring(static_cast<long>(ch)) + L";";
}
} // namespace

void CTransferPrinter::onConnect() { CStringConverter::printf(L"connect\n"); }

void CTransferPrinter::onDisconnect() { CStringConverter::printf(L"disconnect\n"); }

void CTransferPrinter::onTouchInputAvailable(const CCursor& cursor) {
    CStringConverter::printf(L"touch id=%u x=%d y=%d dx=%d dy=%d vx=%d vy=%d status=%d t=%u\n", cursor.getID(),
                             cursor.getX(), cursor.getY(), cursor.getXDelta(), cursor.getYDelta(), cursor.getXSpeed(),
                             cursor.getYSpeed(), static_cast<int>(cursor.getTouchStatus()), cursor.getTimestamp());
}

void CTransferPrinter::onPageCMDAvailable(EOperationHandle eHandle, CString strPageName) {
    CStringConverter::printf(L"page handle=%d name=%s\n", static_cast<int>(eHandle), textOf(toLine(strPageName)));
}

void CTransferPrinter::onLogicDataAvailable(CXMLParser* pParser) {
    CString strDocument;
    pParser->saveToString(strDocument, false);
    CStringConverter::printf(L"xml %s\n", textOf(toLine(strDocument)));
}

void CTransferPrinter::onLogicDataAvailable(CArrayPtr<unsigned char> aryData) {
    CStringConverter::printf(L"binary %u bytes, crc32 %08X\n", aryData.getSize(),
                             CChecksum::compute(aryData.getArray(), aryData.getSize()));
}

CString CTransferPrinter::toLine(const CString& strText) {
    std::wstring strLine;
    for (const wchar_t* pText = textOf(strText); *pText != L'\0'; ++pText) {
        if (breaksLine(*pText))
            strLine += referTo(*pText);
        else
            strLine += *pText;
    }
    return CString(strLine.c_str());
}
