#include <Orlix/system/CImpFile.h>

#include "system/CPathBuffer.h"

#include <Orlix/system/CFile.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orlix {
namespace {

constexpr mode_t OWNER_BITS = S_IRUSR | S_IWUSR | S_IXUSR;

/** What lies at the path itself, be it a link. */
bool statEntry(const CString& strPath, struct stat& state) { return lstat(CPathBuffer(strPath).get(), &state) == 0; }

/** What the path leads to, if it can be opened for reading. Does not wait for the other end of a pipe. */
bool statReadable(const CString& strPath, struct stat& state) {
    const int iHandle = ::open(CPathBuffer(strPath).get(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (iHandle < 0)
        return false;
    const bool bKnown = fstat(iHandle, &state) == 0;
    ::close(iHandle);
    return bKnown;
}

/** Whether both paths lead to one file. To open that one for writing would empty it before it is read. */
bool isSameFile(const CString& strOne, const CString& strOther) {
    struct stat one, other;
    return stat(CPathBuffer(strOne).get(), &one) == 0 && stat(CPathBuffer(strOther).get(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool copyData(CFile& from, CFile& to) {
    constexpr unsigned int BLOCK_BYTES = 1024;
    unsigned char aryBlock[BLOCK_BYTES] = {};
    for (unsigned int uiLeft = from.getFileSize(); uiLeft != 0;) {
        const unsigned int uiBlock = std::min(uiLeft, BLOCK_BYTES);
        if (!from.readData(aryBlock, uiBlock) || !to.writeData(aryBlock, uiBlock))
            return false;
        uiLeft -= uiBlock;
    }
    return true;
}
} // namespace

bool CImpFile::isFile(const CString& strPath) {
    struct stat state;
    return statEntry(strPath, state) && !S_ISDIR(state.st_mode);
}

bool CImpFile::isExist(const CString& strPath) {
    struct stat state;
    return statEntry(strPath, state);
}

bool CImpFile::isReadOnly(const CString& strPath) {
    struct stat state;
    return statReadable(strPath, state) && (state.st_mode & OWNER_BITS) == S_IRUSR;
}

bool CImpFile::setWritable(const CString& strPath) {
    struct stat state;
    return statReadable(strPath, state) && chmod(CPathBuffer(strPath).get(), state.st_mode | S_IWUSR) == 0;
}

long CImpFile::getLastModifyTime(const CString& strPath) {
    struct stat state;
    return statReadable(strPath, state) ? state.st_mtime : 0;
}

bool CImpFile::renameFile(const CString& strFrom, const CString& strTo) {
    return rename(CPathBuffer(strFrom).get(), CPathBuffer(strTo).get()) == 0;
}

bool CImpFile::deleteFile(const CString& strPath) {
    struct stat state;
    if (!statEntry(strPath, state) || !S_ISREG(state.st_mode))
        return false;
    unlink(CPathBuffer(strPath).get()); // a refusal counts as done, on purpose: deleteFolder goes on behind it
    return true;
}

bool CImpFile::copyFile(const CString& strFrom, const CString& strTo) {
    CFile from, to;
    if (!from.open(strFrom, true) || isSameFile(strFrom, strTo) || !to.open(strTo, false))
        return false;
    return copyData(from, to);
}
} // namespace Orlix
