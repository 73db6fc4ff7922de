#include "CPeerTouchSender.h"

#include "CTouchStatistics.h"

#include <Orlix/ipc/CDataTransfer.h>

using namespace Orlix;

void CPeerTouchSender::send(const CCursor& cursor) {
    if (!m_transfer.isConnect())
        ++m_uiLost;
    m_transfer.sendTouchInput(cursor);
    m_statistics.onHandled(cursor.getTouchStatus());
}
