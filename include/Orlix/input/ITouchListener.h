#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CCursor;

/** Receives the touches of a surface, on the host thread and without a lock.
 *
 *  A cursor is valid for the call; copy it to keep it. A listener must outlive every message made for it. */
class ORLIX_API ITouchListener {
public:
    virtual ~ITouchListener() = default;
    /** A finger touched down. */
    virtual void onTouchPress(const CCursor& cursor) = 0;
    /** A finger moved, or has been held where it is: then the cursor repeats the last move. */
    virtual void onTouchMove(const CCursor& cursor) = 0;
    /** A finger lifted. */
    virtual void onTouchRelease(const CCursor& cursor) = 0;
    /** The wheel turned by one step. */
    virtual void onTouchWheel(const CCursor& cursor) = 0;
};
} // namespace Orlix
