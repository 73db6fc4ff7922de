#pragma once

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CSocketClient.h>
#include <Orlix/ipc/CSocketServer.h>
#include <Orlix/ipc/ISocketClientListener.h>
#include <Orlix/ipc/ISocketServerListener.h>
#include <Orlix/system/ILogOuter.h>
#include <Orlix/threading/CTime.h>

#include "support/LogSettings.h"
#include "support/RawPeer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace OrlixTest {

using VecEntry = std::vector<std::string>;

template <class... T> VecEntry entries(const T&... strEntry) { return {std::string(strEntry)...}; }

inline VecEntry operator+(VecEntry vecFirst, const VecEntry& vecSecond) {
    vecFirst.insert(vecFirst.end(), vecSecond.begin(), vecSecond.end());
    return vecFirst;
}

/** Writes down in one order what the log and the listeners hear, and waits for it. The starts of threads are left out,
 *  and an end is "exits". */
class CSocketTrace : public Orlix::ILogOuter, public Orlix::ISocketClientListener, public Orlix::ISocketServerListener {
public:
    CSocketTrace() { Orlix::CLog::setLogOuter(this); }

    void add(const std::string& strEntry) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_vecEntry.push_back(strEntry);
        m_changed.notify_all();
    }
    VecEntry getEntries() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_vecEntry;
    }
    std::size_t count(const std::string& strEntry) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return countLocked(strEntry);
    }
    /** @return whether there are that many equal entries in time. */
    bool await(const std::string& strEntry, std::size_t uiCount = 1) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(PEER_MS),
                                  [&] { return countLocked(strEntry) >= uiCount; });
    }
    /** @return what listeners got in all, once that is enough or the time has run out. */
    std::string awaitData(std::size_t uiCount) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(PEER_MS), [&] { return m_strData.size() >= uiCount; });
        return m_strData;
    }
    unsigned int getClientID() const { return m_uiClientID; }

    void writeLog(const Orlix::CString& strLevel, const Orlix::CString&, const Orlix::CString& strText) override {
        const std::string strLine = narrow(strText);
        const bool bThread = strLine.compare(0, 7, "Thread ") == 0;
        if (!bThread)
            add(narrow(strLevel) + ": " + strLine);
        else if (strLine.find(" exits.") != std::string::npos)
            add("exits");
    }

    void onConnect(Orlix::CSocketClient*) override { add("connect"); }
    void onDisconnect(Orlix::CSocketClient*) override { add("disconnect"); }
    void onDataAvailable(Orlix::CSocketClient*, unsigned char* pData, int iLength) override { take(pData, iLength); }

    void onConnect(Orlix::CSocketServer*, unsigned int uiClientID) override {
        m_uiClientID = uiClientID;
        add("connect " + std::to_string(uiClientID));
    }
    void onDisconnect(Orlix::CSocketServer*, unsigned int uiClientID) override {
        add("disconnect " + std::to_string(uiClientID));
    }
    void onDataAvailable(Orlix::CSocketServer*, unsigned int, unsigned char* pData, int iLength) override {
        take(pData, iLength);
    }

private:
    CLogSettings m_settings;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    VecEntry m_vecEntry;
    std::string m_strData;
    std::atomic<unsigned int> m_uiClientID{0}; // of the last client

    std::size_t countLocked(const std::string& strEntry) const {
        return static_cast<std::size_t>(std::count(m_vecEntry.begin(), m_vecEntry.end(), strEntry));
    }
    void take(const unsigned char* pData, int iLength) {
        const std::string strData(pData, pData + iLength);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_strData += strData;
        }
        add("data " + strData.substr(0, 20));
    }
    static std::string narrow(const Orlix::CString& strText) {
        std::string strNarrow(strText.length() * 3 + 1, '\0');
        unsigned int uiBytes = 0;
        Orlix::CStringConverter::convertToUTF8(strText, reinterpret_cast<unsigned char*>(&strNarrow[0]),
                                               static_cast<unsigned int>(strNarrow.size()), &uiBytes);
        strNarrow.resize(uiBytes);
        return strNarrow;
    }
};

class COpenClient : public Orlix::CSocketClient {
public:
    using CSocketClient::CSocketClient;
    using CSocketClient::m_bBlocking;
    using CSocketClient::m_bConnected;
    using CSocketClient::m_bPrepareStop;
    using CSocketClient::m_bRunning;
    using CSocketClient::m_iAutoReconnect;
    using CSocketClient::m_pBuffer;
    using CSocketClient::m_pSocket;
    using CSocketClient::m_timerHeartBeat;
    using CSocketClient::m_uiBufferSize;
    using CSocketClient::m_waitWake;
};

class COpenServer : public Orlix::CSocketServer {
public:
    using CSocketServer::CSocketServer;
    using CSocketServer::m_bConnected;
    using CSocketServer::m_bPrepareStop;
    using CSocketServer::m_bRunning;
    using CSocketServer::m_pBuffer;
    using CSocketServer::m_pSocket;
    using CSocketServer::m_uiBufferSize;
};

/** A letter for each call of a scripted socket, which is written down. The end of the script is x; s and x also set the
 *  thread's stop flag. */
class CSocketScript {
public:
    CSocketScript(CSocketTrace& trace, const std::string& strScript, bool& bPrepareStop)
        : m_trace(trace), m_strScript(strScript), m_bPrepareStop(bPrepareStop) {}
    char take(const std::string& strCall) {
        m_trace.add(strCall);
        const char ch = m_uiNext < m_strScript.size() ? m_strScript[m_uiNext++] : 'x';
        if (ch == 's' || ch == 'x')
            m_bPrepareStop = true;
        return ch;
    }

private:
    CSocketTrace& m_trace;
    const std::string m_strScript;
    std::size_t m_uiNext = 0;
    bool& m_bPrepareStop;
};

inline std::string fill(const char* pFormat, const std::string& strName, unsigned int uiPort) {
    char szText[200];
    std::snprintf(szText, sizeof(szText), pFormat, strName.c_str(), static_cast<int>(uiPort));
    return szText;
}
} // namespace OrlixTest
