// Any bytes as a configuration file. A file that loads twice gives the same settings twice, one that does not load
// changes nothing, and what save writes loads again with the same surfaces.
#include <Orlix/formats/CConfigParser.h>

#include "support/FuzzCheck.h"
#include "support/MemoryFile.h"

#include <cstddef>
#include <cstdint>
#include <string>

using Orlix::CConfigParser;
using Orlix::CString;
using OrlixFuzz::CMemoryFile;

namespace {

struct tagWriter {
    std::wstring& strText;
    void operator()(const wchar_t*, bool bValue) const { strText += bValue ? L"1;" : L"0;"; }
    void operator()(const wchar_t*, int iValue) const { strText += std::to_wstring(iValue) + L";"; }
    void operator()(const wchar_t*, unsigned int uiValue) const { strText += std::to_wstring(uiValue) + L";"; }
    void operator()(const wchar_t*, const CString& strValue) const {
        strText += std::wstring(strValue.getBuffer() ? strValue.getBuffer() : L"") + L";";
    }
};

template <class TRecord> void write(std::wstring& strText, const TRecord& record) {
    TRecord::visit(record, tagWriter{strText});
}

std::wstring describeSurfaces(const CConfigParser& config) {
    std::wstring strText;
    for (unsigned int i = 0; i < config.getSurfaceCount(); ++i)
        write(strText, *config.getSurfaceByIndex(i));
    return strText;
}

std::wstring describe(const CConfigParser& config) {
    std::wstring strText = describeSurfaces(config);
    write(strText, config.getLogLevel());
    write(strText, config.getLogOutput());
    tagWriter{strText}(L"", config.getMemReportOutput());
    for (unsigned int i = 0; i < CConfigParser::THREAD_COUNT; ++i) {
        tagWriter{strText}(L"", config.getThread().name[i]);
        tagWriter{strText}(L"", config.getThread().priority[i]);
    }
    write(strText, config.getResourceCache());
    write(strText, config.getRenderCache());
    write(strText, config.getRenderParam());
    write(strText, config.getRenderText());
    write(strText, config.getTouchParam());
    return strText;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    static CMemoryFile s_file;
    s_file.setContent(pData, uiSize);
    CConfigParser first;
    const std::wstring strBefore = describe(first);
    if (!first.load(s_file.getPath())) {
        FUZZ_CHECK(describe(first) == strBefore);
        return 0;
    }
    CConfigParser second;
    FUZZ_CHECK(second.load(s_file.getPath()));
    FUZZ_CHECK(describe(second) == describe(first));
    FUZZ_CHECK(first.getDisplayCount() <= first.getSurfaceCount());
    second.setMergeWindow(!second.isMergeWindow());
    if (second.save()) {
        CConfigParser saved;
        FUZZ_CHECK(saved.load(s_file.getPath()));
        FUZZ_CHECK(saved.isMergeWindow() == second.isMergeWindow());
        FUZZ_CHECK(saved.getSurfaceCount() == second.getSurfaceCount());
    }
    return 0;
}
