#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

CBaseMessage::~CBaseMessage() = default;

CString CBaseMessage::getTypeName() const {
    switch (m_eType) {
    case MESSAGE_UNKNOWN:
        return L"Unknown";
    case MESSAGE_RENDER:
        return L"Render";
    case MESSAGE_SYSTEM:
        return L"System";
    case MESSAGE_QUIT:
        return L"Quit";
    case MESSAGE_TOUCH:
        return L"Touch";
    case MESSAGE_GESTURE:
        return L"Gesture";
    case MESSAGE_HARDKEY:
        return L"Hardkey";
    case MESSAGE_IME:
        return L"IME";
    case MESSAGE_LOGIC_EVENT:
        return L"Logic Event";
    case MESSAGE_VOICE_CONTENT:
        return L"Voice Content";
    case MESSAGE_DATA_CONTEXT:
        return L"Data Context";
    case MESSAGE_SHARE_MEMORY:
        return L"Share Memory";
    case MESSAGE_DATA_TRANSFER:
        return L"Data Transfer";
    case MESSAGE_HTTP_CONNECTOR:
        return L"Http Connector";
    case MESSAGE_WEB_BROWSER:
        return L"Web Browser";
    case MESSAGE_TIMER:
        return L"Timer";
    case MESSAGE_USER:
        return L"User";
    }
    return L""; // any other number, on purpose not "Unknown"
}
} // namespace Orlix
