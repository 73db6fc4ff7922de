// A program of its own: the library's objects are linked straight into it, so that its static probes take their place
// among the library's own. Started plainly it runs itself as the probed program and compares what that printed.

#include <Orlix/foundation/CString.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/ipc/CDataTransfer.h>
#include <Orlix/memory/CMemManager.h>
#include <Orlix/memory/CMemory.h>
#include <Orlix/system/CLogUtility.h>
#include <Orlix/system/CPath.h>

#include "foundation/StaticOrder.h"
#include "support/LogSettings.h"
#include "support/Sanitizer.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/wait.h>

using namespace Orlix;

namespace {

// A block of the manager's has its check word in front. A block of the system heap has none; looking there is foreign
// memory, which is mapped but closed to the address sanitizer.
__attribute__((no_sanitize("address"))) bool isManagerBlock(const void* pBlock) {
    const auto uiHeader = reinterpret_cast<std::uintptr_t>(pBlock) - 16;
    const volatile unsigned int* const pCheckWord = reinterpret_cast<const unsigned int*>(uiHeader + 8);
    return *pCheckWord == (static_cast<unsigned int>(uiHeader) ^ 0x837A46C2u);
}

bool isPoolUnit(const void* pBlock) {
    void* pOwner = nullptr;
    if (isManagerBlock(pBlock))
        std::memcpy(&pOwner, static_cast<const unsigned char*>(pBlock) - 16, sizeof(pOwner));
    return pOwner != nullptr;
}

// An object that is not built yet is all zeros; then it has its table of virtual operations in front.
bool isBuilt(const CObject& object) {
    const void* pTable = nullptr;
    std::memcpy(&pTable, static_cast<const void*>(&object), sizeof(pTable));
    return pTable != nullptr;
}

// Takes two blocks with its construction and gives one back with its destruction. Everything goes out as wide text,
// as the library's own lines do.
class CProbe {
public:
    explicit CProbe(const wchar_t* szName) : m_szName(szName) {
        m_pKept = CMemory::malloc(40, 0);
        m_pEarly = CMemory::malloc(40, 0);
        std::wprintf(L"%ls: built %ls, block of the %ls\n", m_szName, getManagerState(), getSource(m_pKept));
        if (isBuilt(STRING_NULL))
            std::wprintf(L"%ls: sees the null string\n", m_szName);
        if (isBuilt(ORLIX_ENGINE))
            std::wprintf(L"%ls: sees a name of the log in the %ls\n", m_szName, getSource(ORLIX_ENGINE.getBuffer()));
    }
    CProbe(const CProbe&) = delete;
    CProbe& operator=(const CProbe&) = delete;
    ~CProbe() {
        std::wprintf(L"%ls: gone %ls\n", m_szName, getManagerState());
        CMemory::free(m_pKept);
    }

    // Gives the other block back while the manager lives.
    void freeEarly() {
        std::wprintf(L"%ls: frees 0x%x\n", m_szName,
                     static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(m_pEarly)));
        CMemory::free(m_pEarly);
    }

    static const wchar_t* getManagerState() {
        return CMemManager::getInstance() ? L"with manager" : L"without manager";
    }
    static const wchar_t* getSource(const void* pBlock) { return isPoolUnit(pBlock) ? L"pool" : L"system heap"; }

private:
    const wchar_t* m_szName;
    void* m_pKept;
    void* m_pEarly;
};

// The numbers lie around those of the library: ahead of all, right before the manager, right behind it, behind all.
CProbe g_probeFirst __attribute__((init_priority(150))) (L"first");
CProbe g_probeBefore __attribute__((init_priority(289))) (L"before");
CProbe g_probeAfter __attribute__((init_priority(291))) (L"after");
CProbe g_probeLog __attribute__((init_priority(319))) (L"log");
CProbe g_probeLogUtility __attribute__((init_priority(321))) (L"log utility");
CProbe g_probeLast(L"last");

