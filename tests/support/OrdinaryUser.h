#pragma once

#include "support/ChildProcess.h"

#include <filesystem>
#include <grp.h>
#include <vector>

namespace OrlixTest {

constexpr unsigned int ORDINARY_USER = 65534; // nobody

/** Gives a folder and all in it to the user of runAsOrdinaryUser. */
inline void giveToOrdinaryUser(const std::string& strFolder) {
    if (geteuid() != 0)
        return; // that user is this one
    std::vector<std::string> aryPath{strFolder};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(strFolder))
        aryPath.push_back(entry.path().string());
    for (const std::string& strPath : aryPath) {
        if (lchown(strPath.c_str(), ORDINARY_USER, ORDINARY_USER) != 0)
            std::abort();
    }
}

/** Runs fnBody in a child to which permissions apply: as nobody for root, otherwise as this user.
 *  @return what fnBody returns, -1 if a signal ended it. */
template <class F> int runAsOrdinaryUser(F fnBody) {
    return runInChild([&] {
               if (geteuid() == 0 &&
                   (setgroups(0, nullptr) != 0 || setgid(ORDINARY_USER) != 0 || setuid(ORDINARY_USER) != 0))
                   return 124;
               return fnBody();
           })
        .iExitCode;
}
} // namespace OrlixTest
