// Any bytes as a file: it gives what the text gives that it loads as, and what is written to a file reads back as what
// is written as the same bytes again. Patching a file never does more than false.
#include "support/MemoryFile.h"
#include "support/XMLCheck.h"

using namespace OrlixFuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    static CMemoryFile s_file;
    s_file.setContent(pData, uiSize);
    Orlix::CXMLParser fromFile, fromText;
    const bool bFromFile = fromFile.parseFromFile(s_file.getPath());
    Orlix::CString strText;
    const bool bLoaded = Orlix::CXMLParser::loadToString(s_file.getPath(), strText);
    FUZZ_CHECK(bLoaded == (uiSize >= 4));
    const bool bFromText = fromText.parseFromString(strText);
    FUZZ_CHECK(bFromFile == bFromText);
    FUZZ_CHECK(describeDocument(fromFile, bFromFile) == describeDocument(fromText, bFromText));
    if (bFromFile) {
        FUZZ_CHECK(fromText.saveToFile(s_file.getPath(), true));
        FUZZ_CHECK(fromFile.parseFromFile(s_file.getPath()));
        checkRoundTrip(fromFile);
    }
    Orlix::CDataArray<Orlix::CString> aryFrom, aryTo;
    aryFrom.add(L"a");
    aryTo.add(L"<b/>");
    fromFile.updateFile(s_file.getPath(), aryFrom, aryTo);
    FUZZ_CHECK(!fromFile.hasRootElement());
    return 0;
}
