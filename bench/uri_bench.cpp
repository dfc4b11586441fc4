// URI resolution against libxml2's xmlBuildURI, and decoding Shift_JIS through ZkICUIStream and
// ZkRQCIStream against plain iconv, on the same inputs; prints the ratios at the end.
#include <benchmark/benchmark.h>
#include <cstdio>
#include <iconv.h>
#include <libxml/uri.h>
#include <libxml/xmlmemory.h>
#include <map>
#include <sstream>
#include <string>
#include <unicode/ucnv.h>
#include <vector>
#include <zkcommon/io/icuistream.h>
#include <zkcommon/io/rqcstream.h>
#include <zkcommon/io/uri.h>

using namespace ZkCommonNS;

namespace {

struct Pair {
    const char* base;
    const char* reference;
};

const Pair kPairs[] = {
    {"http://a/b/c/d;p?q", "g"},
    {"http://a/b/c/d;p?q", "../g"},
    {"http://a/b/c/d;p?q", "../../g"},
    {"http://a/b/c/d;p?q", "g?y#s"},
    {"http://a/b/c/d;p?q", "/g"},
    {"http://a/b/c/d;p?q", "//g"},
    {"http://a/b/c/d;p?q", "./g/."},
    {"http://a/b/c/d;p?q", "g;x=1/../y"},
    {"file:///home/u/docs/book.xml", "chapters/ch1.xml"},
    {"file:///home/u/docs/book.xml", "../images/figure%201.png"},
    {"https://example.com/styles/main.css", "fonts/serif.woff2"},
    {"https://example.com/a/b/c/d/e/index.html", "../../../x/y.html#top"},
};

std::vector<ZkUri>& zkBases() {
    static std::vector<ZkUri> bases = [] {
        std::vector<ZkUri> list;
        for (const Pair& pair : kPairs)
            list.emplace_back(UnicodeString::fromUTF8(pair.base), ZkUri::URISTR_URI);
        return list;
    }();
    return bases;
}

std::vector<UnicodeString>& zkReferences() {
    static std::vector<UnicodeString> references = [] {
        std::vector<UnicodeString> list;
        for (const Pair& pair : kPairs)
            list.push_back(UnicodeString::fromUTF8(pair.reference));
        return list;
    }();
    return references;
}

void BM_Resolve_ZkUri(benchmark::State& state) {
    std::vector<ZkUri>& bases = zkBases();
    std::vector<UnicodeString>& references = zkReferences();
    for (auto _ : state) {
        for (size_t i = 0; i < bases.size(); ++i) {
            ZkUri resolved(bases[i], references[i], ZkUri::URISTR_URI);
            benchmark::DoNotOptimize(resolved.toString().length());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bases.size()));
}
BENCHMARK(BM_Resolve_ZkUri);

void BM_Resolve_libxml2(benchmark::State& state) {
    for (auto _ : state) {
        for (const Pair& pair : kPairs) {
            xmlChar* resolved = xmlBuildURI(reinterpret_cast<const xmlChar*>(pair.reference),
                                            reinterpret_cast<const xmlChar*>(pair.base));
            benchmark::DoNotOptimize(resolved);
            xmlFree(resolved);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(std::size(kPairs)));
}
BENCHMARK(BM_Resolve_libxml2);

// About 1 MB of Japanese text in Shift_JIS.
const std::string& shiftJisText() {
    static const std::string bytes = [] {
        UnicodeString text;
        UnicodeString line = UnicodeString::fromUTF8(
            "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87\xE6\x9B\xB8\xE3\x80\x82"
            "\xE3\x82\xAB\xE3\x82\xBF\xE3\x82\xAB\xE3\x83\x8A and ASCII 0123456789.\n");
        while (text.length() < 600000)
            text.append(line);
        UErrorCode status = U_ZERO_ERROR;
        UConverter* converter = ucnv_open("Shift_JIS", &status);
        std::string out(static_cast<size_t>(text.length()) * 2 + 16, '\0');
        int32_t length = ucnv_fromUChars(converter, &out[0], static_cast<int32_t>(out.size()),
                                         text.getBuffer(), text.length(), &status);
        ucnv_close(converter);
        out.resize(static_cast<size_t>(length));
        return out;
    }();
    return bytes;
}

template <class Stream> void decodeThrough(benchmark::State& state) {
    const std::string& bytes = shiftJisText();
    std::vector<char> sink(65536);
    for (auto _ : state) {
        Stream in(new std::istringstream(bytes), "Shift_JIS", true);
        size_t total = 0;
        while (in.read(sink.data(), static_cast<std::streamsize>(sink.size())), in.gcount() > 0)
            total += static_cast<size_t>(in.gcount());
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

void BM_Decode_ZkICUIStream(benchmark::State& state) {
    decodeThrough<ZkICUIStream>(state);
}
BENCHMARK(BM_Decode_ZkICUIStream);

void BM_Decode_ZkRQCIStream(benchmark::State& state) {
    decodeThrough<ZkRQCIStream>(state);
}
BENCHMARK(BM_Decode_ZkRQCIStream);

void BM_Decode_iconv(benchmark::State& state) {
    const std::string& bytes = shiftJisText();
    std::vector<char> sink(65536);
    for (auto _ : state) {
        // Same work as the streams: a fresh converter, then the bytes in 4096-byte reads.
        iconv_t handle = iconv_open("UTF-16LE", "CP932");
        size_t total = 0;
        std::string pending;
        for (size_t offset = 0; offset < bytes.size(); offset += 4096) {
            pending.append(bytes, offset, 4096);
            char* in = &pending[0];
            size_t inLeft = pending.size();
            while (inLeft > 0) {
                char* out = sink.data();
                size_t outLeft = sink.size();
                size_t result = iconv(handle, &in, &inLeft, &out, &outLeft);
                total += sink.size() - outLeft;
                if (result == static_cast<size_t>(-1) && errno != E2BIG)
                    break;
            }
            pending.erase(0, pending.size() - inLeft);
        }
        iconv_close(handle);
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(BM_Decode_iconv);

// Keeps the CPU time per iteration of each benchmark for the ratios printed at the end: the
// machine is shared, and CPU time varies less with the load than wall time.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            m_times[run.benchmark_name()] = run.GetAdjustedCPUTime();
    }
    void printRatio(const char* ours, const char* peer) {
        auto a = m_times.find(ours);
        auto b = m_times.find(peer);
        if (a == m_times.end() || b == m_times.end() || b->second <= 0)
            return;
        std::printf("ratio %s / %s = %.2f (CPU time; below 1: ours is faster)\n", ours, peer,
                    a->second / b->second);
    }

private:
    std::map<std::string, double> m_times;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("BM_Resolve_ZkUri", "BM_Resolve_libxml2");
    reporter.printRatio("BM_Decode_ZkICUIStream", "BM_Decode_iconv");
    reporter.printRatio("BM_Decode_ZkRQCIStream", "BM_Decode_iconv");
    benchmark::Shutdown();
    return 0;
}
