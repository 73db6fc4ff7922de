// A list of pointers that it does not own as a queue, so that it is the list alone that is measured. The floor links
// the same nodes, each one block of the floor heap.
#include <Orlix/foundation/CObjectList.h>

#include "support/ListBench.h"

namespace {

class CBorrowingList : public Orlix::CObjectList<int> {
public:
    CBorrowingList() { setOwn(false); }
};

const bool g_bRegistered = registerLists<CBorrowingList, int*>("CObjectList");
} // namespace
