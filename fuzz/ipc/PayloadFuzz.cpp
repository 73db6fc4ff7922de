// Any bytes as the payload of a document: the message takes what lies in front of the first zero byte for a text, reads
// nothing behind its end, and brings the listener what the parser makes of that text.
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/input/CCursor.h>
#include <Orlix/ipc/CDataTransfer.h>
#include <Orlix/ipc/CMsgDataTransfer.h>

#include "support/XMLCheck.h"

using namespace OrlixFuzz;

namespace {

class CReceiver : public Orlix::IDataTransferListener {
public:
    using IDataTransferListener::onLogicDataAvailable;
    void onTouchInputAvailable(const Orlix::CCursor&) override { m_strHeard += "touch"; }
    void onPageCMDAvailable(EOperationHandle, Orlix::CString) override { m_strHeard += "page"; }
    void onPopupCMDAvailable(EOperationHandle, Orlix::CString) override { m_strHeard += "popup"; }
    void onLogicDataAvailable(Orlix::CXMLParser* pParser) override {
        m_strHeard += "document";
        m_strDocument = describeDocument(*pParser, true);
    }
    std::string m_strHeard;
    std::wstring m_strDocument;
};

/** What the listener hears of a text, and how its document looks if that is handed on. */
std::string expectCall(const std::string& strText, std::wstring& strDocument) {
    Orlix::CString strWide;
    Orlix::CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strText.c_str()), strWide);
    Orlix::CXMLParser parser;
    if (!parser.parseFromString(strWide))
        return "";
    const Orlix::CXMLElement* const pRoot = parser.getRootElement();
    if (pRoot->hasChild(L"touch_input"))
        return "touch";
    if (pRoot->hasChild(L"page_cmd"))
        return "page";
    if (pRoot->hasChild(L"popup_cmd"))
        return "popup dropped";
    strDocument = describeDocument(parser, true);
    return "document";
}

/** @return the type of the message. */
Orlix::CBaseMessage::EMessageType deliver(Orlix::CDataTransfer& transfer, const std::string& strPayload) {
    const auto pBytes = copyExactly(reinterpret_cast<const unsigned char*>(strPayload.data()), strPayload.size());
    Orlix::CMsgDataTransfer message(&transfer, pBytes.get(), static_cast<unsigned int>(strPayload.size()), true);
    message.handleMessage();
    return message.getType();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    const std::string strPayload(pData, pData + uiSize);
    std::wstring strDocument;
    const std::string strCall = expectCall(toTerminated(pData, uiSize), strDocument);
    const bool bBuiltIn = !strCall.empty() && strCall != "document";
    {
        Orlix::CDataTransfer transfer;
        for (const std::string& strBytes : {strPayload, strPayload + '\0'}) {
            CReceiver receiver;
            transfer.setListener(&receiver);
            const auto eType = deliver(transfer, strBytes);
            FUZZ_CHECK((eType == Orlix::CBaseMessage::MESSAGE_TOUCH) == bBuiltIn);
            FUZZ_CHECK(receiver.m_strHeard == (strCall == "popup dropped" ? "" : strCall));
            FUZZ_CHECK(receiver.m_strDocument == strDocument);
        }
    }
    Orlix::CDataTransfer::deleteAllInstance();
    return 0;
}
