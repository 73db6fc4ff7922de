// Any bytes as what a connection brings, in chunks of their own choice: what arrives and what is held is what the model
// says. Each byte either begins a chunk of as many bytes, switches the raw mode, or is a new connection.
#include "ipc/CFrameModel.h"
#include "ipc/COpenTransfer.h"
#include "support/DrainCenter.h"
#include "support/FuzzText.h"

#include <algorithm>

using namespace OrlixFuzz;

namespace {

constexpr std::uint8_t SWITCH_RAW = 255;
constexpr std::uint8_t RECONNECT = 254;

class CReceiver : public Orlix::IDataTransferListener {
public:
    using IDataTransferListener::onLogicDataAvailable;
    void onLogicDataAvailable(Orlix::CArrayPtr<unsigned char> aryData) override {
        m_vecBlock.emplace_back(aryData.getArray(), aryData.getArray() + aryData.getSize());
    }
    std::vector<std::string> m_vecBlock;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    CReceiver receiver;
    OrlixTest::CFrameModel model;
    std::vector<std::string> vecExpected;
    {
        OrlixTest::COpenTransfer transfer(&receiver);
        bool bRaw = false;
        const std::uint8_t* const pEnd = pData + uiSize;
        while (pData != pEnd) {
            const std::uint8_t uiStep = *pData++;
            if (uiStep == SWITCH_RAW) {
                bRaw = !bRaw;
                transfer.setRawConnection(bRaw);
                continue;
            }
            if (uiStep == RECONNECT) {
                transfer.onConnect(static_cast<Orlix::CSocketServer*>(nullptr), 1);
                model.m_strHeld.clear();
                continue;
            }
            const std::size_t uiCount = std::min<std::size_t>(uiStep, static_cast<std::size_t>(pEnd - pData));
            const auto pChunk = copyExactly(pData, uiCount);
            const std::string strChunk(pChunk.get(), pChunk.get() + uiCount);
            pData += uiCount;
            transfer.parseData(pChunk.get(), static_cast<unsigned int>(uiCount));
            if (!bRaw)
                model.feed(strChunk);
            else if (uiCount != 0)
                model.m_vecPayload.push_back({false, strChunk});
            FUZZ_CHECK(transfer.getHeld() == model.m_strHeld);
        }
        OrlixTest::drainCenter();
    }
    for (const OrlixTest::tagPayload& payload : model.m_vecPayload)
        if (!payload.bXML)
            vecExpected.push_back(payload.strBytes);
    FUZZ_CHECK(receiver.m_vecBlock == vecExpected);
    Orlix::CDataTransfer::deleteAllInstance();
    return 0;
}
