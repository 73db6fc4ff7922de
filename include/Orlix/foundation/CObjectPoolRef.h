#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CObject;

/** A pool that wants its objects back instead of having them deleted. The library consults it and implements none.
 *
 *  Threads: called on whichever thread releases the last reference. */
class ORLIX_API CObjectPoolRef {
public:
    /** Takes back an object whose last reference has just gone; its destructor has not run. */
    virtual void recycleObject(CObject* pObject) = 0;

protected:
    ~CObjectPoolRef() = default; // never deleted through this interface
};
} // namespace Orlix
