#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** Told of changes of a document of the XML dialect, on the thread that makes them. */
class ORLIX_API IXMLParserListener {
public:
    virtual ~IXMLParserListener() = default;

    /** Something was changed by an operation of the document or of an element; a parse changes in silence. */
    virtual void onXMLDataChange() = 0;
};
} // namespace Orlix
