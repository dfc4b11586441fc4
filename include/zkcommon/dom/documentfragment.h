// ZkDocumentFragment, a parentless holder of nodes.
#ifndef ZKCOMMON_DOM_DOCUMENTFRAGMENT_H
#define ZKCOMMON_DOM_DOCUMENTFRAGMENT_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/dom/node.h"

namespace ZkCommonNS {

/// A fragment: a node with children and nothing else. It cannot be cloned (cloneNode is null).
class ZKCOMMON_API ZkDocumentFragment : public ZkNode {
    ZK_DECLARE_TYPE(ZkDocumentFragment, ZkNode, ZkTypeID::kDocumentFragment, "ZkDocumentFragment")

public:
    explicit ZkDocumentFragment(ZkDocument* ownerDocument) : ZkNode(ownerDocument) {}

    /// "#document-fragment".
    ZkName getLocalName() const override;
    int getNodeType() const override;

protected:
    ~ZkDocumentFragment() override;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_DOCUMENTFRAGMENT_H
