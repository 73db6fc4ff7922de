#pragma once

#include "CLineReader.h"

#include <cstdint>
#include <string>
#include <vector>

/** Reads recorded touches frame by frame: text with one record a line, the axes first, then the events of the kernel's
 *  multi-touch protocol of numbered slots. A `#` starts a comment.
 *
 *      A: CODE MIN MAX ...                          the range of an axis, its code in hexadecimal
 *      E: SECONDS.MICROSECONDS TYPE CODE VALUE      an event, type and code in hexadecimal
 *      N: I: P: B:                                  the device's name and masks, passed over
 *
 *  A record that is malformed, out of its axis's range or of a slot that the device does not have is one line on stderr
 *  and skipped; playing goes on. */
class CTouchRecording {
public:
    enum EChange { CHANGE_PRESS = 0, CHANGE_MOVE = 1, CHANGE_RELEASE = 2 };

    /** What a frame did to a slot. */
    struct tagChange {
        EChange eChange;
        unsigned int uiSlot;
        std::int64_t iX; // as recorded
        std::int64_t iY;
    };

    /** What was set between two ends of frames happened at once: the changes by ascending slot. A finger that another
     *  one took the place of is a release at its old place and a press at the new one. */
    struct tagFrame {
        std::uint64_t uiTime; // microseconds of the recording's own clock
        std::vector<tagChange> aryChanges;
    };

    /** The values that an axis can have, both ends included. */
    struct tagRange {
        bool bKnown = false;
        std::int64_t iMin = 0;
        std::int64_t iMax = 0;

        bool holds(std::int64_t iValue) const noexcept { return iValue >= iMin && iValue <= iMax; }
        std::int64_t getSize() const noexcept { return iMax - iMin + 1; }
    };

    /** @param stop once set, the recording counts as ended. Outlives this. */
    explicit CTouchRecording(const CEventFlag& stop) noexcept : m_reader(stop) {}

    /** @param pPath the file; "-" for standard input. @return false with the reason in errno if it cannot be read. */
    bool open(const char* pPath);

    /** Takes the next frame, one without changes included. @return false at the end and when it cannot go on. */
    bool readFrame(tagFrame& frame);

    /** Whether the recording could be played, once readFrame is false: it had axes and events, and was read to its end.
     *  If not, the reason is one line on stderr. */
    bool checkEnd() const;

    /** The time of the first event, once there was a frame. */
    std::uint64_t getFirstTime() const noexcept { return m_uiFirstTime; }
    const tagRange& getRangeX() const noexcept { return m_rangeX; }
    const tagRange& getRangeY() const noexcept { return m_rangeY; }

private:
    struct tagSlot {
        std::int64_t iID = -1; // of the finger, -1 for none
        std::int64_t iX = 0;
        std::int64_t iY = 0;
    };

    struct tagEvent {
        std::uint64_t uiTime;
        unsigned int uiType;
        unsigned int uiCode;
        std::int64_t iValue;
    };

    bool readRecord(const std::string& strLine, tagEvent& event);
    void readAxis(const char* pText);
    bool readEvent(const char* pText, tagEvent& event);
    bool applyEvent(const tagEvent& event);
    bool startEvents(std::uint64_t uiTime);
    tagRange* findRange(unsigned int uiCode) noexcept;
    void report(const char* pWhat) const;
    void endFrame(std::uint64_t uiTime, tagFrame& frame);

    const char* m_pPath = nullptr;
    CLineReader m_reader;
    std::size_t m_uiLine = 0;
    tagRange m_rangeX, m_rangeY, m_rangeSlot, m_rangeID;
    bool m_bStarted = false; // the first event has come, and both axes before it
    bool m_bNoAxes = false;  // the first event has come without them
    std::uint64_t m_uiFirstTime = 0;
    std::size_t m_uiSlot = 0;
    std::vector<tagSlot> m_arySlots;     // as they stand now
    std::vector<tagSlot> m_aryLastFrame; // as they stood at the end of the last frame
};
