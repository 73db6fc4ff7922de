#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace OrlixTest {

struct tagPayload {
    bool bXML;
    std::string strBytes;
};

/** What is held and what has arrived, without a buffer, a position or any hurry. */
class CFrameModel {
public:
    std::string m_strHeld;
    std::vector<tagPayload> m_vecPayload;

    void feed(const std::string& strChunk) {
        m_strHeld += strChunk;
        std::size_t uiGone = 0;
        m_strHeld = parse(uiGone) ? m_strHeld.substr(uiGone) : std::string();
    }

private:
    /** @param uiGone how many bytes are done with. @return false if nothing of it is to be kept. */
    bool parse(std::size_t& uiGone) {
        const std::string& str = m_strHeld;
        std::size_t uiExpected = str.size(); // at least what there is
        for (std::size_t uiAt = 0; uiExpected >= 5;) {
            while (uiAt + 4 < str.size() && str.compare(uiAt, 4, "IVEN") == 0 && str[uiAt + 4] != 0)
                uiAt += 5;
            if (uiAt + 4 >= str.size() || str.compare(uiAt, 4, "IVEN") != 0)
                return false;
            if (uiExpected < 10) {
                uiGone = uiAt;
                return true;
            }
            if (uiAt + 9 >= str.size())
                return false;
            std::uint64_t uiLength = 0;
            for (int i = 3; i >= 0; --i)
                uiLength = uiLength * 256 + static_cast<unsigned char>(str[uiAt + 5 + static_cast<std::size_t>(i)]);
            if (uiLength == 0)
                return false;
            uiGone = uiAt;
            if (uiAt + 10 + uiLength > str.size())
                return true;
            m_vecPayload.push_back({str[uiAt + 9] == 1, str.substr(uiAt + 10, uiLength)});
            uiAt += 10 + uiLength;
            uiGone = uiAt;
            uiExpected -= 10 + uiLength;
        }
        return true;
    }
};
} // namespace OrlixTest
