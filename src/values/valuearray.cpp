// ZkValueArray: the reference-counted list behind Array values.
#include "zkcommon/values/value.h"

namespace ZkCommonNS {

ZkValueArray::~ZkValueArray() = default;

ZkValue ZkValueArray::item(int index) const {
    return itemRef(index);
}

const ZkValue& ZkValueArray::itemRef(int index) const noexcept {
    if (index < 0 || index >= getCount())
        return ZkValue::NULL_VALUE;
    return m_items[static_cast<size_t>(index)];
}

void ZkValueArray::setItem(int index, const ZkValue& value) {
    if (index < 0 || index >= getCount())
        return;
    m_items[static_cast<size_t>(index)] = value;
}

ZkPtr<ZkValueArray> ZkValueArray::clone() const {
    ZkPtr<ZkValueArray> copy(new ZkValueArray());
    copy->m_items = m_items;
    return copy;
}

} // namespace ZkCommonNS
