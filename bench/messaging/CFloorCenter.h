#pragma once

#include "support/CFloorHeap.h"

#include <pthread.h>

#include <ctime>
#include <utility>

/** The least that the order of the message center costs, with its host asleep on an event: the same locks, blocks and
 *  clock readings, without containers and virtual calls.
 *
 *  @tparam TWeighed false: messages are of the list that is served first. true: of the first weighed list. */
template <bool TWeighed> class CFloorCenter {
public:
    explicit CFloorCenter(void (*pHandle)()) : m_pHandle(pHandle) {}
    CFloorCenter(const CFloorCenter&) = delete;
    CFloorCenter& operator=(const CFloorCenter&) = delete;
    ~CFloorCenter() {
        while (pop()) {}
    }

    void push() {
        tagMessage* const pMessage = static_cast<tagMessage*>(CFloorHeap::allocate(sizeof(tagMessage)));
        *pMessage = {m_pHandle, 0, nullptr, 1, 1, nullptr, nullptr, nullptr};
        pthread_mutex_lock(&m_mutex);
        tagNode* const pNode = static_cast<tagNode*>(CFloorHeap::allocate(sizeof(tagNode)));
        tagList& list = m_aryList[TWeighed ? 1 : 0];
        *pNode = {pMessage, list.pTail, nullptr};
        (list.pTail ? list.pTail->pNext : list.pHead) = pNode;
        list.pTail = pNode;
        pthread_mutex_unlock(&m_mutex);
        pthread_mutex_lock(&m_mutexEvent);
        m_bSignaled = true;
        pthread_cond_signal(&m_conditionEvent);
        pthread_mutex_unlock(&m_mutexEvent);
    }

    /** Takes one message out and hands it over. @return false if none waits. */
    bool pop() {
        tagMessage* const pMessage = unlink();
        if (!pMessage)
            return false;
        pMessage->pHandle();
        CFloorHeap::release(pMessage);
        return true;
    }

    void wait() {
        pthread_mutex_lock(&m_mutexEvent);
        while (!m_bSignaled)
            pthread_cond_wait(&m_conditionEvent, &m_mutexEvent);
        m_bSignaled = false;
        pthread_mutex_unlock(&m_mutexEvent);
    }

private:
    struct tagMessage {
        void (*pHandle)();
        int iRef;
        void* pPool;
        unsigned int uiType;
        unsigned int uiID;
        void* pVirtual;
        void* pData;
        void* pListener;
    };
    struct tagNode {
        tagMessage* pMessage;
        tagNode* pPrev;
        tagNode* pNext;
    };
    struct tagList {
        tagNode* pHead;
        tagNode* pTail;
    };
    struct tagInfo {
        unsigned int uiList;
        unsigned int uiLastTime;
        unsigned int uiTimeSpan;
        unsigned int uiWeight;
    };

    void (*m_pHandle)();
    pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    tagList m_aryList[5] = {};
    tagInfo m_aryInfo[4] = {{1, 0, 0, 10}, {2, 0, 0, 5}, {3, 0, 0, 2}, {4, 0, 0, 1}};
    pthread_mutex_t m_mutexEvent = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t m_conditionEvent = PTHREAD_COND_INITIALIZER;
    bool m_bSignaled = false;

    static tagMessage* unlinkHead(tagList& list) {
        tagNode* const pNode = list.pHead;
        if (!pNode)
            return nullptr;
        list.pHead = pNode->pNext;
        (list.pHead ? list.pHead->pPrev : list.pTail) = nullptr;
        tagMessage* const pMessage = pNode->pMessage;
        CFloorHeap::release(pNode);
        return pMessage;
    }

    tagMessage* unlink() {
        pthread_mutex_lock(&m_mutex);
        tagMessage* pMessage = unlinkHead(m_aryList[0]);
        pthread_mutex_unlock(&m_mutex);
        if (pMessage)
            return pMessage;
        const unsigned int uiNow = weigh();
        pthread_mutex_lock(&m_mutex);
        for (int i = 3; i >= 0 && !pMessage; --i) {
            pMessage = unlinkHead(m_aryList[m_aryInfo[i].uiList]);
            if (pMessage)
                m_aryInfo[i].uiLastTime = uiNow;
        }
        pthread_mutex_unlock(&m_mutex);
        return pMessage;
    }

    unsigned int weigh() {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        const unsigned int uiNow =
            static_cast<unsigned int>(now.tv_sec) * 1000u + static_cast<unsigned int>(now.tv_nsec) / 1000000u;
        for (tagInfo& info : m_aryInfo)
            info.uiTimeSpan = (uiNow - info.uiLastTime) * info.uiWeight;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3 - i; ++j) {
                if (m_aryInfo[j].uiTimeSpan > m_aryInfo[j + 1].uiTimeSpan)
                    std::swap(m_aryInfo[j], m_aryInfo[j + 1]);
            }
        }
        return uiNow;
    }
};
