// The node tree: building and walking a large tree, and adding and finding attributes, against
// libxml2's DOM (xmlNewNode, xmlAddChild, xmlSetProp, xmlGetProp) on the same shapes.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <libxml/tree.h>
#include <string>
#include <vector>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;

namespace {

// The shape: every element has kFanOut element children down to kDepth levels, and each element
// one text child before them. 10 and 4 give 11,111 elements and as many text nodes.
constexpr int kFanOut = 10;
constexpr int kDepth = 4;

int64_t nodeCount() {
    int64_t elements = 0, level = 1;
    for (int d = 0; d <= kDepth; ++d, level *= kFanOut)
        elements += level;
    return elements * 2;
}

void growOurs(ZkDocument* doc, ZkNode* parent, const ZkName* names, int depth) {
    ZkPtr<ZkTextNode> text = doc->createTextNode(UnicodeString(u"some text"));
    parent->appendChild(text);
    if (depth == kDepth)
        return;
    for (int i = 0; i < kFanOut; ++i) {
        ZkPtr<ZkElement> child =
            doc->createElementNS(ZkName(ZKN_NS_XSL_FO), ZkName(), names[depth + 1]);
        parent->appendChild(child);
        growOurs(doc, child, names, depth + 1);
    }
}

ZkPtr<ZkDocument> buildOurs() {
    static const ZkName names[] = {ZkName(u"root"), ZkName(u"page-sequence"), ZkName(u"flow"),
                                   ZkName(u"block"), ZkName(u"inline")};
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkElement> root = doc->createElementNS(ZkName(ZKN_NS_XSL_FO), ZkName(), names[0]);
    doc->appendChild(root);
    growOurs(doc, root, names, 0);
    return doc;
}

const xmlChar* x(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

void growTheirs(xmlNodePtr parent, const char* const* names, int depth) {
    xmlAddChild(parent, xmlNewText(x("some text")));
    if (depth == kDepth)
        return;
    for (int i = 0; i < kFanOut; ++i) {
        xmlNodePtr child = xmlNewNode(nullptr, x(names[depth + 1]));
        xmlAddChild(parent, child);
        growTheirs(child, names, depth + 1);
    }
}

xmlDocPtr buildTheirs() {
    static const char* const names[] = {"root", "page-sequence", "flow", "block", "inline"};
    xmlDocPtr doc = xmlNewDoc(x("1.0"));
    xmlNodePtr root = xmlNewNode(nullptr, x(names[0]));
    xmlDocSetRootElement(doc, root);
    growTheirs(root, names, 0);
    return doc;
}

void BM_BuildTree(benchmark::State& state) {
    for (auto _ : state) {
        ZkPtr<ZkDocument> doc = buildOurs();
        benchmark::DoNotOptimize(doc.get());
    }
    state.SetItemsProcessed(state.iterations() * nodeCount());
}

void BM_Libxml2BuildTree(benchmark::State& state) {
    for (auto _ : state) {
        xmlDocPtr doc = buildTheirs();
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetItemsProcessed(state.iterations() * nodeCount());
}

// Walks with the tree iterator, which reads through the loading getters.
void BM_WalkTreeIterator(benchmark::State& state) {
    ZkPtr<ZkDocument> doc = buildOurs();
    for (auto _ : state) {
        int64_t count = 0;
        ZkTreeIterator walk(doc->getDocumentElement(), nullptr, false, ZkTreeIterator::PRE_ORDER);
        while (walk.nextNode())
            ++count;
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * nodeCount());
}

// Walks a finished tree with the Fast getters, as a consumer that knows the load is done.
void BM_WalkFast(benchmark::State& state) {
    ZkPtr<ZkDocument> doc = buildOurs();
    ZkNode* root = doc->getDocumentElement();
    for (auto _ : state) {
        int64_t count = 0;
        ZkNode* node = root;
        while (node) {
            ++count;
            if (ZkNode* child = node->getFirstChildFast()) {
                node = child;
                continue;
            }
            while (node && node != root && !node->getNextSiblingFast())
                node = node->getParentNodeFast();
            node = node == root || !node ? nullptr : node->getNextSiblingFast();
        }
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * nodeCount());
}

void BM_Libxml2Walk(benchmark::State& state) {
    xmlDocPtr doc = buildTheirs();
    xmlNodePtr root = xmlDocGetRootElement(doc);
    for (auto _ : state) {
        int64_t count = 0;
        xmlNodePtr node = root;
        while (node) {
            ++count;
            if (node->children) {
                node = node->children;
                continue;
            }
            while (node && node != root && !node->next)
                node = node->parent;
            node = node == root || !node ? nullptr : node->next;
        }
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(state.iterations() * nodeCount());
    xmlFreeDoc(doc);
}

std::vector<std::string> attributeNames(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("attribute-" + std::to_string(i));
    return names;
}

// Adds `count` attributes to a fresh element and finds each of them again.
void BM_AttrAddFind(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    std::vector<ZkName> names;
    for (const std::string& name : attributeNames(count))
        names.emplace_back(UnicodeString::fromUTF8(name));
    ZkPtr<ZkDocument> doc(new ZkDocument());
    const ZkValue value(UnicodeString(u"value"));
    for (auto _ : state) {
        ZkPtr<ZkElement> element = doc->createElement(ZkName(u"block"));
        for (const ZkName& name : names)
            element->setAttribute(name, value);
        for (const ZkName& name : names)
            benchmark::DoNotOptimize(element->getAttribute(name));
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_Libxml2AttrAddFind(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    std::vector<std::string> names = attributeNames(count);
    for (auto _ : state) {
        xmlNodePtr element = xmlNewNode(nullptr, x("block"));
        for (const std::string& name : names)
            xmlSetProp(element, x(name.c_str()), x("value"));
        for (const std::string& name : names) {
            xmlChar* found = xmlGetProp(element, x(name.c_str()));
            benchmark::DoNotOptimize(found);
            xmlFree(found);
        }
        xmlFreeNode(element);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

BENCHMARK(BM_BuildTree);
BENCHMARK(BM_Libxml2BuildTree);
BENCHMARK(BM_WalkTreeIterator);
BENCHMARK(BM_WalkFast);
BENCHMARK(BM_Libxml2Walk);
BENCHMARK(BM_AttrAddFind)->Arg(8)->Arg(1000)->Arg(10000);
BENCHMARK(BM_Libxml2AttrAddFind)->Arg(8)->Arg(1000)->Arg(10000);

} // namespace

int main(int argc, char** argv) {
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_BuildTree", "BM_Libxml2BuildTree"},
                                   {"BM_WalkTreeIterator", "BM_Libxml2Walk"},
                                   {"BM_WalkFast", "BM_Libxml2Walk"},
                                   {"BM_AttrAddFind/8", "BM_Libxml2AttrAddFind/8"},
                                   {"BM_AttrAddFind/1000", "BM_Libxml2AttrAddFind/1000"}});
}
