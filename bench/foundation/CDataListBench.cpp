// A list of ints as a queue. The floor links the same nodes, each one block of the floor heap.
#include <Orlix/foundation/CDataList.h>

#include "support/ListBench.h"

namespace {
const bool g_bRegistered = registerLists<Orlix::CDataList<int>, int>("CDataList");
} // namespace
