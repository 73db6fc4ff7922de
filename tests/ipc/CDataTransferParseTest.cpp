#include "ipc/DataTransferFixture.h"

using namespace Orlix;
using namespace OrlixTest;

// The bytes of a connection, from chunks to what the listener hears.

namespace {

class CDataTransferParse : public CDataTransferFixture {
protected:
    COpenTransfer m_transfer{&m_listener};

    /** Each chunk in turn, and then what the host makes of it. */
    void feed(const std::vector<std::string>& vecChunk) {
        for (const std::string& strChunk : vecChunk)
            m_transfer.feed(strChunk);
        drain();
    }
    VecCall takeCalls() {
        VecCall vecCall;
        std::swap(vecCall, m_listener.m_vecCall);
        return vecCall;
    }
};

const std::string ABC = frameOf("abc", 0);
const std::string XY = frameOf("xy", 0);
const std::string MAGIC("IVEN\0", 5);     // with its reserved byte
const std::string SKIPPED("IVEN\x01", 5); // with one that makes it count for nothing

TEST_F(CDataTransferParse, FramesAreLaidOutAsPeersMakeThem) {
    m_transfer.feed(std::string("\x49\x56\x45\x4E\x00\x03\x00\x00\x00\x00"
                                "abc"
                                "\x49\x56\x45\x4E\x00\x05\x00\x00\x00\x01"
                                "<a/>\x00",
                                28));
    drain();
    EXPECT_EQ(takeCalls(), (VecCall{"data abc", "document <?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"}));
}

TEST_F(CDataTransferParse, ChunksGiveFramesAndARest) {
    const struct {
        const char* szWhat;
        std::vector<std::string> vecChunk;
        VecCall vecCall;
        std::string strHeld;
    } aryRow[] = {
        {"one frame", {ABC}, {"data abc"}, ""},
        {"two frames in a chunk", {ABC + XY}, {"data abc", "data xy"}, ""},
        {"a chunk for each half", {ABC.substr(0, 11), ABC.substr(11) + XY}, {"data abc", "data xy"}, ""},
        {"less than the magic waits, whatever it is", {"ABCD"}, {}, "ABCD"},
        {"five bytes of a header wait", {ABC.substr(0, 5)}, {}, MAGIC},
        {"nine bytes of a header wait", {ABC.substr(0, 9)}, {}, ABC.substr(0, 9)},
        {"a header waits for its payload", {ABC.substr(0, 10)}, {}, ABC.substr(0, 10)},
        {"all but the last byte waits", {ABC.substr(0, 12)}, {}, ABC.substr(0, 12)},
        {"a frame goes, the begun one stays", {ABC + XY.substr(0, 7)}, {"data abc"}, XY.substr(0, 7)},
        {"four bytes behind a frame stay", {ABC + "ABCD"}, {"data abc"}, "ABCD"},
        {"a wrong magic", {"ABCDE"}, {}, ""},
        {"a wrong magic behind a frame", {ABC + "IVEM" + XY.substr(4) + XY}, {"data abc"}, ""},
        {"what comes after a wrong magic is a frame again", {"ABCDE", ABC}, {"data abc"}, ""},
        {"no looking for a magic further on", {"A" + ABC}, {}, ""},
        {"a wrong magic only seen with its fifth byte", {"ABCD", "E" + ABC}, {}, ""},
        {"a length of 0", {frameOf("", 0) + ABC}, {}, ""},
        {"a length of 0 behind a frame", {XY + frameOf("", 0) + ABC}, {"data xy"}, ""},
        {"a length of 0 of a document", {frameOf("", 1)}, {}, ""},
        {"any other type is a block", {frameOf("a", 2) + frameOf("b", '\xFF')}, {"data a", "data b"}, ""},
        {"a reserved byte that is not 0", {SKIPPED + ABC}, {"data abc"}, ""},
        {"two of them", {SKIPPED + SKIPPED + ABC}, {"data abc"}, ""},
        {"nothing behind it", {SKIPPED}, {}, ""},
        {"less than a magic behind it", {SKIPPED + "IVEN"}, {}, ""},
        {"a header that is cut behind it is not waited for", {SKIPPED + MAGIC}, {}, ""},
        {"not with a part of the length either", {SKIPPED + ABC.substr(0, 8)}, {}, ""},
        {"nor without the type", {SKIPPED + ABC.substr(0, 9)}, {}, ""},
        {"a payload behind it is waited for, without it", {SKIPPED + ABC.substr(0, 10)}, {}, ABC.substr(0, 10)},
        {"and comes", {SKIPPED + ABC.substr(0, 10), "abc"}, {"data abc"}, ""},
        {"it spoils the begun frame behind its own", {SKIPPED + ABC + "IVE"}, {"data abc"}, ""},
        {"and a longer part", {SKIPPED + ABC + XY.substr(0, 9)}, {"data abc"}, ""},
        {"but not a header", {SKIPPED + ABC + XY.substr(0, 10)}, {"data abc"}, XY.substr(0, 10)},
        {"the largest length",
         {std::string("IVEN\0\xFF\xFF\xFF\xFF\0abc", 13)},
         {},
         std::string("IVEN\0\xFF\xFF\xFF\xFF\0abc", 13)},
        {"an empty chunk", {"", ABC, ""}, {"data abc"}, ""},
        {"zeros in a block", {frameOf(std::string("\0a\0", 3), 0)}, {std::string("data \0a\0", 8)}, ""},
    };
    for (const auto& row : aryRow) {
        SCOPED_TRACE(row.szWhat);
        m_transfer.m_bufReceive.clear();
        feed(row.vecChunk);
        EXPECT_EQ(takeCalls(), row.vecCall);
        EXPECT_EQ(m_transfer.getHeld(), row.strHeld);
        EXPECT_EQ(m_transfer.m_bufReceive.getPosition(), row.strHeld.size()) << "the next chunk is appended";
    }
}

TEST_F(CDataTransferParse, AFrameMayBeSplitAtEveryByte) {
    const std::string strFrames = ABC + xmlFrameOf("<a/>");
    const VecCall vecBoth{"data abc", "document <?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"};
    for (std::size_t uiFirst = 0; uiFirst <= strFrames.size(); ++uiFirst) {
        for (std::size_t uiSecond = uiFirst; uiSecond <= strFrames.size(); ++uiSecond) {
            feed({strFrames.substr(0, uiFirst), strFrames.substr(uiFirst, uiSecond - uiFirst),
                  strFrames.substr(uiSecond)});
            ASSERT_EQ(takeCalls(), vecBoth) << uiFirst << " and " << uiSecond;
        }
    }
}

TEST_F(CDataTransferParse, AFrameComesWithItsLastByteAndOnce) {
    for (std::size_t i = 0; i < ABC.size(); ++i) {
        EXPECT_EQ(m_listener.m_vecCall, VecCall{}) << i;
        feed({ABC.substr(i, 1)});
    }
    EXPECT_EQ(takeCalls(), VecCall{"data abc"});
}

TEST_F(CDataTransferParse, EveryByteOfTheMagicCounts) {
    for (unsigned int uiByte = 0; uiByte < 4; ++uiByte) {
        for (unsigned int uiBit = 0; uiBit < 8; ++uiBit) {
            std::string strBad = ABC;
            strBad[uiByte] = static_cast<char>(strBad[uiByte] ^ 1 << uiBit);
            feed({XY + strBad + XY, XY});
            ASSERT_EQ(takeCalls(), (VecCall{"data xy", "data xy"})) << "bit " << uiBit << " of byte " << uiByte;
        }
    }
}

TEST_F(CDataTransferParse, GarbageAfterAnyByteOfTheMagicDiscardsWhatIsHeld) {
    for (std::size_t uiCut = 0; uiCut < 4; ++uiCut) {
        feed({XY, ABC.substr(0, uiCut), std::string(1 << 10, 'Z'), XY});
        EXPECT_EQ(takeCalls(), (VecCall{"data xy", "data xy"})) << uiCut;
    }
}

TEST_F(CDataTransferParse, NothingIsTakenWhileClosed) {
    delete m_transfer.m_pServer;
    m_transfer.m_pServer = nullptr;
    feed({ABC});
    m_transfer.setRawConnection(true);
    feed({"raw"});
    EXPECT_EQ(takeCalls(), VecCall{});
    EXPECT_EQ(m_transfer.getHeld(), "");
}

TEST_F(CDataTransferParse, WithoutAListenerFramesAreDroppedAndParsingGoesOn) {
    m_transfer.setListener(nullptr);
    EXPECT_FALSE(m_transfer.canNotifyListener());
    feed({ABC + xmlFrameOf("<a/>") + XY.substr(0, 6)});
    EXPECT_EQ(m_transfer.getHeld(), XY.substr(0, 6));
    m_transfer.setRawConnection(true);
    feed({"raw"});
    EXPECT_EQ(m_transfer.getHeld(), XY.substr(0, 6));
    m_transfer.setRawConnection(false);
    m_transfer.setListener(&m_listener);
    EXPECT_TRUE(m_transfer.canNotifyListener());
    feed({XY.substr(6)});
    EXPECT_EQ(takeCalls(), VecCall{"data xy"});
}

TEST_F(CDataTransferParse, RawChunksPassAsTheyCome) {
    m_transfer.setRawConnection(true);
    feed({"any", ABC, xmlFrameOf("<a/>").substr(0, 5), std::string(1, '\0')});
    EXPECT_EQ(takeCalls(), (VecCall{"data any", "data " + ABC, "data " + MAGIC, std::string("data \0", 6)}));
    EXPECT_EQ(m_transfer.getHeld(), "");
}

TEST_F(CDataTransferParse, RawModeAppliesFromTheNextChunk) {
    m_transfer.feed(ABC.substr(0, 4));
    m_transfer.setRawConnection(true);
    m_transfer.feed("raw");
    m_transfer.setRawConnection(false);
    m_transfer.feed(ABC.substr(4));
    drain();
    EXPECT_EQ(takeCalls(), (VecCall{"data raw", "data abc"})) << "what is held waits meanwhile";
}

TEST_F(CDataTransferParse, ChunksOfNoUseChangeNothing) {
    std::string strBytes = ABC;
    unsigned char* const pBytes = reinterpret_cast<unsigned char*>(strBytes.data());
    m_transfer.feed(ABC.substr(0, 4));
    m_transfer.parseData(nullptr, 5);
    for (const int iLength : {0, -1, INT_MIN}) {
        m_transfer.onDataAvailable(static_cast<CSocketServer*>(nullptr), 7, pBytes, iLength);
        m_transfer.onDataAvailable(static_cast<CSocketClient*>(nullptr), pBytes, iLength);
    }
    EXPECT_EQ(m_transfer.getHeld(), "IVEN");
    m_transfer.setRawConnection(true);
    m_transfer.parseData(nullptr, 0);
    drain();
    EXPECT_EQ(takeCalls(), VecCall{});
}

TEST_F(CDataTransferParse, BothSocketsFeedTheSameFrames) {
    std::string strFirst = ABC.substr(0, 6), strSecond = ABC.substr(6);
    m_transfer.onDataAvailable(static_cast<CSocketServer*>(nullptr), 7,
                               reinterpret_cast<unsigned char*>(strFirst.data()), 6);
    m_transfer.onDataAvailable(static_cast<CSocketClient*>(nullptr), reinterpret_cast<unsigned char*>(strSecond.data()),
                               7);
    drain();
    EXPECT_EQ(takeCalls(), VecCall{"data abc"});
}

TEST_F(CDataTransferParse, AConnectionEventDiscardsABegunFrame) {
    const struct {
        std::function<void(CDataTransfer&)> fnEvent;
        bool bConnected;
    } aryRow[] = {
        {[](CDataTransfer& transfer) { transfer.onConnect(static_cast<CSocketServer*>(nullptr), 7); }, true},
        {[](CDataTransfer& transfer) { transfer.onDisconnect(static_cast<CSocketServer*>(nullptr), 7); }, false},
        {[](CDataTransfer& transfer) { transfer.onConnect(static_cast<CSocketClient*>(nullptr)); }, true},
        {[](CDataTransfer& transfer) { transfer.onDisconnect(static_cast<CSocketClient*>(nullptr)); }, false}};
    for (const bool bListener : {true, false}) {
        m_transfer.setListener(bListener ? &m_listener : nullptr);
        for (const auto& row : aryRow) {
            m_transfer.feed(ABC.substr(0, 12));
            row.fnEvent(m_transfer);
            EXPECT_EQ(m_transfer.getHeld(), "");
            EXPECT_EQ(m_transfer.isConnect(), row.bConnected);
            feed({"c"});
            EXPECT_EQ(takeCalls(), bListener ? VecCall{row.bConnected ? "connect" : "disconnect"} : VecCall{});
            m_transfer.m_bufReceive.clear();
        }
    }
}
} // namespace
