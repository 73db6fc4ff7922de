#pragma once

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLParser.h>

#include "support/FuzzText.h"

#include <memory>
#include <string>

namespace OrlixFuzz {

/** All that a parse leaves in a document: the outcome, the error position, and the tree as it is saved. */
inline std::wstring describeDocument(Orlix::CXMLParser& parser, bool bParsed) {
    unsigned int uiLine = 0, uiColumn = 0;
    Orlix::CString strError, strSaved;
    parser.getErrorPos(uiLine, uiColumn, strError);
    FUZZ_CHECK(parser.hasRootElement() == bParsed);
    FUZZ_CHECK(!bParsed || parser.saveToString(strSaved, true));
    return std::to_wstring(uiLine) + L":" + std::to_wstring(uiColumn) + L":" + std::to_wstring(parser.getEncoding()) +
           L":" + textOf(strError) + L":" + textOf(strSaved);
}

/** What is saved, from the tree or from a copy of it, reads back as what is saved as the same again. */
inline void checkRoundTrip(Orlix::CXMLParser& parser) {
    Orlix::CString strFirst, strSecond, strOriginal, strClone;
    FUZZ_CHECK(parser.getRootElement()->saveTo(strOriginal, false, false));
    const std::unique_ptr<Orlix::CXMLElement> pClone(parser.getRootElement()->clone());
    FUZZ_CHECK(pClone->saveTo(strClone, false, false) && strClone == strOriginal);
    FUZZ_CHECK(parser.saveToString(strFirst, true));
    FUZZ_CHECK(parser.parseFromString(strFirst));
    FUZZ_CHECK(parser.saveToString(strSecond, true));
    FUZZ_CHECK(strFirst == strSecond);
}
} // namespace OrlixFuzz
