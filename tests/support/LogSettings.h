#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/system/CLog.h>
#include <Orlix/system/ILogOuter.h>

#include "support/TempFolder.h"

#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

namespace OrlixTest {

/** Settings of the log, from a file in a folder of the test's own. At the end the log is closed and they are gone. */
class CLogSettings {
public:
    /** @param strOutput, strLevel attributes of the two sections, as they stand in the file. */
    explicit CLogSettings(const std::string& strOutput = "terminal=\"false\"", const std::string& strLevel = "") {
        load(strOutput, strLevel);
    }
    CLogSettings(const CLogSettings&) = delete;
    CLogSettings& operator=(const CLogSettings&) = delete;
    ~CLogSettings() {
        Orlix::CLog::setLogOuter(nullptr);
        Orlix::CLog::unInitialize();
        Orlix::CConfigParser::deleteInstance();
    }

    /** Replaces the settings; an open log file stays open. */
    void load(const std::string& strOutput, const std::string& strLevel = "") {
        writeWhole(m_temp / "engine.xml",
                   "<engine><log_level " + strLevel + "/><log_output " + strOutput + "/></engine>");
        if (!Orlix::CConfigParser::getInstance()->load(toText(m_temp / "engine.xml")))
            std::abort();
    }

    std::string operator/(const std::string& strName) const { return m_temp / strName; }

private:
    CTempFolder m_temp;
};

/** Keeps the log off the terminal, so that standard output stays GoogleTest's, and collects its lines instead. */
class CLogRecorder : public Orlix::ILogOuter {
public:
    CLogRecorder() { Orlix::CLog::setLogOuter(this); }

    void writeLog(const Orlix::CString& strLevel, const Orlix::CString& strSource,
                  const Orlix::CString& strText) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_aryLine.push_back(L"[" + toWide(strLevel) + L"][" + toWide(strSource) + L"] " + toWide(strText));
    }

    /** The lines so far, as "[Error][OrlixEngine] text". */
    std::vector<std::wstring> getLines() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_aryLine;
    }

private:
    CLogSettings m_settings;
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_aryLine;

    static std::wstring toWide(const Orlix::CString& strText) {
        return strText.isEmpty() ? std::wstring() : std::wstring(strText.getBuffer(), strText.length());
    }
};
} // namespace OrlixTest
