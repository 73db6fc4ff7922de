#pragma once

#include "CLineReader.h"
#include "ISource.h"

#include <string>

/** Posts the lines of a UTF-8 text to the message center as they arrive: each as an IME message with a request to
 *  repaint target 0 behind it. A line ends for the library at its first zero byte, like every text. */
class CTextSource : public ISource {
public:
    bool open(const char* pPath) override;
    int run() override;

private:
    const char* m_pPath = nullptr;
    CLineReader m_reader;

    static void postLine(const std::string& strLine);
};
