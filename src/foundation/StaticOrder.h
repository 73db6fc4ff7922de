#pragma once

// The order in which the library's static objects are built; they are destroyed in the reverse order. What is built
// before the memory manager lives on the system heap from first to last, what is built after it lives in the pools
// and is gone before they go. The linker sorts by these numbers, so the order of the sources does not matter.
#define ORLIX_STATIC_STRING __attribute__((init_priority(210)))
#define ORLIX_STATIC_MEM_MANAGER __attribute__((init_priority(290)))
#define ORLIX_STATIC_LOG __attribute__((init_priority(310)))
#define ORLIX_STATIC_LOG_UTILITY __attribute__((init_priority(320)))
#define ORLIX_STATIC_PATH __attribute__((init_priority(330)))
#define ORLIX_STATIC_DATA_TRANSFER __attribute__((init_priority(340)))
#define ORLIX_STATIC_SURFACE __attribute__((init_priority(350)))
