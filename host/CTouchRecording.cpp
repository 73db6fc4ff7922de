#include "CTouchRecording.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr unsigned int TYPE_SYNC = 0, CODE_FRAME = 0;
constexpr unsigned int TYPE_ABSOLUTE = 3, CODE_SLOT = 0x2f, CODE_X = 0x35, CODE_Y = 0x36, CODE_ID = 0x39;
constexpr std::int64_t SLOTS_MOST = 1024; // far above any device, far below what could fill the memory
constexpr std::uint64_t MICROSECONDS = 1000000;

void skipBlanks(const char*& pText) {
    while (*pText == ' ' || *pText == '\t')
        ++pText;
}

bool isBlankOrEnd(char ch) { return ch == ' ' || ch == '\t' || ch == '\0'; }

/** Reads a number up to a blank or the end, and moves behind it. Leading zeros do not make it octal. */
bool readNumber(const char*& pText, int iBase, std::int64_t& iValue) {
    skipBlanks(pText);
    if (isBlankOrEnd(*pText) || *pText == '+')
        return false;
    char* pEnd = nullptr;
    errno = 0;
    iValue = std::strtoll(pText, &pEnd, iBase);
    if (errno != 0 || pEnd == pText || !isBlankOrEnd(*pEnd))
        return false;
    pText = pEnd;
    return true;
}

/** Reads a number of 32 bits, as the kernel has them. */
bool readValue(const char*& pText, std::int64_t& iValue) {
    return readNumber(pText, 10, iValue) && iValue >= std::numeric_limits<std::int32_t>::min() &&
           iValue <= std::numeric_limits<std::int32_t>::max();
}

/** Reads a type or a code: up to four hexadecimal digits. */
bool readCode(const char*& pText, unsigned int& uiCode) {
    std::int64_t iCode = 0;
    skipBlanks(pText);
    if (std::strncmp(pText, "0x", 2) == 0 || !readNumber(pText, 16, iCode) || iCode < 0 || iCode > 0xFFFF)
        return false;
    uiCode = static_cast<unsigned int>(iCode);
    return true;
}

bool readDigits(const char*& pText, std::size_t uiMost, std::uint64_t& uiValue) {
    const char* const pStart = pText;
    uiValue = 0;
    for (; *pText >= '0' && *pText <= '9'; ++pText)
        uiValue = uiValue * 10 + static_cast<std::uint64_t>(*pText - '0');
    return pText != pStart && static_cast<std::size_t>(pText - pStart) <= uiMost;
}

/** Reads SECONDS.MICROSECONDS, of which the second part always has six digits. */
bool readTime(const char*& pText, std::uint64_t& uiTime) {
    skipBlanks(pText);
    std::uint64_t uiSeconds = 0, uiMicroseconds = 0;
    if (!readDigits(pText, 10, uiSeconds) || *pText++ != '.')
        return false;
    const char* const pFraction = pText;
    if (!readDigits(pText, 6, uiMicroseconds) || pText - pFraction != 6 || !isBlankOrEnd(*pText))
        return false;
    uiTime = uiSeconds * MICROSECONDS + uiMicroseconds;
    return true;
}

/** Cuts off the comment, and a carriage return that another system has left. */
void stripComment(std::string& strLine) {
    const std::size_t uiComment = strLine.find('#');
    if (uiComment != std::string::npos)
        strLine.erase(uiComment);
    while (!strLine.empty() && std::strchr(" \t\r", strLine.back()))
        strLine.pop_back();
}
} // namespace

bool CTouchRecording::open(const char* pPath) {
    m_pPath = pPath;
    return m_reader.open(pPath);
}

bool CTouchRecording::readFrame(tagFrame& frame) {
    std::string strLine;
    tagEvent event;
    while (m_reader.readLine(strLine)) {
        ++m_uiLine;
        stripComment(strLine);
        if (!readRecord(strLine, event))
            continue;
        if (!startEvents(event.uiTime))
            return false;
        if (!applyEvent(event))
            continue;
        endFrame(event.uiTime, frame);
        return true;
    }
    return false;
}

/** @return whether the line is an event; an axis has then been taken already. */
bool CTouchRecording::readRecord(const std::string& strLine, tagEvent& event) {
    if (strLine.empty())
        return false;
    const bool bRecord = strLine.size() >= 2 && strLine[1] == ':' && strLine.find('\0') == std::string::npos;
    if (bRecord && strLine[0] == 'E')
        return readEvent(strLine.c_str() + 2, event);
    if (bRecord && strLine[0] == 'A')
        readAxis(strLine.c_str() + 2);
    else if (!bRecord || !std::strchr("NIPB", strLine[0]))
        report("is no record");
    return false;
}

void CTouchRecording::report(const char* pWhat) const {
    std::fprintf(stderr, "orlix-host: %s: line %zu %s\n", m_pPath, m_uiLine, pWhat);
}

