// Namespace scopes: ZkNamespaceMap holds one element's prefix bindings, ZkNamespaceManager the
// stack of open-element scopes that the parser and the serializer share.
#ifndef ZKCOMMON_DOM_NAMESPACEMANAGER_H
#define ZKCOMMON_DOM_NAMESPACEMANAGER_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"

#include <utility>
#include <vector>

namespace ZkCommonNS {

/// Prefix bindings ordered by prefix number (not by declaration), so index order puts built-in
/// prefixes before dynamic ones.
class ZKCOMMON_API ZkNamespaceMap : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNamespaceMap, ZkRCObject, ZkTypeID::kNamespaceMap, "ZkNamespaceMap")

public:
    /// Inserts, or replaces the URI of a bound prefix.
    void setNamespace(ZkName prefix, ZkName uri);
    int getCount() const { return int(m_bindings.size()); }
    /// The URI bound to the empty prefix, or empty.
    ZkName getDefaultNamespace() const { return getNamespace(ZkName()); }
    /// Empty when `i` is out of range.
    ZkName getPrefixAt(int i) const;
    /// Empty when `i` is out of range.
    ZkName getUriAt(int i) const;
    /// Whether the prefix is bound, also to an empty URI.
    bool hasPrefix(ZkName prefix) const;
    /// The URI, or empty.
    ZkName getNamespace(ZkName prefix) const;
    /// The first prefix in map order bound to `uri`, or empty.
    ZkName getPrefix(ZkName uri) const;

private:
    using Binding = std::pair<ZkNameEnum, ZkNameEnum>;
    std::vector<Binding>::const_iterator find(ZkName prefix) const;
    std::vector<Binding> m_bindings; // sorted by prefix number; scopes hold few bindings
};

/// The stack of open-element scopes. A new manager has one bottom scope binding "xml" and "xmlns",
/// which can't be popped.
class ZKCOMMON_API ZkNamespaceManager : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNamespaceManager, ZkRCObject, ZkTypeID::kNamespaceManager,
                    "ZkNamespaceManager")

public:
    ZkNamespaceManager();
    ~ZkNamespaceManager() override;
    ZkNamespaceManager(const ZkNamespaceManager&) = delete;
    ZkNamespaceManager& operator=(const ZkNamespaceManager&) = delete;

    /// Opens an empty scope.
    void push();
    /// Opens a scope for the element with this prefix, local name and namespace URI.
    void push(ZkName prefix, ZkName name, ZkName uri);
    /// Names the element of the top scope, once its qualified name is resolved.
    void setElement(ZkName prefix, ZkName name, ZkName uri);
    /// False, changing nothing, when only the bottom scope is left.
    bool pop();
    /// The number of scopes less one.
    int getDepth() const { return int(m_scopes.size()) - 1; }
    /// Null when `i` is out of range or the scope declares nothing.
    ZkNamespaceMap* getMap(int i) const;
    ZkNamespaceMap* getCurrentMap() const { return m_scopes.back().map.get(); }
    /// The binding at `i` of the top scope's map; empty without a map.
    ZkName getPrefixAt(int i) const;
    ZkName getUriAt(int i) const;
    /// The top scope's element.
    ZkName getCurrentPrefix() const { return m_scopes.back().prefix; }
    ZkName getCurrentName() const { return m_scopes.back().name; }
    ZkName getCurrentNamespace() const { return m_scopes.back().uri; }

    /// Binds `prefix` in the top scope, unless it already resolves to `uri`.
    void declare(ZkName prefix, ZkName uri);
    /// Innermost first; an element's own qualified name counts as a binding, and xmlns=""
    /// undeclares the default namespace.
    ZkName getNamespace(ZkName prefix) const;
    /// Innermost first; not checked for being hidden by an inner declaration.
    ZkName getPrefix(ZkName uri) const;
    ZkName getDefaultNamespace() const;
    /// Whether any scope, the bottom one included, has this element prefix and name.
    bool isOpen(ZkName prefix, ZkName name) const;

private:
    struct Scope {
        ZkPtr<ZkNamespaceMap> map;
        ZkName prefix;
        ZkName name;
        ZkName uri;
    };
    std::vector<Scope> m_scopes;
    ZkNameTable* m_nameTable;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_NAMESPACEMANAGER_H
