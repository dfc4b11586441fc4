// Reading tag-soup HTML into a tree: ZkDocument::load of the generated 25 MB page (nested tables
// and lists, unclosed p, li and td, entities, scripts, styles, a meta charset) as HTML, against
// libxml2's htmlReadMemory on the same bytes, each building the whole tree and tearing it down.
// Items are input bytes; both report the nodes they built (elements, attributes and texts).
#include "benchdocs.h"
#include "ratio.h"
#include "treecount.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <libxml/HTMLparser.h>
#include <libxml/tree.h>
#include <sstream>
#include <streambuf>
#include <string>
#include <zkcommon/dom/document.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

void noteFatal(const ZkError& error, void* fatal) {
    if (getErrorLevel(error.getErrorCode()) == ZK_ERROR_LEVEL_FATAL)
        *static_cast<bool*>(fatal) = true;
}

// Loads as a user reading a web page would: HTML syntax, no external subset; survivable errors
// go to the callback and are dropped. A fatal error leaves the tree short, so it is returned.
ZkPtr<ZkDocument> loadOurs(const std::string& bytes, bool* fatal) {
    MemoryBuf buffer(bytes);
    std::istream in(&buffer);
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkXmlParser* parser = doc->getParser();
    parser->setParserType(ZKN_html, ZKN_html);
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
    parser->setCallbackError(noteFatal, fatal);
    try {
        doc->load(in, nullptr, UnicodeString(u"file:///bench/page.html"));
    } catch (const ZkError&) {
        *fatal = true;
    }
    return doc;
}

constexpr int kLibxml2Options = HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET;

htmlDocPtr loadLibxml2(const std::string& bytes) {
    return htmlReadMemory(bytes.data(), int(bytes.size()), "page.html", nullptr, kLibxml2Options);
}

void ours(benchmark::State& state) {
    const std::string& bytes = benchDocument("html.html");
    {
        bool fatal = false;
        ZkPtr<ZkDocument> doc = loadOurs(bytes, &fatal);
        if (fatal) {
            state.SkipWithError("the page does not load as HTML");
            return;
        }
        state.counters["nodes"] = double(countOurs(doc));
    }
    for (auto _ : state) {
        bool fatal = false;
        ZkPtr<ZkDocument> doc = loadOurs(bytes, &fatal);
        benchmark::DoNotOptimize(doc.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void libxml2(benchmark::State& state) {
    const std::string& bytes = benchDocument("html.html");
    {
        htmlDocPtr doc = loadLibxml2(bytes);
        state.counters["nodes"] =
            double(countLibxml2(doc ? doc->children : nullptr, /*skipDeclarations=*/true));
        xmlFreeDoc(doc);
    }
    for (auto _ : state) {
        htmlDocPtr doc = loadLibxml2(bytes);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

BENCHMARK(ours)->Name("ours/html")->Unit(benchmark::kMillisecond);
BENCHMARK(libxml2)->Name("libxml2/html")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    // ns per item is ns per input byte; a ratio below 1 means ours is faster, and the goal is
    // at most 0.5.
    return zkbench::runWithRatios(argc, argv, {{"ours/html", "libxml2/html"}});
}
