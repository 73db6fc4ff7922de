#include "CPeerSession.h"

#include "CHostOptions.h"

#include <Orlix/foundation/CStringConverter.h>

using namespace Orlix;

CPeerSession::CPeerSession(const CHostOptions& options) {
    m_channel.setListener(&m_printer);
    m_channel.openAsServer(options.getListenPort()); // not with the port 0, which stands for none
    CString strAddress;
    const std::string& strOption = options.getConnectAddress();
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strOption.c_str()), strAddress);
    m_channel.openAsClient(strAddress, options.getConnectPort());
}
