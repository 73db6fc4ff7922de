#include <Orlix/ipc/CShareMemoryProxy.h>

#include "ipc/ShareFixture.h"

#include <climits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CShareMemoryProxyTest = ShareMemoryTest;

/** A proxy whose channel the test can open, as nobody else can. */
class COpenProxy : public CShareMemoryProxy {
public:
    using CShareMemoryProxy::m_pShareMemory;
};

// Deliberate: the proxy opens nothing.
TEST_F(CShareMemoryProxyTest, OpenDoesNothing) {
    COpenProxy proxy;
    for (const unsigned int uiNumber : {0u, 1u, m_uiKey, UINT_MAX}) {
        EXPECT_FALSE(proxy.open(uiNumber, false, 8));
        EXPECT_FALSE(proxy.open(m_uiKey, true, uiNumber));
    }
    EXPECT_EQ(shmget(static_cast<key_t>(m_uiKey), 0, 0), -1);
    unsigned char ucByte = 0;
    EXPECT_TRUE(proxy.isEmpty());
    EXPECT_EQ(proxy.getSize(), 0u);
    EXPECT_FALSE(proxy.writeData(&ucByte, 1));
    EXPECT_FALSE(proxy.readData(&ucByte, 1));
    proxy.close();
}

TEST_F(CShareMemoryProxyTest, TheRestIsThatOfTheChannel) {
    COpenProxy writer, reader;
    CBlockListener listener(*reader.m_pShareMemory);
    reader.setListener(nullptr);
    reader.setListener(&listener);
    ASSERT_TRUE(writer.m_pShareMemory->open(m_uiKey, CShareMemory::MODE_WRITER, 8));
    ASSERT_TRUE(reader.m_pShareMemory->open(m_uiKey, CShareMemory::MODE_READER, 8));
    const VecByte vecBlock = toBytes("12345");
    ASSERT_TRUE(waitUntil([&] { return writer.writeData(vecBlock.data(), 5); }));
    EXPECT_EQ(reader.getSize(), 5u);
    EXPECT_FALSE(reader.isEmpty());
    VecByte vecRead(5);
    EXPECT_TRUE(reader.readData(vecRead.data(), 5));
    EXPECT_EQ(vecRead, vecBlock);
    EXPECT_TRUE(runUntil([&] { return listener.m_vecBlock.size() == 1; }));
    reader.close();
    EXPECT_FALSE(reader.readData(vecRead.data(), 5));
}

TEST_F(CShareMemoryProxyTest, ClosesItsChannelAtItsEnd) {
    int iSegmentID = -1;
    {
        COpenProxy proxy;
        ASSERT_TRUE(proxy.m_pShareMemory->open(m_uiKey, CShareMemory::MODE_READER, 8));
        iSegmentID = shmget(static_cast<key_t>(m_uiKey), 0, 0);
        EXPECT_TRUE(CRawChannel::isThere(iSegmentID));
    }
    EXPECT_FALSE(CRawChannel::isThere(iSegmentID));
}
} // namespace
