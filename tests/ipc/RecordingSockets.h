#pragma once

#include <Orlix/ipc/CSocketClient.h>
#include <Orlix/ipc/CSocketServer.h>

#include <string>
#include <vector>

namespace OrlixTest {

/** A client that never starts and writes down what it is to send, each time with the state of its heartbeats. */
class CRecordingClient : public Orlix::CSocketClient {
public:
    explicit CRecordingClient(std::vector<std::string>& vecCall)
        : CSocketClient(L"", 1, false, 16), m_vecCall(vecCall) {}
    int sendData(const unsigned char* pData, unsigned int uiLength) override {
        const std::string strBytes(pData, pData + uiLength);
        m_vecCall.push_back((m_timerHeartBeat.isRunning() ? "beating " : "quiet ") + strBytes);
        return m_iResult;
    }
    using CSocketClient::m_timerHeartBeat;
    int m_iResult = 0;

private:
    std::vector<std::string>& m_vecCall;
};

/** A server that never starts and writes down what it is to send, and to whom. */
class CRecordingServer : public Orlix::CSocketServer {
public:
    explicit CRecordingServer(std::vector<std::string>& vecCall) : CSocketServer(1, 16), m_vecCall(vecCall) {}
    int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) override {
        m_vecCall.push_back(std::to_string(uiClientID) + " " + std::string(pData, pData + uiLength));
        return -1;
    }

private:
    std::vector<std::string>& m_vecCall;
};
} // namespace OrlixTest
