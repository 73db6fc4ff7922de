#pragma once

#include <Orlix/formats/CXMLElement.h>

namespace Orlix {

/** Visits a node and all below it in the order of the names. Unlike the map's own walk it needs no memory. */
template <class TVisit> void visitAttributes(const CXMLElement::CAttributeMap::tagNode* pNode, const TVisit& visit) {
    for (; pNode; pNode = pNode->pRight) {
        // What comes behind the left side is on its way meanwhile: a large tree is scattered over memory.
        __builtin_prefetch(pNode->pRight);
        __builtin_prefetch(pNode->pValue);
        __builtin_prefetch(pNode->key.getBuffer());
        visitAttributes(pNode->pLeft, visit);
        visit(*pNode);
    }
}
} // namespace Orlix
