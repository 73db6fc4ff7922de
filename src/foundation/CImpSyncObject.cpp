#include <Orlix/foundation/CImpSyncObject.h>

namespace Orlix {

CImpSyncObject::CImpSyncObject() {
    pthread_mutexattr_t attribute;
    pthread_mutexattr_init(&attribute);
    pthread_mutexattr_settype(&attribute, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_mutex, &attribute);
    pthread_mutexattr_destroy(&attribute);
}

CImpSyncObject::~CImpSyncObject() { pthread_mutex_destroy(&m_mutex); }
} // namespace Orlix
