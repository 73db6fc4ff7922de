#include <Orlix/math/CMath.h>

#include <cstdlib>
#include <ctime>

namespace Orlix {
namespace {

void seedOnce(bool& bSeeded) {
    if (bSeeded)
        return;
    bSeeded = true;
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
}
} // namespace

int CMath::random() {
    static bool s_bSeeded = false;
    seedOnce(s_bSeeded);
    return std::rand();
}

int CMath::random(int iLow, int iHigh) {
    static bool s_bSeeded = false; // on purpose not the one above: the first call of each form seeds
    seedOnce(s_bSeeded);
    const int iCount = toSigned(toUnsigned(iHigh) - toUnsigned(iLow) + 1u);
    return iCount == 0 ? iLow : toSigned(toUnsigned(std::rand() % iCount) + toUnsigned(iLow));
}
} // namespace Orlix
