#include "CTextSource.h"

#include "CEventFlag.h"
#include "CSourceThread.h"
#include "ExitCode.h"

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <cstdio>
#include <cstring>

using namespace Orlix;

bool CTextSource::open(const char* pPath) {
    m_pPath = pPath;
    return m_reader.open(pPath);
}

int CTextSource::run() {
    std::string strLine;
    while (m_reader.readLine(strLine)) {
        postLine(strLine);
        CSourceThread::waitForRoom(m_stop);
    }
    if (m_reader.getError() == 0)
        return EXIT_DONE;
    std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", m_pPath, std::strerror(m_reader.getError()));
    return EXIT_USAGE;
}

void CTextSource::postLine(const std::string& strLine) {
    CString strText;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strLine.c_str()), strText);
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    pCenter->pushIMEMessage(strText);
    pCenter->pushRenderMessage(0);
}
