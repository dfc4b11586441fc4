// ZkMemStream against the peers a user would pick for an in-memory byte stream,
// std::stringstream and a plain std::vector<char>: sequential writes and reads of 8 MB in
// 64-byte pieces, and byte-at-a-time output, on the same data in the same run.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>
#include <zkcommon/io/memstream.h>

using namespace ZkCommonNS;

namespace {

constexpr size_t kTotal = 8 << 20;
constexpr size_t kPiece = 64;
constexpr size_t kBytes = 1 << 20;

const std::string& content() {
    static const std::string data = [] {
        std::string text(kTotal, '\0');
        for (size_t i = 0; i < kTotal; ++i)
            text[i] = static_cast<char>('a' + i * 7 % 26);
        return text;
    }();
    return data;
}

void BM_MemStreamWrite(benchmark::State& state) {
    const std::string& data = content();
    for (auto _ : state) {
        ZkMemStream stream;
        for (size_t at = 0; at < kTotal; at += kPiece)
            stream.write(data.data() + at, kPiece);
        benchmark::DoNotOptimize(stream.length());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_StringStreamWrite(benchmark::State& state) {
    const std::string& data = content();
    for (auto _ : state) {
        std::stringstream stream(std::ios::in | std::ios::out | std::ios::binary);
        for (size_t at = 0; at < kTotal; at += kPiece)
            stream.write(data.data() + at, kPiece);
        benchmark::DoNotOptimize(stream.tellp());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_VectorWrite(benchmark::State& state) {
    const std::string& data = content();
    for (auto _ : state) {
        std::vector<char> bytes;
        for (size_t at = 0; at < kTotal; at += kPiece)
            bytes.insert(bytes.end(), data.data() + at, data.data() + at + kPiece);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_MemStreamRead(benchmark::State& state) {
    ZkMemStream stream;
    stream.write(content().data(), kTotal);
    char piece[kPiece];
    for (auto _ : state) {
        stream.seekg(0);
        while (stream.read(piece, kPiece))
            benchmark::DoNotOptimize(piece);
        stream.clear();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_StringStreamRead(benchmark::State& state) {
    std::stringstream stream(std::ios::in | std::ios::out | std::ios::binary);
    stream.write(content().data(), kTotal);
    char piece[kPiece];
    for (auto _ : state) {
        stream.seekg(0);
        while (stream.read(piece, kPiece))
            benchmark::DoNotOptimize(piece);
        stream.clear();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_VectorRead(benchmark::State& state) {
    const std::vector<char> bytes(content().begin(), content().end());
    char piece[kPiece];
    for (auto _ : state) {
        for (size_t at = 0; at + kPiece <= bytes.size(); at += kPiece) {
            std::memcpy(piece, bytes.data() + at, kPiece);
            benchmark::DoNotOptimize(piece);
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kTotal));
}

void BM_MemStreamPut(benchmark::State& state) {
    for (auto _ : state) {
        ZkMemStream stream;
        for (size_t i = 0; i < kBytes; ++i)
            stream.put(static_cast<char>(i));
        benchmark::DoNotOptimize(stream.length());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kBytes));
}

void BM_StringStreamPut(benchmark::State& state) {
    for (auto _ : state) {
        std::stringstream stream(std::ios::in | std::ios::out | std::ios::binary);
        for (size_t i = 0; i < kBytes; ++i)
            stream.put(static_cast<char>(i));
        benchmark::DoNotOptimize(stream.tellp());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kBytes));
}

void BM_VectorPut(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<char> bytes;
        for (size_t i = 0; i < kBytes; ++i)
            bytes.push_back(static_cast<char>(i));
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kBytes));
}

} // namespace

BENCHMARK(BM_MemStreamWrite);
BENCHMARK(BM_StringStreamWrite);
BENCHMARK(BM_VectorWrite);
BENCHMARK(BM_MemStreamRead);
BENCHMARK(BM_StringStreamRead);
BENCHMARK(BM_VectorRead);
BENCHMARK(BM_MemStreamPut);
BENCHMARK(BM_StringStreamPut);
BENCHMARK(BM_VectorPut);

int main(int argc, char** argv) {
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_MemStreamWrite", "BM_StringStreamWrite"},
                                   {"BM_MemStreamWrite", "BM_VectorWrite"},
                                   {"BM_MemStreamRead", "BM_StringStreamRead"},
                                   {"BM_MemStreamRead", "BM_VectorRead"},
                                   {"BM_MemStreamPut", "BM_StringStreamPut"},
                                   {"BM_MemStreamPut", "BM_VectorPut"}});
}
