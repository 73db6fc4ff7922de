#include <Orlix/ipc/CShareMemoryProxy.h>

#include <Orlix/ipc/CShareMemory.h>

namespace Orlix {

CShareMemoryProxy::CShareMemoryProxy() : m_pShareMemory(new CShareMemory) {}

CShareMemoryProxy::~CShareMemoryProxy() {
    close();
    delete m_pShareMemory;
}

bool CShareMemoryProxy::open(unsigned int, bool, unsigned int) { return false; }

void CShareMemoryProxy::setListener(IShareMemoryListener* pListener) {
    if (m_pShareMemory)
        m_pShareMemory->setListener(pListener);
}

void CShareMemoryProxy::close() {
    if (m_pShareMemory)
        m_pShareMemory->close();
}

bool CShareMemoryProxy::isEmpty() const { return getSize() == 0; }

unsigned int CShareMemoryProxy::getSize() const { return m_pShareMemory ? m_pShareMemory->getSize() : 0; }

bool CShareMemoryProxy::writeData(const unsigned char* pData, unsigned int uiSize) {
    return m_pShareMemory && m_pShareMemory->writeData(pData, uiSize);
}

bool CShareMemoryProxy::readData(unsigned char* pBuffer, unsigned int uiSize) {
    return m_pShareMemory && m_pShareMemory->readData(pBuffer, uiSize);
}
} // namespace Orlix
