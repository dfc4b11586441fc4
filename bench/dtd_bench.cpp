// A small document over a large external DTD, read again and again: ours keeps the entities of
// a subset for the process after the first reading; libxml2 (xmlReadFile loading the DTD and
// substituting entities) reads the subset each time. Items are documents; the first reading of
// the process, which fills the cache, is reported apart as first_read_us.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <libxml/parser.h>
#include <string>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

/// Writes the DTD (about 1.5 MB: entities, elements, attribute lists) and the document once.
const std::string& documentPath() {
    static std::string path;
    if (!path.empty())
        return path;
    std::string dir = ZK_BENCH_DOCS_DIR;
    std::system(("mkdir -p '" + dir + "'").c_str());
    std::ofstream dtd(dir + "/large.dtd", std::ios::binary);
    for (int i = 0; i < 20000; ++i) {
        dtd << "<!ENTITY ent" << i << " \"replacement text number " << i << "\">\n";
        dtd << "<!ELEMENT el" << i << " (#PCDATA)>\n";
        dtd << "<!ATTLIST el" << i << " id ID #IMPLIED role CDATA \"r" << i << "\">\n";
    }
    dtd << "<!ELEMENT doc ANY>\n";
    std::ofstream doc(dir + "/uses-large-dtd.xml", std::ios::binary);
    doc << "<?xml version='1.0'?>\n<!DOCTYPE doc SYSTEM 'large.dtd'>\n<doc>";
    for (int i = 0; i < 100; ++i)
        doc << "<p>&ent" << i * 37 << "; and &ent" << i * 91 << ";</p>";
    doc << "</doc>\n";
    path = dir + "/uses-large-dtd.xml";
    return path;
}

int64_t readOurs(ZkXmlParserImpl& parser, const std::string& path) {
    int64_t touched = 0;
    ZkUri uri(UnicodeString::fromUTF8(path), ZkUri::URISTR_FILEPATH);
    parser.setInput(uri, UnicodeString(), UnicodeString());
    for (int event; (event = parser.next()) != ZkXmlParser::END_DOCUMENT;) {
        if (event == ZkXmlParser::TEXT)
            touched += parser.getText().length();
    }
    return touched;
}

void ours(benchmark::State& state) {
    const std::string& path = documentPath();
    ZkXmlParserImpl parser;
    // The first reading of the process fills the subset cache; it is timed on its own, so that
    // the report shows what the cache saves every later reading.
    static double firstMicroseconds = -1;
    if (firstMicroseconds < 0) {
        auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(readOurs(parser, path));
        firstMicroseconds =
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
                .count();
    }
    state.counters["first_read_us"] = firstMicroseconds;
    int64_t touched = 0;
    for (auto _ : state)
        touched += readOurs(parser, path);
    benchmark::DoNotOptimize(touched);
    state.SetItemsProcessed(int64_t(state.iterations()));
}

void libxml2(benchmark::State& state) {
    const std::string& path = documentPath();
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadFile(path.c_str(), nullptr, XML_PARSE_DTDLOAD | XML_PARSE_NOENT);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}

} // namespace

BENCHMARK(ours)->Name("dtd/ours_cached_subset")->Unit(benchmark::kMicrosecond);
BENCHMARK(libxml2)->Name("dtd/libxml2_xmlReadFile")->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    zkbench::RatioReporter reporter(std::vector<std::pair<std::string, std::string>>{
        {"dtd/ours_cached_subset", "dtd/libxml2_xmlReadFile"}});
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
