#include <Orlix/system/CLog.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/system/ILogOuter.h>

#include "foundation/StaticOrder.h"
#include "system/CLogLine.h"

namespace Orlix {
namespace {

/** Without memory for the settings their defaults are in force. */
bool isOn(bool CConfigParser::tagLogLevel::*pLevel) {
    const CConfigParser* const pConfig = CConfigParser::getInstance();
    return pConfig ? pConfig->getLogLevel().*pLevel : CConfigParser::tagLogLevel().*pLevel;
}

bool isTerminalOn() {
    const CConfigParser* const pConfig = CConfigParser::getInstance();
    return !pConfig || pConfig->getLogOutput().terminal;
}
} // namespace

ORLIX_STATIC_LOG CObjectPtr<CFile> CLog::s_ptrFile;
ORLIX_STATIC_LOG CSyncObject CLog::s_syncObject;
ILogOuter* CLog::s_pLogOuter = nullptr;
std::atomic<bool> CLog::s_bHasFile{false};

void CLog::initialize() {
    constexpr unsigned int NO_FILE_LIMIT = 10240; // bytes; a limit up to here means no file
    const CConfigParser* const pConfig = CConfigParser::getInstance();
    if (!pConfig)
        return;
    const CConfigParser::tagLogOutput& output = pConfig->getLogOutput();
    if (output.file_path_linux.length() == 0 || output.file_size <= NO_FILE_LIMIT)
        return;
    setFile(new CFile); // before the new one is opened, for the old one may be the same file
    if (!openFile(output.file_path_linux, output.file_size))
        setFile(nullptr);
}

// The only time that the size is looked at: a run may exceed the limit, and the next one starts with an empty file.
bool CLog::openFile(const CString& strPath, unsigned int uiLimit) {
    static constexpr unsigned char BYTE_ORDER_MARK[] = {0xFF, 0xFE};
    if (!s_ptrFile || !s_ptrFile->open(strPath, L"ab"))
        return false;
    if (s_ptrFile->getFileSize() > uiLimit && !s_ptrFile->open(strPath, false))
        return false;
    if (s_ptrFile->getFileSize() == 0)
        s_ptrFile->writeData(BYTE_ORDER_MARK, sizeof(BYTE_ORDER_MARK));
    return true;
}

void CLog::setFile(CFile* pFile) {
    s_ptrFile = pFile;
    s_bHasFile = pFile != nullptr;
}

void CLog::unInitialize() {
    const CAutoSync sync(s_syncObject);
    setFile(nullptr);
}

void CLog::setLogOuter(ILogOuter* pLogOuter) { s_pLogOuter = pLogOuter; }

void CLog::info(const wchar_t* pSource, const wchar_t* pText) {
    if (isOn(&CConfigParser::tagLogLevel::info))
        writeLog(L"Info", pSource, pText);
}

void CLog::info(const CString& strSource, const CString& strText) { info(strSource.getBuffer(), strText.getBuffer()); }

void CLog::warning2(const wchar_t* pSource, const wchar_t* pText) {
    if (isOn(&CConfigParser::tagLogLevel::warning))
        writeLog(L"Warning", pSource, pText);
}

void CLog::warning2(const CString& strSource, const CString& strText) {
    warning2(strSource.getBuffer(), strText.getBuffer());
}

void CLog::error2(const wchar_t* pSource, const wchar_t* pText) {
    if (isOn(&CConfigParser::tagLogLevel::error))
        writeLog(L"Error", pSource, pText);
}

void CLog::error2(const CString& strSource, const CString& strText) {
    error2(strSource.getBuffer(), strText.getBuffer());
}

void CLog::debug2(const wchar_t* pSource, const wchar_t* pText) {
    if (isOn(&CConfigParser::tagLogLevel::debug))
        writeLog(L"Debug", pSource, pText);
}

void CLog::debug2(const CString& strSource, const CString& strText) {
    debug2(strSource.getBuffer(), strText.getBuffer());
}

void CLog::writeLog(const wchar_t* pLevel, const wchar_t* pSource, const wchar_t* pText) {
    const CLogLine line(pLevel, pSource, pText);
    if (isTerminalOn())
        line.print();
    if (s_bHasFile) {
        const CAutoSync sync(s_syncObject);
        if (s_ptrFile) // looked at again: it may have been closed since
            line.writeTo(*s_ptrFile);
    }
    if (ILogOuter* const pLogOuter = s_pLogOuter) // read once: it may be taken away meanwhile
        pLogOuter->writeLog(CString(pLevel), CString(pSource), CString(pText));
}
} // namespace Orlix
