// Whole-document loads into a tree: ZkDocument::load from memory against libxml2's
// xmlReadMemory and pugixml's load_buffer on the parser benchmark's documents, each building
// the whole tree and tearing it down. Besides the speed, each reports the heap it holds per node
// (elements, attributes, texts and instructions) once the tree stands.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/namednodemap.h>
#ifdef ZK_HAVE_PUGIXML
#include <pugixml.hpp>
#endif

using namespace ZkCommonNS;

namespace {

const std::string kDocs = ZK_BENCH_DOCS_DIR;

// The parser benchmark's documents, written into the build tree on first use.
const std::string& document(const char* name) {
    static std::map<std::string, std::string> loaded;
    auto found = loaded.find(name);
    if (found != loaded.end())
        return found->second;
    std::string path = kDocs + "/" + name;
    if (!std::ifstream(path)) {
        std::string command =
            "python3 '" ZK_SOURCE_DIR "/scripts/gen_bench_docs.py' '" + kDocs + "'";
        if (std::system(command.c_str()) != 0)
            std::fprintf(stderr, "cannot generate the documents in %s\n", kDocs.c_str());
    }
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return loaded[name] = content.str();
}

/// An istream over bytes in memory, without a copy.
struct MemoryBuf : std::streambuf {
    explicit MemoryBuf(const std::string& bytes) {
        char* start = const_cast<char*>(bytes.data());
        setg(start, start, start + bytes.size());
    }
};

size_t heapInUse() {
    struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

ZkPtr<ZkDocument> loadOurs(const std::string& bytes) {
    MemoryBuf buffer(bytes);
    std::istream in(&buffer);
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->load(in, nullptr, UnicodeString(u"file:///bench/doc.xml"));
    return doc;
}

int64_t countOurs(ZkDocument* doc) {
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

xmlDocPtr loadLibxml2(const std::string& bytes) {
    return xmlReadMemory(bytes.data(), int(bytes.size()), "doc.xml", nullptr, 0);
}

int64_t countLibxml2(xmlNodePtr node) {
    int64_t count = 0;
    // A loop over the tree: the documents are shallow, but the walk needn't trust that.
    while (node) {
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

void ours(benchmark::State& state, const char* name) {
    const std::string& bytes = document(name);
    {
        const size_t before = heapInUse();
        ZkPtr<ZkDocument> doc = loadOurs(bytes);
        const size_t held = heapInUse() - before;
        const int64_t nodes = countOurs(doc);
        state.counters["nodes"] = double(nodes);
        state.counters["bytes_per_node"] = double(held) / double(nodes);
    }
    for (auto _ : state) {
        ZkPtr<ZkDocument> doc = loadOurs(bytes);
        benchmark::DoNotOptimize(doc.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void libxml2(benchmark::State& state, const char* name) {
    const std::string& bytes = document(name);
    {
        const size_t before = heapInUse();
        xmlDocPtr doc = loadLibxml2(bytes);
        const size_t held = heapInUse() - before;
        // The document node itself isn't counted, as ours isn't.
        const int64_t nodes = countLibxml2(doc ? doc->children : nullptr);
        state.counters["nodes"] = double(nodes);
        state.counters["bytes_per_node"] = double(held) / double(nodes);
        xmlFreeDoc(doc);
    }
    for (auto _ : state) {
        xmlDocPtr doc = loadLibxml2(bytes);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

#ifdef ZK_HAVE_PUGIXML
// White space between elements and instructions are kept, as the other two keep them.
constexpr unsigned kPugiOptions = pugi::parse_default | pugi::parse_ws_pcdata | pugi::parse_pi;

int64_t countPugixml(const pugi::xml_node& root) {
    struct Counter : pugi::xml_tree_walker {
        int64_t count = 0;
        bool for_each(pugi::xml_node& node) override {
            ++count;
            for (pugi::xml_attribute attr = node.first_attribute(); attr;
                 attr = attr.next_attribute())
                ++count;
            return true;
        }
    } counter;
    const_cast<pugi::xml_node&>(root).traverse(counter);
    return counter.count;
}

void pugixml(benchmark::State& state, const char* name) {
    const std::string& bytes = document(name);
    {
        const size_t before = heapInUse();
        pugi::xml_document doc;
        doc.load_buffer(bytes.data(), bytes.size(), kPugiOptions, pugi::encoding_utf8);
        const size_t held = heapInUse() - before;
        const int64_t nodes = countPugixml(doc);
        state.counters["nodes"] = double(nodes);
        state.counters["bytes_per_node"] = double(held) / double(nodes);
    }
    for (auto _ : state) {
        pugi::xml_document doc;
        pugi::xml_parse_result result =
            doc.load_buffer(bytes.data(), bytes.size(), kPugiOptions, pugi::encoding_utf8);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
#endif

#define ZK_LOAD_BENCH(doc)                                                                         \
    BENCHMARK_CAPTURE(ours, doc, #doc ".xml")->Unit(benchmark::kMillisecond);                      \
    BENCHMARK_CAPTURE(libxml2, doc, #doc ".xml")->Unit(benchmark::kMillisecond);

ZK_LOAD_BENCH(fo)
ZK_LOAD_BENCH(xhtml)
#ifdef ZK_HAVE_PUGIXML
BENCHMARK_CAPTURE(pugixml, fo, "fo.xml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pugixml, xhtml, "xhtml.xml")->Unit(benchmark::kMillisecond);
#endif

} // namespace

int main(int argc, char** argv) {
    // ns per item is ns per input byte; a ratio below 1 means ours is faster.
    return zkbench::runWithRatios(argc, argv,
                                  {{"ours/fo", "libxml2/fo"},
                                   {"ours/fo", "pugixml/fo"},
                                   {"ours/xhtml", "libxml2/xhtml"},
                                   {"ours/xhtml", "pugixml/xhtml"}});
}
