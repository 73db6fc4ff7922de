#include <Orlix/ipc/CMsgShareMemory.h>

#include "ipc/ShareFixture.h"

#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CMsgShareMemoryTest = ShareMemoryTest;

TEST_F(CMsgShareMemoryTest, CarriesTheTypeAndTheIDOfItsChannel) {
    COpenChannel channel;
    CMsgShareMemory message(&channel);
    EXPECT_EQ(message.getType(), CBaseMessage::MESSAGE_SHARE_MEMORY);
    EXPECT_EQ(message.getType(), 32u);
    EXPECT_EQ(message.getID(), channel.getID());
    EXPECT_TRUE(message.getData().isEmpty());
}

TEST_F(CMsgShareMemoryTest, CallsTheListenerOfItsChannel) {
    COpenChannel channel;
    CBlockListener listener(channel);
    CMsgShareMemory(&channel).handleMessage();
    EXPECT_EQ(listener.m_vecBlock.size(), 1u);
}

TEST_F(CMsgShareMemoryTest, OfNobodyDoesNothing) {
    CMsgShareMemory message(nullptr);
    EXPECT_EQ(message.getID(), 0u);
    message.handleMessage();
}
} // namespace
