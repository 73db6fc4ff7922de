// Any text through any table of codes: decoding must do what a walk from left to right does, and a writer's table,
// which escapes its own escape character, must bring every text back.
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzText.h"

#include <algorithm>
#include <vector>

using namespace OrlixFuzz;
using Orlix::CString;
using Orlix::CStringConverter;

namespace {

/** Entries and the text they are applied to. */
class CTable {
public:
    explicit CTable(std::vector<std::wstring> aryCodes) : m_aryCodes(std::move(aryCodes)) {
        for (const std::wstring& strCode : m_aryCodes) {
            m_aryCopies.push_back(copyExactly(strCode.data(), strCode.size())); // a code needs no terminator
            m_aryPointers.push_back(m_aryCopies.back().get());
            m_aryLengths.push_back(static_cast<unsigned int>(strCode.size()));
        }
    }

    std::wstring encode(const std::wstring& strText) { return run(CStringConverter::encodeChars, strText); }
    std::wstring decode(const std::wstring& strText) { return run(CStringConverter::decodeChars, strText); }

    std::wstring decodeByHand(const std::wstring& strText) const {
        std::wstring strResult;
        for (std::size_t i = 0; i < strText.size();) {
            const auto code = std::find_if(m_aryCodes.begin(), m_aryCodes.end(), [&](const std::wstring& strCode) {
                return !strCode.empty() && strText.compare(i, strCode.size(), strCode) == 0;
            });
            const bool bFound = code != m_aryCodes.end();
            strResult += bFound ? CHARS[code - m_aryCodes.begin()] : strText[i];
            i += bFound ? code->size() : 1;
        }
        return strResult;
    }

private:
    static constexpr wchar_t CHARS[] = L"&<>\"'\u4F60";
    using FN_RUN = void (*)(const wchar_t*, unsigned int, unsigned int, const wchar_t*, const wchar_t**,
                            const unsigned int*, CString&);

    std::wstring run(FN_RUN fnRun, const std::wstring& strText) {
        const auto pText = copyExactly(strText.data(), strText.size());
        CString strResult;
        fnRun(pText.get(), static_cast<unsigned int>(strText.size()), static_cast<unsigned int>(m_aryCodes.size()),
              CHARS, m_aryPointers.data(), m_aryLengths.data(), strResult);
        FUZZ_CHECK(strText.empty() || !strResult.isEmpty());
        return textOf(strResult);
    }

    std::vector<std::wstring> m_aryCodes;
    std::vector<std::unique_ptr<wchar_t[]>> m_aryCopies;
    std::vector<const wchar_t*> m_aryPointers;
    std::vector<unsigned int> m_aryLengths;
};

constexpr std::size_t MOST_CODES = 6;

/** Lines of the input are codes, the last one is the text. */
std::vector<std::wstring> takeCodes(std::wstring& strInput) {
    std::vector<std::wstring> aryCodes;
    for (std::size_t i; aryCodes.size() < MOST_CODES && (i = strInput.find(L'\n')) != std::wstring::npos;) {
        aryCodes.push_back(strInput.substr(0, i));
        strInput.erase(0, i + 1);
    }
    return aryCodes;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    std::wstring strText = widen(std::string(reinterpret_cast<const char*>(pData), uiSize));
    CTable table(takeCodes(strText));
    const std::wstring strDecoded = table.decode(strText);
    FUZZ_CHECK(strDecoded == table.decodeByHand(strText));
    FUZZ_CHECK(strDecoded.size() <= strText.size());

    CTable writer({L"&amp;", L"&lt;", L"&gt;", L"&quot;", L"&apos;"});
    const std::wstring strEncoded = writer.encode(strText);
    FUZZ_CHECK(strEncoded.find_first_of(L"<>\"'") == std::wstring::npos);
    FUZZ_CHECK(writer.decode(strEncoded) == strText);
    return 0;
}
