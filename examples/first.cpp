#include <Orlix/Orlix.h>

#include <clocale>

class CListener : public Orlix::IMessageCenterListener {
    void onHandleIMEMessage(const Orlix::CString& strText) override {
        Orlix::CStringConverter::printf(L"got %s\n", strText.getBuffer());
    }
};

int main() {
    std::setlocale(LC_ALL, "C.UTF-8");
    CListener listener;
    Orlix::CMessageCenter* const pCenter = Orlix::CMessageCenter::getInstance();
    pCenter->setListener(&listener);
    pCenter->pushIMEMessage(L"hello"); // from any thread
    while (const Orlix::CObjectPtr<Orlix::CBaseMessage> ptrMessage = pCenter->popMessage())
        ptrMessage->handleMessage(); // on the host thread
    Orlix::CMessageCenter::deleteInstance();
}
