// Node counts of the trees the load benchmarks build, ours and libxml2's, attributes included.
#ifndef ZKCOMMON_BENCH_TREECOUNT_H
#define ZKCOMMON_BENCH_TREECOUNT_H

#include <cstdint>
#include <libxml/tree.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/namednodemap.h>

/// The nodes below `doc`, attributes included.
inline int64_t countOurs(ZkCommonNS::ZkDocument* doc) {
    using namespace ZkCommonNS;
    int64_t count = 0;
    ZkTreeIterator walk(doc, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        if (node == doc)
            continue;
        ++count;
        if (ZkNamedNodeMap* attributes = node->getAttributes())
            count += attributes->getCount();
    }
    return count;
}

/// The nodes of a libxml2 tree from `node` on through its following siblings, attributes
/// included; with `skipDeclarations`, DTD and comment nodes are not counted.
inline int64_t countLibxml2(xmlNodePtr node, bool skipDeclarations = false) {
    int64_t count = 0;
    // A loop over the tree: the documents are shallow, but the walk needn't trust that.
    while (node) {
        if (!skipDeclarations || (node->type != XML_DTD_NODE && node->type != XML_COMMENT_NODE))
            ++count;
        if (node->type == XML_ELEMENT_NODE)
            for (xmlAttrPtr attr = node->properties; attr; attr = attr->next)
                ++count;
        if (node->children) {
            node = node->children;
            continue;
        }
        while (node && !node->next)
            node = node->parent;
        if (node)
            node = node->next;
    }
    return count;
}

#endif