const void* g_pFolder = nullptr; // the block of the project folder's text

const void* g_pSurface = nullptr;

const void* g_pDeletedInstance = nullptr; // the block of the record of data transfers that are gone

// Says whether the library still keeps a block when its own turn to go comes.
class CBlockProbe {
public:
    CBlockProbe(const wchar_t* szName, const void* const& pBlock) : m_szName(szName), m_pBlock(pBlock) {}
    CBlockProbe(const CBlockProbe&) = delete;
    CBlockProbe& operator=(const CBlockProbe&) = delete;
    ~CBlockProbe() {
        if (m_pBlock) // not in the program that only compares
            std::wprintf(L"%ls %ls\n", m_szName, isManagerBlock(m_pBlock) ? L"kept" : L"given back");
    }

private:
    const wchar_t* m_szName;
    const void* const& m_pBlock;
};

CBlockProbe g_probeBeforePath __attribute__((init_priority(329))) (L"before paths: project folder", g_pFolder);
CBlockProbe g_probeAfterPath __attribute__((init_priority(331))) (L"after paths: project folder", g_pFolder);
CBlockProbe g_probeBeforeTransfer
    __attribute__((init_priority(339))) (L"before data transfers: record", g_pDeletedInstance);
CBlockProbe g_probeAfterTransfer
    __attribute__((init_priority(341))) (L"after data transfers: record", g_pDeletedInstance);
CBlockProbe g_probeBeforeSurface __attribute__((init_priority(349))) (L"before surfaces: surface", g_pSurface);
CBlockProbe g_probeAfterSurface __attribute__((init_priority(351))) (L"after surfaces: surface", g_pSurface);

// Nobody deletes the surface, and a finger is held on it to the end.
void touchSurface() {
    CSurface* const pSurface = CSurface::getInstance(0, false);
    g_pSurface = pSurface;
    pSurface->setEnable(true);
    pSurface->getCursorManager()->addCursor(1, 10, 20, 0);
}

// Nobody forgets the one that is gone.
void leaveDataTransfer() {
    { const CDataTransfer transfer; }
    g_pDeletedInstance = &g_aryDeletedInstance[0];
}

OrlixTest::CTempFolder* g_pLogFolder = nullptr;

// Says whether the log's file has its line when its own turn to go comes.
class CLogProbe {
public:
    explicit CLogProbe(const wchar_t* szName, bool bCleanUp) : m_szName(szName), m_bCleanUp(bCleanUp) {}
    CLogProbe(const CLogProbe&) = delete;
    CLogProbe& operator=(const CLogProbe&) = delete;
    ~CLogProbe() {
        if (!g_pLogFolder)
            return;
        const bool bClosed = !OrlixTest::readWhole(*g_pLogFolder / "log").empty();
        std::wprintf(L"%ls: log file %ls\n", m_szName, bClosed ? L"closed" : L"open");
        if (m_bCleanUp)
            delete g_pLogFolder;
    }

private:
    const wchar_t* m_szName;
    bool m_bCleanUp;
};

CLogProbe g_probeBeforeLog __attribute__((init_priority(309))) (L"before log", true);
CLogProbe g_probeAfterLog __attribute__((init_priority(311))) (L"after log", false);

// Nobody closes the log.
void openLog() {
    g_pLogFolder = new OrlixTest::CTempFolder;
    OrlixTest::writeWhole(*g_pLogFolder / "engine.xml",
                          "<engine><log_output terminal=\"false\" file_path_linux=\"log\"/></engine>");
    CConfigParser::getInstance()->load(OrlixTest::toText(*g_pLogFolder / "engine.xml"));
    CLog::initialize();
    CLogEngine::info(L"text");
    CConfigParser::deleteInstance();
}