CTouchRecording::tagRange* CTouchRecording::findRange(unsigned int uiCode) noexcept {
    switch (uiCode) {
    case CODE_SLOT:
        return &m_rangeSlot;
    case CODE_X:
        return &m_rangeX;
    case CODE_Y:
        return &m_rangeY;
    case CODE_ID:
        return &m_rangeID;
    default:
        return nullptr;
    }
}

void CTouchRecording::readAxis(const char* pText) {
    unsigned int uiCode = 0;
    tagRange range;
    if (!readCode(pText, uiCode) || !readValue(pText, range.iMin) || !readValue(pText, range.iMax) ||
        range.iMin > range.iMax) {
        report("is no axis");
        return;
    }
    tagRange* const pRange = findRange(uiCode);
    if (!pRange)
        return;
    if (m_bStarted || (uiCode == CODE_SLOT && (range.iMin != 0 || range.iMax >= SLOTS_MOST))) {
        report(m_bStarted ? "is an axis behind the first event" : "has a range of slots that no device has");
        return;
    }
    range.bKnown = true;
    *pRange = range;
}

bool CTouchRecording::readEvent(const char* pText, tagEvent& event) {
    if (readTime(pText, event.uiTime) && readCode(pText, event.uiType) && readCode(pText, event.uiCode) &&
        readValue(pText, event.iValue)) {
        skipBlanks(pText);
        if (*pText == '\0')
            return true;
    }
    report("is no event");
    return false;
}

/** Positions mean nothing without the axes, so those must come before the first event. */
bool CTouchRecording::startEvents(std::uint64_t uiTime) {
    if (m_bStarted)
        return true;
    m_bNoAxes = !m_rangeX.bKnown || !m_rangeY.bKnown;
    m_bStarted = !m_bNoAxes;
    m_uiFirstTime = uiTime;
    const std::size_t uiSlots = m_rangeSlot.bKnown ? static_cast<std::size_t>(m_rangeSlot.iMax) + 1 : 1;
    m_arySlots.assign(uiSlots, {-1, m_rangeX.iMin, m_rangeY.iMin});
    m_aryLastFrame = m_arySlots;
    return m_bStarted;
}

/** @return whether the event ends a frame. */
bool CTouchRecording::applyEvent(const tagEvent& event) {
    if (event.uiType == TYPE_SYNC)
        return event.uiCode == CODE_FRAME;
    const tagRange* const pRange = event.uiType == TYPE_ABSOLUTE ? findRange(event.uiCode) : nullptr;
    if (!pRange)
        return false; // repeats or adds to what the four codes say
    if (event.uiCode == CODE_SLOT) {
        if (event.iValue >= 0 && event.iValue < static_cast<std::int64_t>(m_arySlots.size()))
            m_uiSlot = static_cast<std::size_t>(event.iValue);
        else
            report("names a slot that the device does not have");
        return false;
    }
    const bool bLifted = event.uiCode == CODE_ID && event.iValue == -1;
    if (!bLifted &&
        ((pRange->bKnown && !pRange->holds(event.iValue)) || (event.uiCode == CODE_ID && event.iValue < 0))) {
        report("is out of its axis's range");
        return false;
    }
    tagSlot& slot = m_arySlots[m_uiSlot];
    (event.uiCode == CODE_X ? slot.iX : event.uiCode == CODE_Y ? slot.iY : slot.iID) = event.iValue;
    return false;
}

void CTouchRecording::endFrame(std::uint64_t uiTime, tagFrame& frame) {
    frame.uiTime = uiTime;
    frame.aryChanges.clear();
    for (std::size_t i = 0; i < m_arySlots.size(); ++i) {
        const tagSlot& slot = m_arySlots[i];
        tagSlot& last = m_aryLastFrame[i];
        const unsigned int uiSlot = static_cast<unsigned int>(i);
        const bool bSame = slot.iID == last.iID;
        if (!bSame && last.iID >= 0) { // lifted where the frame left it, or taken over where it was before
            const tagSlot& place = slot.iID < 0 ? slot : last;
            frame.aryChanges.push_back({CHANGE_RELEASE, uiSlot, place.iX, place.iY});
        }
        if (!bSame && slot.iID >= 0)
            frame.aryChanges.push_back({CHANGE_PRESS, uiSlot, slot.iX, slot.iY});
        if (bSame && slot.iID >= 0 && (slot.iX != last.iX || slot.iY != last.iY))
            frame.aryChanges.push_back({CHANGE_MOVE, uiSlot, slot.iX, slot.iY});
        last = slot;
    }
}

bool CTouchRecording::checkEnd() const {
    if (m_reader.getError() != 0)
        std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", m_pPath, std::strerror(m_reader.getError()));
    else if (m_bNoAxes || !(m_rangeX.bKnown && m_rangeY.bKnown))
        std::fprintf(stderr, "orlix-host: %s has no axes\n", m_pPath);
    else if (!m_bStarted)
        std::fprintf(stderr, "orlix-host: %s has no events\n", m_pPath);
    else
        return true;
    return false;
}
