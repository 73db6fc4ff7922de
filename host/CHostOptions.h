#pragma once

#include <string>

/** The command line of orlix-host, checked. Texts point into the arguments. */
class CHostOptions {
public:
    /** Reads the arguments. A mistake is one line on stderr. @return false after a mistake. */
    bool parse(int iCount, char** ppArgument);

    /** The file that is played line by line, "-" for standard input; null for none. */
    const char* getTextPath() const noexcept { return m_pTextPath; }
    /** The recorded touches that are played, "-" for standard input; null for none. */
    const char* getPlayPath() const noexcept { return m_pPlayPath; }
    /** The configuration file; null for none. */
    const char* getConfigPath() const noexcept { return m_pConfigPath; }
    /** The port that is listened on; 0 for none. */
    unsigned int getListenPort() const noexcept { return m_uiListenPort; }
    /** The address of the peer that is connected to, in digits; empty for none. */
    const std::string& getConnectAddress() const noexcept { return m_strConnectAddress; }
    /** The port of that peer. */
    unsigned int getConnectPort() const noexcept { return m_uiConnectPort; }
    /** Whether there is a peer of either kind. */
    bool hasPeer() const noexcept { return m_pListen || m_pConnect; }
    /** The surface that gets the touches. */
    unsigned int getSurface() const noexcept { return m_uiSurface; }
    /** Whether touches are played without waiting. */
    bool isFast() const noexcept { return m_bFast; }
    /** Whether to print the settings instead of running. */
    bool isPrintConfig() const noexcept { return m_bPrintConfig; }
    /** Whether to print what comes through a shared-memory channel. */
    bool isShareRead() const noexcept { return m_pShareRead; }
    /** The file that is written to a shared-memory channel, "-" for standard input; null for none. */
    const char* getSharePath() const noexcept { return m_pSharePath; }
    /** The key of the channel. */
    unsigned int getShareKey() const noexcept { return m_uiShareKey; }
    /** Bytes of the largest block of the channel. */
    unsigned int getShareSize() const noexcept { return m_uiShareSize; }

private:
    const char* m_pTextPath = nullptr;
    const char* m_pPlayPath = nullptr;
    const char* m_pConfigPath = nullptr;
    const char* m_pSurface = nullptr;
    const char* m_pShareRead = nullptr;  // the key
    const char* m_pShareWrite = nullptr; // the key
    const char* m_pShareSize = nullptr;
    const char* m_pSharePath = nullptr;
    unsigned int m_uiShareKey = 0;
    unsigned int m_uiShareSize = 0;
    const char* m_pListen = nullptr;
    const char* m_pConnect = nullptr;
    unsigned int m_uiSurface = 0;
    unsigned int m_uiListenPort = 0;
    std::string m_strConnectAddress;
    unsigned int m_uiConnectPort = 0;
    bool m_bFast = false;
    bool m_bPrintConfig = false;

    bool* findFlag(const char* pOption) noexcept;
    const char** findValue(const char* pOption) noexcept;
    bool isSharePath(const char* pArgument) const noexcept;
    bool check();
    bool checkCombination() const noexcept;
    bool readSurface();
    bool checkShare();
    bool readListenPort();
    bool readConnectAddress();
};
