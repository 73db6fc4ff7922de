#include "CShareReader.h"

#include "CChecksum.h"

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <cstdio>
#include <new>

using namespace Orlix;

bool CShareReader::open(unsigned int uiKey, unsigned int uiSize) {
    m_ptrBlock.reset(new (std::nothrow) unsigned char[uiSize]);
    if (m_ptrBlock && m_channel.open(uiKey, CShareMemory::MODE_READER, uiSize))
        return true;
    std::fprintf(stderr, "orlix-host: cannot share %u bytes under the key 0x%x\n", uiSize, uiKey);
    return false;
}

void CShareReader::onDataAvailable() {
    const unsigned int uiSize = m_channel.getSize(); // once: the writer's process is not to be believed
    m_channel.readData(m_ptrBlock.get(), uiSize);
    CStringConverter::printf(L"data %u bytes, crc32 %08X\n", uiSize, CChecksum::compute(m_ptrBlock.get(), uiSize));
}

void CShareReader::onWritterClose() {
    CStringConverter::printf(L"writer closed\n");
    CMessageCenter::getInstance()->pushQuitMessage();
}
