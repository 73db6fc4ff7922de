#include <Orlix/foundation/CSyncObject.h>

#include <Orlix/foundation/CImpSyncObject.h>

namespace Orlix {

CSyncObject::CSyncObject() : m_pImp(new CImpSyncObject) {}

CSyncObject::~CSyncObject() { delete m_pImp; }
} // namespace Orlix
