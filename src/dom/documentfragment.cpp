// ZkDocumentFragment.
#include "zkcommon/dom/documentfragment.h"

namespace ZkCommonNS {

ZkDocumentFragment::~ZkDocumentFragment() = default;

ZkName ZkDocumentFragment::getLocalName() const {
    return ZkName(ZKN_H_document_fragment);
}
int ZkDocumentFragment::getNodeType() const {
    return DOCUMENT_FRAGMENT_NODE;
}

} // namespace ZkCommonNS
