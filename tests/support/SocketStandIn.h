#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace OrlixTest {

/** How sockets are set up, written down for as long as this lives, and refused if asked for; one at a time. */
class CSocketStandIn {
public:
    CSocketStandIn();
    ~CSocketStandIn();
    CSocketStandIn(const CSocketStandIn&) = delete;
    CSocketStandIn& operator=(const CSocketStandIn&) = delete;

    /** The entry of an option that is set to an integer. */
    static std::string option(int iLevel, int iName, int iValue);

    void note(const std::string& strCall);
    std::vector<std::string> getCalls();

    bool m_bNoSocket = false; // the system has no socket to give
    bool m_bNoListen = false; // nobody can listen

private:
    std::mutex m_mutex;
    std::vector<std::string> m_vecCall;
};
} // namespace OrlixTest
