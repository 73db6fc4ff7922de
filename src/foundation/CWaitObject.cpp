#include <Orlix/foundation/CWaitObject.h>

#include <Orlix/foundation/CImpWaitObject.h>

namespace Orlix {

CWaitObject::CWaitObject(const CString&) : m_pImp(new CImpWaitObject) {}

CWaitObject::~CWaitObject() { delete m_pImp; }

void CWaitObject::wait(unsigned int uiMilliseconds) {
    if (m_pImp)
        m_pImp->wait(uiMilliseconds);
}

void CWaitObject::forceWait(unsigned int uiMilliseconds) {
    if (m_pImp)
        m_pImp->forceWait(uiMilliseconds);
}

void CWaitObject::notify() {
    if (m_pImp)
        m_pImp->notify();
}

void CWaitObject::reset() {
    if (m_pImp)
        m_pImp->reset();
}
} // namespace Orlix
