#pragma once

namespace OrlixTest {

/** Removes the segments and the named semaphores of a test, also when the test is killed: a process of its own that no
 *  signal to the test reaches learns of each key and identifier through a pipe, and cleans up when the pipe ends.
 *
 *  Make it while the process has one thread, and one at a time. What the stand-ins for shmget see is told by them, in
 *  forked processes too: those must have ended before this goes. */
class CShareJanitor {
public:
    CShareJanitor();
    CShareJanitor(const CShareJanitor&) = delete;
    CShareJanitor& operator=(const CShareJanitor&) = delete;
    /** Returns when everything is gone. */
    ~CShareJanitor();

    /** Does nothing without a janitor. */
    static void noteKey(unsigned int uiKey);
    static void noteSegment(int iSegmentID);

private:
    int m_iDone; // ends when the janitor has
};
} // namespace OrlixTest
