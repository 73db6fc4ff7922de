// Any bytes as a document in memory: they give what the characters give that they make, and what parses is saved, read
// and saved again as the same.
#include "support/XMLCheck.h"

#include <Orlix/foundation/CStringConverter.h>

using namespace OrlixFuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    const std::string strBytes = toTerminated(pData, uiSize);
    const auto pBytes = copyExactly(reinterpret_cast<const unsigned char*>(strBytes.c_str()), strBytes.size() + 1);
    Orlix::CXMLParser fromBytes, fromText;
    const bool bFromBytes = fromBytes.parseFromStream(pBytes.get());

    const bool bMark = strBytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    Orlix::CString strText;
    Orlix::CStringConverter::convertFromUTF8(pBytes.get() + (bMark ? 3 : 0), strText);
    const bool bFromText = fromText.parseFromString(strText);
    FUZZ_CHECK(bFromBytes == bFromText);
    FUZZ_CHECK(describeDocument(fromBytes, bFromBytes) == describeDocument(fromText, bFromText));
    if (bFromBytes)
        checkRoundTrip(fromBytes);
    return 0;
}
