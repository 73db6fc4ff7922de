// Any bytes as recorded touches. Changes come by ascending slot, a finger is pressed before it moves or lifts and lifts
// before it is pressed again, and every position lies in its axis's range.
#include "CEventFlag.h"
#include "CTouchRecording.h"

#include "support/FuzzCheck.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/** Keeps the reports of skipped records, which most inputs are full of, away from the fuzzer's own. */
class CQuietStderr {
public:
    CQuietStderr() : m_iKept(dup(STDERR_FILENO)) {
        static const int s_iNull = open("/dev/null", O_WRONLY);
        dup2(s_iNull, STDERR_FILENO);
    }
    ~CQuietStderr() {
        dup2(m_iKept, STDERR_FILENO);
        close(m_iKept);
    }

private:
    int m_iKept;
};

bool playsByTheRules(const CTouchRecording& recording, const CTouchRecording::tagFrame& frame,
                     std::set<unsigned int>& setHeld) {
    unsigned int uiLast = 0;
    for (const CTouchRecording::tagChange& change : frame.aryChanges) {
        if (change.uiSlot < uiLast || !recording.getRangeX().holds(change.iX) ||
            !recording.getRangeY().holds(change.iY))
            return false;
        uiLast = change.uiSlot;
        const bool bHeld = setHeld.count(change.uiSlot) != 0;
        if (bHeld == (change.eChange == CTouchRecording::CHANGE_PRESS))
            return false;
        if (change.eChange == CTouchRecording::CHANGE_PRESS)
            setHeld.insert(change.uiSlot);
        if (change.eChange == CTouchRecording::CHANGE_RELEASE)
            setHeld.erase(change.uiSlot);
    }
    return true;
}

bool check(const std::string& strPath) {
    const CQuietStderr quiet;
    static const CEventFlag s_flagStop;
    CTouchRecording recording(s_flagStop);
    CTouchRecording::tagFrame frame;
    std::set<unsigned int> setHeld;
    bool bHolds = recording.open(strPath.c_str());
    while (bHolds && recording.readFrame(frame))
        bHolds = playsByTheRules(recording, frame, setHeld);
    recording.checkEnd();
    return bHolds;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    static const int s_iFile = memfd_create("recording", 0);
    FUZZ_CHECK(ftruncate(s_iFile, 0) == 0);
    FUZZ_CHECK(pwrite(s_iFile, pData, uiSize, 0) == static_cast<ssize_t>(uiSize));
    FUZZ_CHECK(check("/proc/self/fd/" + std::to_string(s_iFile)));
    return 0;
}
