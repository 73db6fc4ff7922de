#pragma once

#include <Orlix/ipc/CDataTransfer.h>
#include <Orlix/ipc/CSocketServer.h>

#include <cstdint>
#include <string>

namespace OrlixTest {

inline const unsigned char* bytesOf(const std::string& strBytes) {
    return reinterpret_cast<const unsigned char*>(strBytes.data());
}

/** The header of a frame as peers make it. */
inline std::string headerOf(std::uint32_t uiLength, char chType, char chReserved = 0) {
    std::string strHeader("\x49\x56\x45\x4E", 4);
    strHeader += chReserved;
    for (int iShift = 0; iShift < 32; iShift += 8)
        strHeader += static_cast<char>(uiLength >> iShift & 0xFF);
    return strHeader + chType;
}

inline std::string frameOf(const std::string& strPayload, char chType, char chReserved = 0) {
    return headerOf(static_cast<std::uint32_t>(strPayload.size()), chType, chReserved) + strPayload;
}

inline std::string xmlFrameOf(const std::string& strText) { return frameOf(strText + '\0', 1); }

/** A data transfer with its fields open. */
class COpenTransfer : public Orlix::CDataTransfer {
public:
    COpenTransfer() = default;
    /** Open as a server that never starts, so that a test can play the socket's thread. */
    explicit COpenTransfer(Orlix::IDataTransferListener* pListener) {
        m_pServer = new Orlix::CSocketServer(1, 16);
        m_pListener = pListener;
    }
    using CDataTransfer::m_bConnected;
    using CDataTransfer::m_bRawConnection;
    using CDataTransfer::m_bufReceive;
    using CDataTransfer::m_pClient;
    using CDataTransfer::m_pListener;
    using CDataTransfer::m_pServer;

    void feed(const std::string& strBytes) { parseData(bytesOf(strBytes), static_cast<unsigned int>(strBytes.size())); }
    /** What waits for more. */
    std::string getHeld() const {
        const unsigned char* const pBytes = m_bufReceive.buffer();
        return pBytes ? std::string(pBytes, pBytes + m_bufReceive.getSize()) : std::string();
    }
};
} // namespace OrlixTest
