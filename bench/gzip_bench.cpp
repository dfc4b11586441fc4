// Reading a 100 MB gzip file through ZkGzipIStream (over an ifstream, and by path through
// zlib's reader) next to zlib's own gzread, with 4 KB and 64 KB read buffers, in one run. The
// file is made once in /tmp (or $ZK_BENCH_DIR) from document-like text.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>
#include <zkcommon/io/gzipstream.h>
#include <zlib.h>

using namespace ZkCommonNS;

namespace {

constexpr long long kSize = 100LL * 1000 * 1000;

// A file of about 100 MB once decompressed: markup with varying numbers, compressing about
// as well as real documents (4 to 5 times).
const std::string& gzipFile() {
    static const std::string path = [] {
        const char* dir = std::getenv("ZK_BENCH_DIR");
        std::string name = std::string(dir ? dir : "/tmp") + "/zk_gzip_bench_100mb.gz";
        struct stat status;
        if (::stat(name.c_str(), &status) == 0 && status.st_size > 0)
            return name;
        const std::string partial = name + ".part";
        gzFile out = gzopen(partial.c_str(), "wb6");
        std::string text;
        unsigned seed = 12345;
        long long written = 0;
        while (written < kSize) {
            text.clear();
            for (int i = 0; i < 1000; ++i) {
                seed = seed * 1103515245u + 12345u;
                text += "<fo:block id=\"b" + std::to_string(seed >> 8) + "\" space-before=\"" +
                        std::to_string(seed % 97) + "pt\">Paragraph text " +
                        std::to_string(seed % 100000) + " with words.</fo:block>\n";
            }
            const long long take = std::min<long long>(kSize - written, (long long)text.size());
            gzwrite(out, text.data(), static_cast<unsigned>(take));
            written += take;
        }
        gzclose(out);
        std::rename(partial.c_str(), name.c_str());
        return name;
    }();
    return path;
}

template <class Read> void drain(benchmark::State& state, Read read) {
    const size_t capacity = static_cast<size_t>(state.range(0));
    std::vector<char> buffer(capacity);
    long long total = 0;
    for (auto _ : state) {
        total = read(buffer.data(), capacity);
        benchmark::DoNotOptimize(total);
    }
    if (total != kSize)
        state.SkipWithError("wrong length");
    state.SetItemsProcessed(int64_t(state.iterations()) * (kSize / 1000)); // items of 1 KB
}

void BM_ZkGzipStream(benchmark::State& state) {
    const std::string& path = gzipFile();
    drain(state, [&](char* buffer, size_t capacity) {
        std::ifstream file(path, std::ios::binary);
        ZkGzipIStream in(file);
        long long total = 0;
        while (in.read(buffer, static_cast<std::streamsize>(capacity)) || in.gcount() > 0)
            total += in.gcount();
        return total;
    });
}

void BM_ZkGzipPath(benchmark::State& state) {
    const std::string& path = gzipFile();
    drain(state, [&](char* buffer, size_t capacity) {
        ZkGzipIStream in(path.c_str());
        long long total = 0;
        while (in.read(buffer, static_cast<std::streamsize>(capacity)) || in.gcount() > 0)
            total += in.gcount();
        return total;
    });
}

void BM_Gzread(benchmark::State& state) {
    const std::string& path = gzipFile();
    drain(state, [&](char* buffer, size_t capacity) {
        gzFile in = gzopen(path.c_str(), "rb");
        long long total = 0;
        int got;
        while ((got = gzread(in, buffer, static_cast<unsigned>(capacity))) > 0)
            total += got;
        gzclose(in);
        return total;
    });
}

} // namespace

// Each iteration reads the whole 100 MB; a few are enough.
BENCHMARK(BM_ZkGzipStream)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ZkGzipPath)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_Gzread)->Arg(4096)->Arg(65536)->Unit(benchmark::kMillisecond)->Iterations(5);

int main(int argc, char** argv) {
    std::printf("input: %s\n", gzipFile().c_str());
    auto name = [](const char* benchmark, int capacity) {
        return std::string(benchmark) + "/" + std::to_string(capacity) + "/iterations:5";
    };
    std::vector<std::pair<std::string, std::string>> pairs;
    for (int capacity : {4096, 65536})
        for (const char* ours : {"BM_ZkGzipStream", "BM_ZkGzipPath"})
            pairs.emplace_back(name(ours, capacity), name("BM_Gzread", capacity));
    return zkbench::runWithRatios(argc, argv, pairs);
}
