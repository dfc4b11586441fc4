// Tokenizing and parsing real property values (extracted from stylesheets by
// scripts/extract_values.py), in MB/s, next to a plain ICU UnicodeString copy of the same text:
// the least any reader of the values must do.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>
#include <zkcommon/values/parser.h>

using namespace ZkCommonNS;

namespace {

// The values repeated to about 4 MB of UTF-8, so that a run reads well past the caches.
constexpr size_t kTargetBytes = 4u << 20;

struct Corpus {
    std::vector<UnicodeString> values;
    int64_t bytes = 0; // UTF-8 bytes of one pass
};

const Corpus& corpus() {
    static const Corpus data = [] {
        Corpus c;
        std::ifstream in(ZK_TEST_DATA_DIR "/values/propertyvalues.txt");
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);)
            if (!line.empty())
                lines.push_back(line);
        if (lines.empty()) {
            std::fprintf(stderr, "no values in %s\n",
                         ZK_TEST_DATA_DIR "/values/propertyvalues.txt");
            std::exit(1);
        }
        while (static_cast<size_t>(c.bytes) < kTargetBytes) {
            for (const std::string& line : lines) {
                c.values.push_back(UnicodeString::fromUTF8(line));
                c.bytes += static_cast<int64_t>(line.size());
            }
        }
        return c;
    }();
    return data;
}

void finish(benchmark::State& state, const Corpus& c) {
    state.SetBytesProcessed(int64_t(state.iterations()) * c.bytes);
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(c.values.size()));
}

// The peer: each value copied into a fresh UnicodeString of its own.
void BM_IcuCopy(benchmark::State& state) {
    const Corpus& c = corpus();
    for (auto _ : state) {
        for (const UnicodeString& v : c.values) {
            UnicodeString copy(v.getBuffer(), v.length());
            benchmark::DoNotOptimize(copy.getBuffer());
        }
    }
    finish(state, c);
}

void BM_TokenizeRaw(benchmark::State& state) {
    const Corpus& c = corpus();
    for (auto _ : state) {
        for (const UnicodeString& v : c.values) {
            ZkTokenizer t(v, ZkTokenizer::TokenizerCSSComment);
            int tokens = 0;
            while (t.nextToken() != ZkTokenizer::TokenEnd)
                ++tokens;
            benchmark::DoNotOptimize(tokens);
        }
    }
    finish(state, c);
}

void BM_TokenizeValues(benchmark::State& state) {
    const Corpus& c = corpus();
    for (auto _ : state) {
        for (const UnicodeString& v : c.values) {
            ZkTokenizer t(v, ZkTokenizer::TokenizerCSSComment);
            while (!t.nextTokenValueFunc().isNull()) {
            }
        }
    }
    finish(state, c);
}

void BM_ParseList(benchmark::State& state) {
    const Corpus& c = corpus();
    for (auto _ : state) {
        for (const UnicodeString& v : c.values) {
            ZkValue value = ZkParser::parseCompound(v, ZkTokenizer::TokenizerCSSComment);
            benchmark::DoNotOptimize(value);
        }
    }
    finish(state, c);
}

} // namespace

BENCHMARK(BM_IcuCopy);
BENCHMARK(BM_TokenizeRaw);
BENCHMARK(BM_TokenizeValues);
BENCHMARK(BM_ParseList);

int main(int argc, char** argv) {
    std::printf("%zu values, %.1f MB of UTF-8 per pass\n", corpus().values.size(),
                static_cast<double>(corpus().bytes) / (1 << 20));
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_TokenizeRaw", "BM_IcuCopy"},
                                   {"BM_TokenizeValues", "BM_IcuCopy"},
                                   {"BM_ParseList", "BM_IcuCopy"}});
}
