#pragma once

#include <Orlix/ipc/IDataTransferListener.h>

/** Prints one line for everything that a data transfer tells. Threads: the host thread. */
class CTransferPrinter : public Orlix::IDataTransferListener {
public:
    void onConnect() override;
    void onDisconnect() override;
    void onTouchInputAvailable(const Orlix::CCursor& cursor) override;
    void onPageCMDAvailable(EOperationHandle eHandle, Orlix::CString strPageName) override;
    void onLogicDataAvailable(Orlix::CXMLParser* pParser) override;
    void onLogicDataAvailable(Orlix::CArrayPtr<unsigned char> aryData) override;

    /** A peer's text as it may stand in a line: line ends are `&cr;` and `&lf;`, and what controls a terminal or is no
     *  character at all is its number, as in `&#27;`. */
    static Orlix::CString toLine(const Orlix::CString& strText);
};
