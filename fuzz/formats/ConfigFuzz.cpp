// Any bytes as a configuration file. A file that loads twice gives the same settings twice, one that does not load
// changes nothing, and what save writes loads again with the same surfaces.
#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzCheck.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using Orlix::CConfigParser;
using Orlix::CString;

namespace {

/** A file in memory, by a path that any reader can open. */
class CMemoryFile {
public:
    CMemoryFile() : m_iFile(memfd_create("config", 0)) {
        Orlix::CStringConverter::convertFromMBCS(("/proc/self/fd/" + std::to_string(m_iFile)).c_str(), m_strPath);
    }
    ~CMemoryFile() { ::close(m_iFile); }

    const CString& getPath() const { return m_strPath; }
    void setContent(const std::uint8_t* pData, std::size_t uiSize) {
        FUZZ_CHECK(ftruncate(m_iFile, 0) == 0);
        FUZZ_CHECK(pwrite(m_iFile, pData, uiSize, 0) == static_cast<ssize_t>(uiSize));
    }

private:
    int m_iFile;
    CString m_strPath;
};

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
