// Pull parsing of the same documents by ZkXmlParserImpl::next(), libxml2's xmlTextReader and
// expat, each touching every name, attribute value and text, with ICU's UTF-8 to UTF-16
// conversion of the same bytes as the floor. The documents are written by
// scripts/gen_bench_docs.py into the build tree on the first run.
#include "benchdocs.h"
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <libxml/xmlreader.h>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>
#include <unicode/ustring.h>
#include <vector>
#include <zkcommon/xml/xmlparser.h>
#ifdef ZK_HAVE_EXPAT
#include <expat.h>
#endif

using namespace ZkCommonNS;

namespace {

void ours(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    ZkXmlParserImpl parser;
    int64_t touched = 0;
    for (auto _ : state) {
        MemoryBuf buffer(bytes);
        std::istream in(&buffer);
        parser.setInput(in, UnicodeString(), UnicodeString());
        for (int event; (event = parser.next()) != ZkXmlParser::END_DOCUMENT;) {
            if (event == ZkXmlParser::START_TAG) {
                touched += parser.getName().getEnum() + parser.getNamespace().getEnum();
                int count = parser.getAttributeCount();
                for (int i = 0; i < count; ++i)
                    touched +=
                        parser.getAttributeName(i).getEnum() + parser.getAttributeValue(i).length();
            } else if (event == ZkXmlParser::TEXT) {
                touched += parser.getText().length();
            }
        }
    }
    benchmark::DoNotOptimize(touched);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void libxml2Reader(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    int64_t touched = 0;
    for (auto _ : state) {
        xmlTextReaderPtr reader =
            xmlReaderForMemory(bytes.data(), int(bytes.size()), nullptr, nullptr, 0);
        while (xmlTextReaderRead(reader) == 1) {
            int type = xmlTextReaderNodeType(reader);
            if (type == XML_READER_TYPE_ELEMENT) {
                touched += xmlTextReaderConstLocalName(reader)[0];
                const xmlChar* ns = xmlTextReaderConstNamespaceUri(reader);
                touched += ns ? ns[0] : 0;
                while (xmlTextReaderMoveToNextAttribute(reader) == 1)
                    touched += xmlTextReaderConstLocalName(reader)[0] +
                               xmlStrlen(xmlTextReaderConstValue(reader));
            } else if (type == XML_READER_TYPE_TEXT ||
                       type == XML_READER_TYPE_SIGNIFICANT_WHITESPACE) {
                touched += xmlStrlen(xmlTextReaderConstValue(reader));
            }
        }
        xmlFreeTextReader(reader);
    }
    benchmark::DoNotOptimize(touched);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

#ifdef ZK_HAVE_EXPAT
void XMLCALL expatStart(void* data, const XML_Char* name, const XML_Char** attributes) {
    int64_t& touched = *static_cast<int64_t*>(data);
    touched += name[0];
    for (const XML_Char** a = attributes; *a; a += 2)
        touched += a[0][0] + int64_t(strlen(a[1]));
}

void XMLCALL expatEnd(void*, const XML_Char*) {}

void XMLCALL expatText(void* data, const XML_Char*, int length) {
    *static_cast<int64_t*>(data) += length;
}

void expat(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    int64_t touched = 0;
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreateNS(nullptr, '\x01');
        XML_SetUserData(parser, &touched);
        XML_SetElementHandler(parser, expatStart, expatEnd);
        XML_SetCharacterDataHandler(parser, expatText);
        XML_Parse(parser, bytes.data(), int(bytes.size()), 1);
        XML_ParserFree(parser);
    }
    benchmark::DoNotOptimize(touched);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
#endif

void icuFloor(benchmark::State& state, const char* name) {
    const std::string& bytes = benchDocument(name);
    std::vector<UChar> target(bytes.size() + 1);
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = 0;
        u_strFromUTF8WithSub(target.data(), int32_t(target.size()), &length, bytes.data(),
                             int32_t(bytes.size()), 0xFFFD, nullptr, &status);
        benchmark::DoNotOptimize(length);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

#define ZK_DOC_BENCH(doc)                                                                          \
    BENCHMARK_CAPTURE(ours, doc, #doc ".xml")->Unit(benchmark::kMillisecond);                      \
    BENCHMARK_CAPTURE(libxml2Reader, doc, #doc ".xml")->Unit(benchmark::kMillisecond);             \
    BENCHMARK_CAPTURE(icuFloor, doc, #doc ".xml")->Unit(benchmark::kMillisecond);

ZK_DOC_BENCH(fo)
ZK_DOC_BENCH(xhtml)
ZK_DOC_BENCH(small)
#ifdef ZK_HAVE_EXPAT
BENCHMARK_CAPTURE(expat, fo, "fo.xml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(expat, xhtml, "xhtml.xml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(expat, small, "small.xml")->Unit(benchmark::kMillisecond);
#endif

} // namespace

int main(int argc, char** argv) {
    // ns per item is ns per input byte; the ratios are ours over each peer.
    return zkbench::runWithRatios(argc, argv,
                                  {{"ours/fo", "libxml2Reader/fo"},
                                   {"ours/fo", "expat/fo"},
                                   {"ours/fo", "icuFloor/fo"},
                                   {"ours/xhtml", "libxml2Reader/xhtml"},
                                   {"ours/xhtml", "expat/xhtml"},
                                   {"ours/xhtml", "icuFloor/xhtml"},
                                   {"ours/small", "libxml2Reader/small"},
                                   {"ours/small", "expat/small"},
                                   {"ours/small", "ours/fo"}});
}
