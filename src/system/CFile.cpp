#include <Orlix/system/CFile.h>

#include "system/CPathBuffer.h"

#include <Orlix/system/CFolder.h>
#include <Orlix/system/CImpFile.h>
#include <Orlix/system/CPath.h>

#include <cwchar>

namespace Orlix {

bool CFile::open(const CString& strPath, const wchar_t* pMode) {
    constexpr unsigned int MODE_BYTES = 32;
    close();
    if (strPath.length() == 0 || !pMode)
        return false;
    m_bReadMode = !std::wcschr(pMode, L'w') && !std::wcschr(pMode, L'a');
    if (!m_bReadMode) // the other modes make nothing, so there a missing file is the system's to refuse
        CFolder::createFolder(CPath::getFileFolder(strPath)); // if that fails, so does the opening
    char szMode[MODE_BYTES];
    CStringConverter::convertToMBCS(pMode, szMode, sizeof(szMode));
    m_pStream = std::fopen(CPathBuffer(strPath).get(), szMode);
    return m_pStream != nullptr;
}

bool CFile::open(const CString& strPath, bool bReadOnly) { return open(strPath, bReadOnly ? L"rb" : L"wb"); }

void CFile::close() {
    if (m_pStream) {
        if (m_bReadMode) // only there, and harmless: closing writes the rest of every stream
            std::fflush(m_pStream);
        std::fclose(m_pStream);
        m_pStream = nullptr; // gone also when the closing failed
    }
    m_bReadMode = false;
}

void CFile::seekTo(int iOffset, ESeekType eType) {
    if (m_pStream)
        std::fseek(m_pStream, iOffset, eType);
}

unsigned int CFile::getFileSize() {
    if (!m_pStream)
        return 0;
    const long lPosition = std::ftell(m_pStream);
    if (std::fseek(m_pStream, 0, SEEK_END) != 0) // it has no positions
        return 0;
    const long lSize = std::ftell(m_pStream);
    std::fseek(m_pStream, lPosition, SEEK_SET);
    return lSize < 0 ? 0 : static_cast<unsigned int>(lSize);
}

bool CFile::isEmpty() {
    // The wrong way round for an open file, and meant: callers have settled on it.
    return !isOpen() || getFileSize() != 0;
}

void CFile::flush() {
    if (m_pStream)
        std::fflush(m_pStream);
}

bool CFile::isExist(const CString& strPath) {
    CImpFile imp;
    return imp.isExist(strPath);
}

bool CFile::isFile(const CString& strPath) {
    CImpFile imp;
    return imp.isExist(strPath) ? imp.isFile(strPath) : CPath::getFileExtern(strPath).length() != 0;
}

bool CFile::isReadOnly(const CString& strPath) {
    CImpFile imp;
    return imp.isReadOnly(strPath);
}

bool CFile::setWritable(const CString& strPath) {
    CImpFile imp;
    return imp.setWritable(strPath);
}

long CFile::getLastModifyTime(const CString& strPath) {
    CImpFile imp;
    return imp.getLastModifyTime(strPath);
}

bool CFile::renameFile(const CString& strFrom, const CString& strTo) {
    CImpFile imp;
    return strFrom.compareIC(strTo) != 0 && !imp.isExist(strTo) && imp.renameFile(strFrom, strTo);
}

bool CFile::deleteFile(const CString& strPath) {
    CImpFile imp;
    return !imp.isExist(strPath) || imp.deleteFile(strPath);
}

bool CFile::copyFile(const CString& strFrom, const CString& strTo, bool bOverwrite) {
    if (strFrom.compareIC(strTo) == 0)
        return false;
    CImpFile imp;
    if (!imp.isExist(strTo)) {
        // A bare name has no folder to make and is refused, on purpose.
        if (!CFolder::createFolder(CPath::getFileFolder(strTo)))
            return false;
    } else if (!bOverwrite) {
        return false;
    } else {
        imp.setWritable(strTo);
    }
    return imp.copyFile(strFrom, strTo);
}
} // namespace Orlix
