// Namespace scopes shared by the parser and the serializer.
#include "zkcommon/dom/namespacemanager.h"

#include <algorithm>

namespace ZkCommonNS {

std::vector<ZkNamespaceMap::Binding>::const_iterator ZkNamespaceMap::find(ZkName prefix) const {
    auto at = std::lower_bound(
        m_bindings.begin(), m_bindings.end(), prefix.getEnum(),
        [](const Binding& binding, ZkNameEnum key) { return binding.first < key; });
    return at != m_bindings.end() && at->first == prefix.getEnum() ? at : m_bindings.end();
}

void ZkNamespaceMap::setNamespace(ZkName prefix, ZkName uri) {
    auto at = std::lower_bound(
        m_bindings.begin(), m_bindings.end(), prefix.getEnum(),
        [](const Binding& binding, ZkNameEnum key) { return binding.first < key; });
    if (at != m_bindings.end() && at->first == prefix.getEnum())
        at->second = uri;
    else
        m_bindings.insert(at, Binding(prefix, uri));
}

ZkName ZkNamespaceMap::getPrefixAt(int i) const {
    return i >= 0 && i < getCount() ? ZkName(m_bindings[size_t(i)].first) : ZkName();
}

ZkName ZkNamespaceMap::getUriAt(int i) const {
    return i >= 0 && i < getCount() ? ZkName(m_bindings[size_t(i)].second) : ZkName();
}

bool ZkNamespaceMap::hasPrefix(ZkName prefix) const {
    return find(prefix) != m_bindings.end();
}

ZkName ZkNamespaceMap::getNamespace(ZkName prefix) const {
    auto at = find(prefix);
    return at == m_bindings.end() ? ZkName() : ZkName(at->second);
}

ZkName ZkNamespaceMap::getPrefix(ZkName uri) const {
    for (const Binding& binding : m_bindings)
        if (binding.second == uri.getEnum())
            return binding.first;
    return ZkName();
}

ZkNamespaceManager::ZkNamespaceManager() : m_nameTable(ZkNameTable::addRefSharedNameTable()) {
    Scope bottom;
    bottom.map = new ZkNamespaceMap;
    bottom.map->setNamespace(ZKN_xml, ZKN_NS_XML);
    bottom.map->setNamespace(ZKN_xmlns, ZKN_NS_XMLNS);
    m_scopes.push_back(bottom);
}

ZkNamespaceManager::~ZkNamespaceManager() {
    m_scopes.clear();
    ZkNameTable::releaseSharedNameTable();
}

void ZkNamespaceManager::push() {
    m_scopes.push_back(Scope());
}

void ZkNamespaceManager::push(ZkName prefix, ZkName name, ZkName uri) {
    push();
    setElement(prefix, name, uri);
}

void ZkNamespaceManager::setElement(ZkName prefix, ZkName name, ZkName uri) {
    Scope& top = m_scopes.back();
    top.prefix = prefix;
    top.name = name;
    top.uri = uri;
}

bool ZkNamespaceManager::pop() {
    if (m_scopes.size() < 2)
        return false;
    m_scopes.pop_back();
    return true;
}

ZkNamespaceMap* ZkNamespaceManager::getMap(int i) const {
    return i >= 0 && i < int(m_scopes.size()) ? m_scopes[size_t(i)].map.get() : nullptr;
}

ZkName ZkNamespaceManager::getPrefixAt(int i) const {
    ZkNamespaceMap* map = getCurrentMap();
    return map ? map->getPrefixAt(i) : ZkName();
}

ZkName ZkNamespaceManager::getUriAt(int i) const {
    ZkNamespaceMap* map = getCurrentMap();
    return map ? map->getUriAt(i) : ZkName();
}

void ZkNamespaceManager::declare(ZkName prefix, ZkName uri) {
    if (getNamespace(prefix) == uri)
        return; // redundant: an outer scope binds it already
    Scope& top = m_scopes.back();
    if (!top.map)
        top.map = new ZkNamespaceMap;
    top.map->setNamespace(prefix, uri);
}

ZkName ZkNamespaceManager::getNamespace(ZkName prefix) const {
    for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope) {
        if (scope->prefix == prefix && !scope->uri.isEmpty())
            return scope->uri;
        if (!scope->map)
            continue;
        ZkName uri = scope->map->getNamespace(prefix);
        if (!uri.isEmpty())
            return uri;
        if (prefix.isEmpty() && scope->map->hasPrefix(prefix))
            return ZkName(); // xmlns="" undeclares the default namespace
    }
    return ZkName();
}

ZkName ZkNamespaceManager::getPrefix(ZkName uri) const {
    for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope) {
        if (scope->uri == uri && !scope->prefix.isEmpty())
            return scope->prefix;
        if (!scope->map)
            continue;
        ZkName prefix = scope->map->getPrefix(uri);
        if (!prefix.isEmpty())
            return prefix;
    }
    return ZkName();
}

ZkName ZkNamespaceManager::getDefaultNamespace() const {
    for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope)
        if (scope->map && scope->map->hasPrefix(ZkName()))
            return scope->map->getDefaultNamespace();
    return ZkName();
}

bool ZkNamespaceManager::isOpen(ZkName prefix, ZkName name) const {
    for (const Scope& scope : m_scopes)
        if (scope.prefix == prefix && scope.name == name)
            return true;
    return false;
}

} // namespace ZkCommonNS
