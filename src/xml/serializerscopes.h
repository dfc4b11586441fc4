// The serializer's namespace scopes: the stack of open elements with an index from each prefix
// to its bindings and from each URI to the prefixes bound to it, so that every look-up costs
// the same at any depth (a scan down the scopes would make a deep document quadratic).
#ifndef ZKCOMMON_SRC_XML_SERIALIZERSCOPES_H
#define ZKCOMMON_SRC_XML_SERIALIZERSCOPES_H

#include "zkcommon/core/name.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ZkCommonNS {
namespace detail {

class SerializerScopes {
public:
    SerializerScopes() {
        m_stack.push_back(Scope());
        declare(ZkName(ZKN_xml), ZkName(ZKN_NS_XML));
        declare(ZkName(ZKN_xmlns), ZkName(ZKN_NS_XMLNS));
    }

    /// Opens an empty scope.
    void push() {
        Scope scope;
        scope.firstDeclaration = m_declarations.size();
        scope.firstUriPush = m_uriPushes.size();
        m_stack.push_back(scope);
    }
    /// False, changing nothing, when only the bottom scope is left.
    bool pop() {
        if (m_stack.size() == 1)
            return false;
        const Scope& top = m_stack.back();
        for (size_t i = m_declarations.size(); i > top.firstDeclaration; --i)
            m_byPrefix[m_declarations[i - 1].first.getEnum()].pop_back();
        for (size_t i = m_uriPushes.size(); i > top.firstUriPush; --i)
            m_byUri[m_uriPushes[i - 1]].pop_back();
        m_declarations.resize(top.firstDeclaration);
        m_uriPushes.resize(top.firstUriPush);
        m_stack.pop_back();
        return true;
    }
    /// The number of open scopes.
    int getDepth() const { return int(m_stack.size()) - 1; }

    void setElement(ZkName prefix, ZkName name, ZkName uri) {
        Scope& top = m_stack.back();
        top.prefix = prefix;
        top.name = name;
        top.uri = uri;
    }
    ZkName getCurrentPrefix() const { return m_stack.back().prefix; }
    ZkName getCurrentName() const { return m_stack.back().name; }
    ZkName getCurrentNamespace() const { return m_stack.back().uri; }

    /// Binds `prefix` in the top scope unless it resolves to `uri` already; a second binding
    /// of one prefix in one scope replaces the first.
    void declare(ZkName prefix, ZkName uri) {
        if (getNamespace(prefix) == uri)
            return;
        std::vector<Binding>& bindings = m_byPrefix[prefix.getEnum()];
        const int depth = getDepth();
        if (!bindings.empty() && bindings.back().depth == depth) {
            bindings.back().uri = uri.getEnum();
            m_declarations[bindings.back().index].second = uri;
        } else {
            bindings.push_back(Binding{depth, uint32_t(m_declarations.size()), uri.getEnum()});
            m_declarations.emplace_back(prefix, uri);
        }
        // A replaced binding leaves its old entry here; getPrefix checks every candidate.
        m_byUri[uri.getEnum()].push_back(prefix.getEnum());
        m_uriPushes.push_back(uri.getEnum());
    }
    /// Whether `prefix` is bound in the top scope itself.
    bool isDeclaredHere(ZkName prefix) const {
        auto found = m_byPrefix.find(prefix.getEnum());
        return found != m_byPrefix.end() && !found->second.empty() &&
               found->second.back().depth == getDepth();
    }
    /// The URI bound to `prefix`, empty when none (or when xmlns="" undeclared the default).
    ZkName getNamespace(ZkName prefix) const {
        auto found = m_byPrefix.find(prefix.getEnum());
        if (found == m_byPrefix.end() || found->second.empty())
            return ZkName();
        return ZkName(found->second.back().uri);
    }
    ZkName getDefaultNamespace() const { return getNamespace(ZkName()); }
    /// The innermost non-empty prefix bound to `uri` and not rebound since; empty when none.
    ZkName getPrefix(ZkName uri) const {
        auto found = m_byUri.find(uri.getEnum());
        if (found == m_byUri.end())
            return ZkName();
        for (auto prefix = found->second.rbegin(); prefix != found->second.rend(); ++prefix) {
            if (*prefix != ZKN_EMPTY && getNamespace(ZkName(*prefix)) == uri)
                return ZkName(*prefix);
        }
        return ZkName();
    }
    /// The declarations of the top scope, ordered by prefix number.
    std::vector<std::pair<ZkName, ZkName>> currentDeclarations() const {
        std::vector<std::pair<ZkName, ZkName>> list(
            m_declarations.begin() + long(m_stack.back().firstDeclaration), m_declarations.end());
        std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
            return a.first.getEnum() < b.first.getEnum();
        });
        return list;
    }
    bool hasCurrentDeclarations() const {
        return m_declarations.size() > m_stack.back().firstDeclaration;
    }

private:
    struct Scope {
        ZkName prefix;
        ZkName name;
        ZkName uri;
        size_t firstDeclaration = 0;
        size_t firstUriPush = 0;
    };
    struct Binding {
        int depth;
        uint32_t index; ///< of the declaration in m_declarations
        ZkNameEnum uri;
    };

    std::vector<Scope> m_stack;
    std::vector<std::pair<ZkName, ZkName>> m_declarations; // (prefix, uri), scope by scope
    std::vector<ZkNameEnum> m_uriPushes;                   // the URI of each m_byUri entry
    std::unordered_map<ZkNameEnum, std::vector<Binding>> m_byPrefix;
    std::unordered_map<ZkNameEnum, std::vector<ZkNameEnum>> m_byUri;
};

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_XML_SERIALIZERSCOPES_H