int runProbed() {
    std::wprintf(L"main: %ls\n", CProbe::getManagerState());
    openLog();
    CPath::setProjectFolder(L"/project");
    g_pFolder = CPath::getProjectFolder().getBuffer();
    touchSurface();
    leaveDataTransfer();
    g_probeLast.freeEarly();
    g_probeAfter.freeEarly();
#ifndef ORLIX_TEST_ASAN // the library looks in front of these two, and the sanitizer stops the program there
    g_probeBefore.freeEarly();
    g_probeFirst.freeEarly();
#endif
    return 0;
}

std::string readOutput(const char* szCommand, int& iStatus) {
    std::string strOutput;
    std::FILE* const pPipe = popen(szCommand, "r");
    if (!pPipe)
        return "no pipe";
    char aryChunk[1024];
    for (std::size_t uiRead; (uiRead = std::fread(aryChunk, 1, sizeof(aryChunk), pPipe)) > 0;)
        strOutput.append(aryChunk, uiRead);
    iStatus = pclose(pPipe);
    return strOutput;
}

// The addresses differ from run to run. Each "frees 0x…" line gives its own, and a warning that follows must show the
// same one; both become "0x".
std::string withoutAddresses(std::string strText) {
    static const char WARNING[] = "Free(0x";
    std::string strLast;
    for (std::size_t uiAt = 0; (uiAt = strText.find("0x", uiAt)) != std::string::npos;) {
        uiAt += 2;
        const std::size_t uiEnd = strText.find_first_not_of("0123456789abcdef", uiAt);
        const std::string strAddress = strText.substr(uiAt, uiEnd - uiAt);
        const bool bWarning = uiAt >= sizeof(WARNING) - 1 && strText.compare(uiAt - 7, 7, WARNING) == 0;
        if (!bWarning || strAddress == strLast)
            strText.erase(uiAt, strAddress.size());
        strLast = strAddress;
    }
    return strText;
}

#define INVALID_LINE "[Warning][OrlixEngine] Free(0x): Invalid Pointer, Maybe it had been freed or crashed.\n"
const char EXPECTED[] = "first: built without manager, block of the system heap\n"
                        "before: built without manager, block of the system heap\n"
                        "before: sees the null string\n"
                        "after: built with manager, block of the pool\n"
                        "after: sees the null string\n"
                        "log: built with manager, block of the pool\n"
                        "log: sees the null string\n"
                        "log utility: built with manager, block of the pool\n"
                        "log utility: sees the null string\n"
                        "log utility: sees a name of the log in the pool\n"
                        "last: built with manager, block of the pool\n"
                        "last: sees the null string\n"
                        "last: sees a name of the log in the pool\n"
                        "main: with manager\n"
                        "last: frees 0x\n"
                        "after: frees 0x\n"
#ifndef ORLIX_TEST_ASAN
                        "before: frees 0x\n" INVALID_LINE "first: frees 0x\n" INVALID_LINE
#endif
                        "last: gone with manager\n"
                        "after surfaces: surface kept\n"
                        "before surfaces: surface given back\n"
                        "after data transfers: record kept\n"
                        "before data transfers: record given back\n"
                        "after paths: project folder kept\n"
                        "before paths: project folder given back\n"
                        "log utility: gone with manager\n"
                        "log: gone with manager\n"
                        "after log: log file open\n"
                        "before log: log file closed\n"
                        "after: gone with manager\n"
                        "before: gone without manager\n"
                        "first: gone without manager\n";
} // namespace

int main(int iCount, char** aryArgument) {
    if (iCount > 1 && std::strcmp(aryArgument[1], "probed") == 0)
        return runProbed();
    int iStatus = -1;
    const std::string strCommand = "'" + std::string(aryArgument[0]) + "' probed";
    const std::string strOutput = withoutAddresses(readOutput(strCommand.c_str(), iStatus));
    if (iStatus == 0 && strOutput == EXPECTED)
        return 0;
    std::fprintf(stderr, "status %d, expected:\n%s\ngot:\n%s", iStatus, EXPECTED, strOutput.c_str());
    return 1;
}
