#pragma once

#include <Orlix/input/ITouchListener.h>

class CTouchStatistics;

/** Prints one line for each touch that it is told of. Threads: the host thread. */
class CTouchPrinter : public Orlix::ITouchListener {
public:
    /** @param statistics counts along; outlives this. */
    explicit CTouchPrinter(CTouchStatistics& statistics) : m_statistics(statistics) {}

    void onTouchPress(const Orlix::CCursor& cursor) override;
    void onTouchMove(const Orlix::CCursor& cursor) override;
    void onTouchRelease(const Orlix::CCursor& cursor) override;
    void onTouchWheel(const Orlix::CCursor& cursor) override;

private:
    void print(const wchar_t* pWhat, const Orlix::CCursor& cursor);

    CTouchStatistics& m_statistics;
};
