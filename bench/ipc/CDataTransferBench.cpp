// Framed messages over loopback: a stream of them, one that wakes a sleeping host, and a single one that is large.
//
// Ours goes the whole way: from the sender's thread through the socket thread and the center to the listener on the
// host thread, with the timer thread running. The floor is two plain sockets with the same two writes for a message and
// the same reads, which looks at nothing but the lengths, on two threads. A stream has a limited number of messages on
// their way, the same for all, since a client that does not wait would drop what the system has no room for.
#include <Orlix/ipc/CDataTransfer.h>
#include <Orlix/ipc/IDataTransferListener.h>
#include <Orlix/threading/CTimerManager.h>

#include "messaging/CenterChannel.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zmq.h>

using Orlix::CDataTransfer;

namespace {

constexpr std::size_t HEADER_BYTES = 10;
constexpr std::size_t LENGTH_OFFSET = 5;
constexpr std::size_t RECEIVE_BYTES = 1048576;

std::atomic<unsigned int> g_uiArrived{0}; // of the stream that is going on

void onArrival() {
    g_uiArrived.fetch_add(1);
    g_receiver.onMessage();
}

std::vector<unsigned char> makeHeader(std::size_t uiPayload) {
    std::vector<unsigned char> vecHeader = {0x49, 0x56, 0x45, 0x4E, 0, 0, 0, 0, 0, 0};
    const unsigned int uiLength = static_cast<unsigned int>(uiPayload);
    std::memcpy(vecHeader.data() + LENGTH_OFFSET, &uiLength, sizeof(uiLength));
    return vecHeader;
}

void sendAll(int iSocket, const unsigned char* pData, std::size_t uiCount) {
    while (uiCount != 0) {
        const ssize_t iSent = send(iSocket, pData, uiCount, MSG_NOSIGNAL);
        if (iSent <= 0)
            std::abort();
        pData += iSent;
        uiCount -= static_cast<std::size_t>(iSent);
    }
}

/** A socket listening on a free port of loopback. */
class CListener {
public:
    CListener() : m_iSocket(socket(AF_INET, SOCK_STREAM, 0)), m_address() {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t uiSize = sizeof(m_address);
        if (bind(m_iSocket, reinterpret_cast<const sockaddr*>(&m_address), uiSize) != 0 || listen(m_iSocket, 1) != 0)
            std::abort();
        getsockname(m_iSocket, reinterpret_cast<sockaddr*>(&m_address), &uiSize);
    }
    ~CListener() { close(m_iSocket); }
    unsigned int getPort() const { return ntohs(m_address.sin_port); }
    int accept() const { return ::accept(m_iSocket, nullptr, nullptr); }

private:
    int m_iSocket;
    sockaddr_in m_address;
};

int connectTo(unsigned int uiPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(uiPort));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    while (true) { // until the server listens
        const int iSocket = socket(AF_INET, SOCK_STREAM, 0);
        const int iOn = 1;
        setsockopt(iSocket, IPPROTO_TCP, TCP_NODELAY, &iOn, sizeof(iOn));
        if (connect(iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
            return iSocket;
        close(iSocket);
        std::this_thread::yield();
    }
}

/** The receiving half of ours: a server with its host. */
class COrlixReceiver : public CCenterChannel<> {
public:
    COrlixReceiver() {
        CDataTransfer::deleteAllInstance(); // an instance that had the same address would take the first message
        Orlix::CTimerManager::getInstance()->start();
        m_server.setListener(&m_counter);
        m_server.openAsServer(m_uiPort);
    }
    ~COrlixReceiver() {
        m_server.close();
        Orlix::CTimerManager::getInstance()->stop();
    }
    unsigned int getPort() const { return m_uiPort; }
    void awaitClient() const {
        while (!m_server.isConnect())
            std::this_thread::yield();
    }

private:
    struct tagCounter : Orlix::IDataTransferListener {
        void onLogicDataAvailable(Orlix::CArrayPtr<unsigned char> aryData) override {
            benchmark::DoNotOptimize(aryData.getArray());
            onArrival();
        }
        using IDataTransferListener::onLogicDataAvailable;
    };
    const unsigned int m_uiPort = CListener().getPort();
    tagCounter m_counter;
    CDataTransfer m_server;
};

template <std::size_t TSize> class COrlixTransfer {
public:
    COrlixTransfer() {
        m_client.openAsClient(L"127.0.0.1", m_receiver.getPort());
        while (!m_client.isConnect())
            std::this_thread::yield();
        m_receiver.awaitClient();
    }
    ~COrlixTransfer() { m_client.close(); } // before the server, which waits for it
    void post() { m_client.sendLogicData(m_aryPayload, TSize); }
    void receive() { m_receiver.receive(); }

private:
    COrlixReceiver m_receiver;
    CDataTransfer m_client;
    unsigned char m_aryPayload[TSize] = {};
};

/** The receiving half of the floor. */
class CFloorReceiver {
public:
    CFloorReceiver() : m_vecBuffer(RECEIVE_BYTES) {}
    ~CFloorReceiver() { close(m_iSocket); }
    unsigned int getPort() const { return m_listener.getPort(); }
    void awaitClient() { m_iSocket = m_listener.accept(); }
    void receive() {
        while (g_receiver.uiLeft != 0) {
            const ssize_t iGot = recv(m_iSocket, m_vecBuffer.data(), RECEIVE_BYTES, 0);
            if (iGot <= 0)
                std::abort();
            take(m_vecBuffer.data(), m_vecBuffer.data() + iGot);
        }
    }

private:
    CListener m_listener;
    int m_iSocket = -1;
    std::vector<unsigned char> m_vecBuffer;
    std::vector<unsigned char> m_vecHeader; // what there is of the header that is coming in
    std::size_t m_uiPayload = 0;            // bytes of a payload that are still to come

    void take(const unsigned char* pByte, const unsigned char* pEnd) {
        while (pByte != pEnd) {
            const std::size_t uiWanted = m_uiPayload != 0 ? m_uiPayload : HEADER_BYTES - m_vecHeader.size();
            const std::size_t uiTaken = std::min(uiWanted, static_cast<std::size_t>(pEnd - pByte));
            if (m_uiPayload != 0)
                takePayload(uiTaken);
            else
                takeHeader(pByte, uiTaken);
            pByte += uiTaken;
        }
    }
    void takePayload(std::size_t uiTaken) {
        m_uiPayload -= uiTaken;
        if (m_uiPayload == 0)
            onArrival();
    }
    void takeHeader(const unsigned char* pByte, std::size_t uiTaken) {
        m_vecHeader.insert(m_vecHeader.end(), pByte, pByte + uiTaken);
        if (m_vecHeader.size() != HEADER_BYTES)
            return;
        unsigned int uiLength = 0;
        std::memcpy(&uiLength, m_vecHeader.data() + LENGTH_OFFSET, sizeof(uiLength));
        m_uiPayload = uiLength;
        m_vecHeader.clear();
    }
};

template <std::size_t TSize> class CFloorTransfer {
public:
    CFloorTransfer() : m_iSocket(connectTo(m_receiver.getPort())), m_vecHeader(makeHeader(TSize)) {
        m_receiver.awaitClient();
    }
    ~CFloorTransfer() { close(m_iSocket); }
    void post() {
        sendAll(m_iSocket, m_vecHeader.data(), HEADER_BYTES);
        sendAll(m_iSocket, m_aryPayload, TSize);
    }
    void receive() { m_receiver.receive(); }

private:
    CFloorReceiver m_receiver;
    int m_iSocket;
    std::vector<unsigned char> m_vecHeader;
    unsigned char m_aryPayload[TSize] = {};
};

template <std::size_t TSize> class CZeroMQPair {
public:
    CZeroMQPair()
        : m_pContext(zmq_ctx_new()), m_pReceiver(zmq_socket(m_pContext, ZMQ_PAIR)),
          m_pSender(zmq_socket(m_pContext, ZMQ_PAIR)) {
        char szEndpoint[64];
        std::size_t uiSize = sizeof(szEndpoint);
        if (zmq_bind(m_pReceiver, "tcp://127.0.0.1:*") != 0 ||
            zmq_getsockopt(m_pReceiver, ZMQ_LAST_ENDPOINT, szEndpoint, &uiSize) != 0 ||
            zmq_connect(m_pSender, szEndpoint) != 0)
            std::abort();
    }
    ~CZeroMQPair() {
        zmq_close(m_pSender);
        zmq_close(m_pReceiver);
        zmq_ctx_term(m_pContext);
    }
    void post() { zmq_send(m_pSender, m_aryPayload, TSize, 0); }
    void receive() {
        while (g_receiver.uiLeft != 0) {
            zmq_msg_t message;
            zmq_msg_init(&message);
            zmq_msg_recv(&message, m_pReceiver, 0);
            benchmark::DoNotOptimize(zmq_msg_data(&message));
            zmq_msg_close(&message);
            onArrival();
        }
    }

private:
    void* m_pContext;
    void* m_pReceiver;
    void* m_pSender;
    unsigned char m_aryPayload[TSize] = {};
};

/** From the first send to the receipt of the last message. */
template <class TChannel, unsigned int TOnTheirWay> void stream(benchmark::State& state) {
    constexpr unsigned int MESSAGES = 20000;
    TChannel channel;
    for (auto _ : state) {
        g_receiver.uiLeft = MESSAGES;
        g_uiArrived = 0;
        std::thread sender([&] {
            for (unsigned int i = 0; i < MESSAGES; ++i) {
                while (i - g_uiArrived.load() >= TOnTheirWay)
                    std::this_thread::yield();
                channel.post();
            }
        });
        channel.receive();
        sender.join();
    }
    state.SetItemsProcessed(state.iterations() * MESSAGES);
}

/** One message of so many bytes, from a plain socket that waits as it sends. */
template <class TReceiver> void largeFrame(benchmark::State& state) {
    const std::size_t uiSize = static_cast<std::size_t>(state.range(0)) * 1000000;
    const std::vector<unsigned char> vecHeader = makeHeader(uiSize);
    const std::vector<unsigned char> vecPayload(uiSize, 1);
    TReceiver receiver;
    const int iSocket = connectTo(receiver.getPort());
    receiver.awaitClient();
    for (auto _ : state) {
        g_receiver.uiLeft = 1;
        std::thread sender([&] {
            sendAll(iSocket, vecHeader.data(), HEADER_BYTES);
            sendAll(iSocket, vecPayload.data(), uiSize);
        });
        receiver.receive();
        sender.join();
    }
    close(iSocket);
}

template <template <std::size_t> class TChannel> void registerTransfer(const std::string& strName) {
    benchmark::RegisterBenchmark((strName + "_stream/64").c_str(), stream<TChannel<64>, 1024>)->UseRealTime();
    benchmark::RegisterBenchmark((strName + "_stream/4096").c_str(), stream<TChannel<4096>, 128>)->UseRealTime();
    registerWakeUp<TChannel<64>>(strName);
}

template <class TReceiver> void registerLargeFrame(const std::string& strName) {
    benchmark::RegisterBenchmark((strName + "_largeFrameMB").c_str(), largeFrame<TReceiver>)
        ->Arg(10)
        ->Arg(100)
        ->UseRealTime();
}

const bool g_bRegistered = [] {
    registerTransfer<COrlixTransfer>("CDataTransfer");
    registerTransfer<CFloorTransfer>("Floor");
    registerTransfer<CZeroMQPair>("ZeroMQ");
    registerLargeFrame<COrlixReceiver>("CDataTransfer");
    registerLargeFrame<CFloorReceiver>("Floor");
    return true;
}();
} // namespace
