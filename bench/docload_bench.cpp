// Whole-document loads into a tree: ZkDocument::load from memory against libxml2's
// xmlReadMemory and pugixml's load_buffer on the parser benchmark's documents, each building
// the whole tree and tearing it down. Each side loads once untimed first, so that none is timed
// on the first touch of memory its allocator has just taken from the system. Besides the speed,
// each reports the heap it holds per node (elements, attributes, texts and instructions) once
// the tree stands, and the time of its first load and teardown, both measured once per program
// in a fresh process.
#include "benchdocs.h"
#include "ratio.h"
#include "treecount.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <map>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <zkcommon/dom/document.h>
#ifdef ZK_HAVE_PUGIXML
#include <pugixml.hpp>
#endif

using namespace ZkCommonNS;

namespace {

size_t heapInUse() {
    struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Heap held per node, measured in a child process forked before any benchmark ran: there the
// allocators hold no blocks freed by earlier loads, which a second load would reuse and so seem
// to need no memory at all. The same first load, teardown included, is timed there: what a
// program that loads one document pays, its allocator's first touch of memory included. The
// child reports through a pipe; -1 bytes when it could not.
struct Measured {
    double bytesPerNode = -1;
    int64_t nodes = 0;
    double firstLoadMs = -1;
};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

template <class Measure> Measured measureInFreshProcess(Measure measure) {
    int channel[2];
    if (pipe(channel) != 0)
        return {-1, 0};
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        const Measured value = measure();
        const ssize_t written = write(channel[1], &value, sizeof value);
        _exit(written == ssize_t(sizeof value) ? 0 : 1);
    }
    close(channel[1]);
    Measured value;
    if (child < 0 || read(channel[0], &value, sizeof value) != ssize_t(sizeof value))
        value = Measured();
    close(channel[0]);
    if (child > 0)
        waitpid(child, nullptr, 0);
    return value;
}

// name of the benchmark ("ours/fo") -> bytes per node, and the node count
std::map<std::string, Measured> s_perNode;

void reportMemory(benchmark::State& state, const std::string& key) {
    const auto& measured = s_perNode[key];
    state.counters["nodes"] = double(measured.nodes);
    state.counters["bytes_per_node"] = measured.bytesPerNode;
    state.counters["first_load_ms"] = measured.firstLoadMs;
}

ZkPtr<ZkDocument> loadOurs(const std::string& bytes) {
    MemoryBuf buffer(bytes);
    std::istream in(&buffer);
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->load(in, nullptr, UnicodeString(u"file:///bench/doc.xml"));
    return doc;
}

xmlDocPtr loadLibxml2(const std::string& bytes) {
    return xmlReadMemory(bytes.data(), int(bytes.size()), "doc.xml", nullptr, 0);
}

Measured measureOurs(const std::string& bytes) {
    const size_t before = heapInUse();
    auto start = std::chrono::steady_clock::now();
    ZkPtr<ZkDocument> doc = loadOurs(bytes);
    double loadMs = millisecondsSince(start);
    const size_t held = heapInUse() - before;
    const int64_t nodes = countOurs(doc);
    start = std::chrono::steady_clock::now();
    doc = nullptr;
    return {double(held) / double(nodes), nodes, loadMs + millisecondsSince(start)};
}

void ours(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    reportMemory(state, std::string("ours/") + name);
    loadOurs(bytes); // warm-up, as for every side
    for (auto _ : state) {
        ZkPtr<ZkDocument> doc = loadOurs(bytes);
        benchmark::DoNotOptimize(doc.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

Measured measureLibxml2(const std::string& bytes) {
    const size_t before = heapInUse();
    auto start = std::chrono::steady_clock::now();
    xmlDocPtr doc = loadLibxml2(bytes);
    double loadMs = millisecondsSince(start);
    const size_t held = heapInUse() - before;
    // The document node itself isn't counted, as ours isn't.
    const int64_t nodes = countLibxml2(doc ? doc->children : nullptr);
    start = std::chrono::steady_clock::now();
    xmlFreeDoc(doc);
    return {double(held) / double(nodes), nodes, loadMs + millisecondsSince(start)};
}

void libxml2(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    reportMemory(state, std::string("libxml2/") + name);
    xmlFreeDoc(loadLibxml2(bytes)); // warm-up
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

Measured measurePugixml(const std::string& bytes) {
    const size_t before = heapInUse();
    auto start = std::chrono::steady_clock::now();
    auto doc = std::make_unique<pugi::xml_document>();
    doc->load_buffer(bytes.data(), bytes.size(), kPugiOptions, pugi::encoding_utf8);
    double loadMs = millisecondsSince(start);
    const size_t held = heapInUse() - before;
    const int64_t nodes = countPugixml(*doc);
    start = std::chrono::steady_clock::now();
    doc.reset();
    return {double(held) / double(nodes), nodes, loadMs + millisecondsSince(start)};
}

void pugixml(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    reportMemory(state, std::string("pugixml/") + name);
    {
        pugi::xml_document warmUp;
        warmUp.load_buffer(bytes.data(), bytes.size(), kPugiOptions, pugi::encoding_utf8);
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

// Fills s_perNode, each measure in a process of its own.
void measureMemory() {
    for (const char* name : {"fo", "xhtml"}) {
        const std::string& bytes = benchDocument((std::string(name) + ".xml").c_str());
        std::vector<std::pair<std::string, Measured (*)(const std::string&)>> measures = {
            {"ours/", &measureOurs}, {"libxml2/", &measureLibxml2}};
#ifdef ZK_HAVE_PUGIXML
        measures.emplace_back("pugixml/", &measurePugixml);
#endif
        for (const auto& measure : measures)
            s_perNode[measure.first + name + ".xml"] =
                measureInFreshProcess([&] { return measure.second(bytes); });
    }
}

} // namespace

int main(int argc, char** argv) {
    measureMemory();
    // ns per item is ns per input byte; a ratio below 1 means ours is faster.
    return zkbench::runWithRatios(argc, argv,
                                  {{"ours/fo", "libxml2/fo"},
                                   {"ours/fo", "pugixml/fo"},
                                   {"ours/xhtml", "libxml2/xhtml"},
                                   {"ours/xhtml", "pugixml/xhtml"}});
}
