// ZkProcessingInstruction, with the pseudo-attribute reader of stylesheet instructions.
#ifndef ZKCOMMON_DOM_PROCESSINGINSTRUCTION_H
#define ZKCOMMON_DOM_PROCESSINGINSTRUCTION_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/dom/node.h"

#include <unordered_map>

namespace ZkCommonNS {

/// A processing instruction: its local name is the target, its text the data.
class ZKCOMMON_API ZkProcessingInstruction : public ZkNode {
    ZK_DECLARE_TYPE(ZkProcessingInstruction, ZkNode, ZkTypeID::kProcessingInstruction,
                    "ZkProcessingInstruction")

public:
    using AttributeMap = std::unordered_map<UnicodeString, UnicodeString, ZkString_hash>;

    ZkProcessingInstruction(ZkDocument* ownerDocument, ZkName target, const UnicodeString& data);

    ZkName getLocalName() const override { return m_target; }
    int getNodeType() const override;
    bool isProcessingInstruction() const override;
    UnicodeString getText() const override { return m_data; }
    void setText(const UnicodeString& text) override { m_data = text; }

    ZkName getTarget() const { return m_target; }
    const UnicodeString& getData() const { return m_data; }

    /// Reads pseudo-attributes (name="value" or name='value'). Never throws: a value without
    /// quotes, or with an opening quote and no closing one, enters as the bogus string; a name
    /// without "=" ends the reading. The first value of a repeated name stays.
    static AttributeMap parseAsAttribute(const UnicodeString& data);

protected:
    ~ZkProcessingInstruction() override;

private:
    ZkName m_target;
    UnicodeString m_data;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_PROCESSINGINSTRUCTION_H
