#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CString.h>

#include <cstdio>

namespace Orlix {

/** One buffered file stream, and what can be asked and done about files by their paths.
 *
 *  Paths go to the system cut at 1023 bytes. Nothing here logs: a failure is false, or a size or time of 0.
 *  Threads: one at a time per object; the static operations from any. */
class ORLIX_API CFile : public CObject {
    ORLIX_HEAP_CLASS(L"CFile")

public:
    enum ESeekType : int { SEEK_FROM_START = SEEK_SET, SEEK_FROM_CURRENT = SEEK_CUR, SEEK_FROM_END = SEEK_END };

    CFile() noexcept : m_bReadMode(false), m_pStream(nullptr) {}
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile() override { close(); }

    /** Opens another file after closing the one before.
     *  @param pMode a mode of fopen. With neither w nor a in it the file must exist; with either, the file's folder is
     *  made if only that one is missing. Null opens nothing. */
    bool open(const CString& strPath, const wchar_t* pMode);
    /** Opens another file after closing the one before.
     *  @param bReadOnly true for a file that exists; false for an empty one to write, in place of any that exists. */
    bool open(const CString& strPath, bool bReadOnly);
    /** Writes what is still buffered; whether that worked cannot be told. Does nothing if closed. */
    void close();
    bool isOpen() const noexcept { return m_pStream != nullptr; }

    /** @return true if all bytes went to the stream; for null and for no bytes, whether the file is open. */
    bool writeData(const unsigned char* pData, unsigned int uiLength) {
        if (!m_pStream || !pData || uiLength == 0)
            return isOpen();
        return std::fwrite(pData, 1, uiLength, m_pStream) >= uiLength;
    }
    /** @param pData receives what there is, also when that is less than asked for.
     *  @return true if all bytes came; for null and for no bytes, whether the file is open. */
    bool readData(unsigned char* pData, unsigned int uiLength) {
        if (!m_pStream || !pData || uiLength == 0)
            return isOpen();
        return std::fread(pData, 1, uiLength, m_pStream) >= uiLength;
    }

    /** A position that the system refuses leaves the old one. Does nothing if closed. */
    void seekTo(int iOffset, ESeekType eType);
    /** The size in bytes, with what is still buffered; the position stays. @return the low 32 bits of a larger size;
     *  0 if closed, and for what has no positions, such as a pipe. */
    unsigned int getFileSize();
    /** True for a closed file and for a file that is NOT empty; false for an open file of size 0. */
    bool isEmpty();
    /** Does nothing if closed. */
    void flush();

    /** Whether there is anything, also a folder or a link that leads nowhere. */
    static bool isExist(const CString& strPath);
    /** Whether there is anything but a folder; a symbolic link always counts as a file. Where nothing is, whether the
     *  name looks like that of a file: it has an extension that is not empty. */
    static bool isFile(const CString& strPath);
    /** Whether the file can be opened for reading and its owner may read but neither write nor execute it. */
    static bool isReadOnly(const CString& strPath);
    /** Lets the owner write. @return false for what cannot be opened for reading. */
    static bool setWritable(const CString& strPath);
    /** Seconds since 1970; 0 for what cannot be opened for reading. */
    static long getLastModifyTime(const CString& strPath);
    /** Renames or moves within a file system. @return false, and nothing changes, also if strTo exists or differs from
     *  strFrom only by the case of ASCII letters. */
    static bool renameFile(const CString& strFrom, const CString& strTo);
    /** @return true if the path does not exist, and for a regular file even when the system refuses to remove it; false
     *  for folders, links and anything else. */
    static bool deleteFile(const CString& strPath);
    /** Copies the content, neither permissions nor times, as CImpFile does.
     *  @param strTo with its folder, which is made if only that one is missing: a bare name is no new target.
     *  @param bOverwrite false fails if strTo exists; true makes that one writable and replaces its content.
     *  @return false also if the paths differ only by the case of ASCII letters, or are the same file. */
    static bool copyFile(const CString& strFrom, const CString& strTo, bool bOverwrite);

protected:
    bool m_bReadMode;     // true while open only for reading
    std::FILE* m_pStream; // null when closed
};
} // namespace Orlix
