#include "support/ShareJanitor.h"

#include "support/SingleThread.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <semaphore.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/** What goes through the pipe, in one write. */
struct tagNote {
    bool bKey;
    int iNumber;
};

int g_iNotes = -1; // where the notes go

void write(tagNote note) {
    if (g_iNotes != -1 && ::write(g_iNotes, &note, sizeof(note)) != sizeof(note))
        std::abort();
}

void removeSegment(int iSegmentID) {
    shmctl(iSegmentID, IPC_RMID, nullptr);
    for (const char* const pPrefix : {"/super_read_", "/super_write_", "/super_event_"}) {
        char szName[64];
        std::snprintf(szName, sizeof(szName), "%s%d", pPrefix, iSegmentID);
        sem_unlink(szName);
    }
}

/** Keeps the notes in a block that grows by realloc only: the process was forked from one that may be a sanitizer's. */
[[noreturn]] void runJanitor(int iNotes) {
    tagNote* pNotes = nullptr;
    std::size_t uiCount = 0;
    for (tagNote note; read(iNotes, &note, sizeof(note)) == sizeof(note); ++uiCount) {
        pNotes = static_cast<tagNote*>(std::realloc(pNotes, (uiCount + 1) * sizeof(note)));
        pNotes[uiCount] = note;
    }
    for (std::size_t i = 0; i < uiCount; ++i) {
        const int iSegmentID = pNotes[i].bKey ? shmget(pNotes[i].iNumber, 0, 0) : pNotes[i].iNumber;
        if (iSegmentID != -1)
            removeSegment(iSegmentID);
    }
    _exit(0);
}

/** In the janitor: nothing of the test's stays open but the pipe it reads, and the one that tells of its end. */
void keepOnly(int iNotes, int iDone) {
    setsid();
    for (int i = 0; i < 1024; ++i) {
        if (i != iNotes && i != iDone)
            close(i);
    }
}
} // namespace

OrlixTest::CShareJanitor::CShareJanitor() {
    int aryNotes[2];
    int aryDone[2];
    if (pipe2(aryNotes, O_CLOEXEC) != 0 || pipe2(aryDone, O_CLOEXEC) != 0)
        std::abort();
    g_iNotes = -1;
    awaitSingleThread();
    const pid_t pid = fork();
    if (pid == 0) {
        // Once more, so that it is no child of the test: who kills the test with its children does not find it.
        if (fork() != 0)
            _exit(0);
        keepOnly(aryNotes[0], aryDone[1]);
        runJanitor(aryNotes[0]);
    }
    waitpid(pid, nullptr, 0);
    close(aryNotes[0]);
    close(aryDone[1]);
    g_iNotes = aryNotes[1];
    m_iDone = aryDone[0];
}

OrlixTest::CShareJanitor::~CShareJanitor() {
    close(g_iNotes);
    g_iNotes = -1;
    char chNothing;
    if (read(m_iDone, &chNothing, 1) != 0)
        std::abort();
    close(m_iDone);
}

void OrlixTest::CShareJanitor::noteKey(unsigned int uiKey) { write({true, static_cast<int>(uiKey)}); }

void OrlixTest::CShareJanitor::noteSegment(int iSegmentID) { write({false, iSegmentID}); }
