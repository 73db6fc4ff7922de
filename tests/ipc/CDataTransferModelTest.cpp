#include "ipc/CFrameModel.h"
#include "ipc/DataTransferFixture.h"

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/Sanitizer.h"

#include <iterator>
#include <random>

using namespace Orlix;
using namespace OrlixTest;

// Random streams in random chunks, against a model that knows the frames by their description alone.

namespace {

#if defined(ORLIX_TEST_ASAN) || defined(ORLIX_TEST_TSAN)
constexpr unsigned int STREAMS = 10000;
#else
constexpr unsigned int STREAMS = 100000;
#endif

const std::string ZERO(1, '\0');

/** A stream of frames, most of them right. */
class CStreamMaker {
public:
    explicit CStreamMaker(unsigned int uiSeed) : m_random(uiSeed) {}

    std::string makeStream() {
        std::string strStream;
        for (unsigned int i = below(6); i != 0; --i)
            strStream += makePiece();
        if (strStream.size() > 1 && below(4) == 0)
            strStream[below(strStream.size())] = static_cast<char>(m_random());
        return strStream;
    }
    /** Cuts a stream into chunks of which none is longer than a random length, which often is 1. */
    std::vector<std::string> cut(const std::string& strStream) {
        const unsigned int uiLongest = 1 + below(2) * below(1 + below(100));
        std::vector<std::string> vecChunk;
        for (std::size_t uiAt = 0; uiAt < strStream.size(); uiAt += vecChunk.back().size())
            vecChunk.push_back(strStream.substr(uiAt, 1 + below(uiLongest)));
        return vecChunk;
    }

private:
    std::mt19937 m_random;

    unsigned int below(std::size_t uiEnd) { return static_cast<unsigned int>(m_random() % uiEnd); }

    std::string makeBytes(unsigned int uiCount) {
        std::string strBytes(uiCount, '\0');
        for (char& ch : strBytes)
            ch = static_cast<char>(m_random());
        return strBytes;
    }
    std::string makeText() {
        static const std::string aryText[] = {
            "<a/>" + ZERO,
            "<root><touch_input id=\"7\" x=\"1\" y=\"-2\"/></root>" + ZERO,
            "<root><page_cmd ope_handle=\"3\" page_name=\"p\"/></root>" + ZERO,
            "<root><popup_cmd ope_handle=\"3\"/></root>" + ZERO,
            "<r>text</r>" + ZERO + "<behind/>",
            "<unended>" + ZERO,
            "<no-zero/>",
            ZERO,
        };
        return aryText[below(std::size(aryText))];
    }
    std::string makePiece() {
        switch (below(16)) {
        case 0:
            return makeBytes(below(12)); // garbage
        case 1:
            return frameOf("", static_cast<char>(below(3)));
        case 2:
            return frameOf(makeBytes(4), 0, static_cast<char>(m_random())); // a reserved byte
        case 3:
            return std::string("IVEN\x02IVEN\x03", 10).substr(0, 5 * below(3)) + frameOf("skipped", 0);
        case 4: { // cut short
            const std::string strFrame = frameOf(makeBytes(1 + below(20)), 0);
            return strFrame.substr(0, below(strFrame.size()));
        }
        case 5: { // a length of its own
            std::string strFrame = frameOf(makeBytes(10), 0);
            strFrame[5 + below(4)] = static_cast<char>(m_random());
            return strFrame;
        }
        case 6:
        case 7:
        case 8:
        case 9:
            return frameOf(makeText(), 1);
        default:
            return frameOf(makeBytes(1 + below(40)), static_cast<char>(below(8) == 0 ? m_random() : 0));
        }
    }
};

/** Tells the kinds of the built-in documents only, apart from the rest: the two go through different lists. */
class CKindListener : public CTransferListener {
public:
    void onTouchInputAvailable(const CCursor&) override { m_vecInput.push_back("touch"); }
    void onPageCMDAvailable(EOperationHandle, CString) override { m_vecInput.push_back("page"); }
    VecCall m_vecInput;
};

/** What the listener is to hear of a payload, by the parser's word for its text. */
void expectCall(const tagPayload& payload, CKindListener& listener) {
    if (!payload.bXML) {
        listener.m_vecCall.push_back("data " + payload.strBytes);
        return;
    }
    CString strText;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(payload.strBytes.c_str()), strText);
    CXMLParser parser;
    if (!parser.parseFromString(strText))
        return;
    const CXMLElement* const pRoot = parser.getRootElement();
    if (pRoot->hasChild(L"touch_input"))
        listener.m_vecInput.push_back("touch");
    else if (pRoot->hasChild(L"page_cmd"))
        listener.m_vecInput.push_back("page");
    else if (!pRoot->hasChild(L"popup_cmd"))
        listener.onLogicDataAvailable(&parser);
}

class CDataTransferModel : public CDataTransferFixture {};

TEST_F(CDataTransferModel, RandomStreamsArriveAsTheModelSays) {
    CKindListener heard;
    COpenTransfer transfer(&heard);
    std::size_t uiPayloads = 0, uiHeld = 0;
    for (unsigned int uiSeed = 0; uiSeed < STREAMS; ++uiSeed) {
        CStreamMaker maker(uiSeed);
        CFrameModel model;
        for (const std::string& strChunk : maker.cut(maker.makeStream())) {
            transfer.feed(strChunk);
            model.feed(strChunk);
            ASSERT_EQ(transfer.getHeld(), model.m_strHeld) << uiSeed;
        }
        drain();
        CKindListener expected;
        for (const tagPayload& payload : model.m_vecPayload)
            expectCall(payload, expected);
        ASSERT_EQ(heard.m_vecCall, expected.m_vecCall) << uiSeed;
        ASSERT_EQ(heard.m_vecInput, expected.m_vecInput) << uiSeed;
        heard.m_vecCall.clear();
        heard.m_vecInput.clear();
        uiPayloads += model.m_vecPayload.size();
        uiHeld += !model.m_strHeld.empty();
        transfer.m_bufReceive.clear();
    }
    EXPECT_GT(uiPayloads, STREAMS / 2) << "the streams hold too little that is right";
    EXPECT_GT(uiHeld, STREAMS / 20) << "too few of them end in the middle";
}
} // namespace
