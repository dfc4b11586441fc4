// ZkValue against std::variant, the peer a user would pick for a typed property value: copying
// a property table of mixed values and summing lengths, on the same data in the same run.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;

namespace {

// The peer: a value with a unit beside the variant, strings held as std::u16string.
struct PeerValue {
    std::variant<std::monostate, int32_t, float, int32_t /*name*/, std::u16string> data;
    int unit = 0;
};

constexpr int kCount = 100000;

// Property tables are mostly numbers with units and keywords, with a few strings.
const std::vector<ZkValue>& zkValues() {
    static const std::vector<ZkValue> values = [] {
        std::vector<ZkValue> out;
        out.reserve(kCount);
        for (int i = 0; i < kCount; ++i) {
            switch (i % 10) {
            case 0:
                out.emplace_back(UnicodeString(u"Times New Roman, serif"));
                break;
            case 1:
            case 2:
            case 3:
                out.emplace_back(ZkName(ZKN_auto));
                break;
            case 4:
            case 5:
                out.emplace_back(i % 7, UnitPx);
                break;
            default:
                out.emplace_back(static_cast<float>(i % 13) * 0.5f, UnitPt);
                break;
            }
        }
        return out;
    }();
    return values;
}

const std::vector<PeerValue>& peerValues() {
    static const std::vector<PeerValue> values = [] {
        std::vector<PeerValue> out;
        out.reserve(kCount);
        for (int i = 0; i < kCount; ++i) {
            PeerValue v;
            switch (i % 10) {
            case 0:
                v.data = std::u16string(u"Times New Roman, serif");
                break;
            case 1:
            case 2:
            case 3:
                v.data.emplace<3>(int32_t(ZKN_auto));
                v.unit = UnitName;
                break;
            case 4:
            case 5:
                v.data.emplace<1>(i % 7);
                v.unit = UnitPx;
                break;
            default:
                v.data.emplace<2>(static_cast<float>(i % 13) * 0.5f);
                v.unit = UnitPt;
                break;
            }
            out.push_back(std::move(v));
        }
        return out;
    }();
    return values;
}

void BM_ZkValueCopyTable(benchmark::State& state) {
    const std::vector<ZkValue>& values = zkValues();
    for (auto _ : state) {
        std::vector<ZkValue> copy(values);
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kCount);
}

void BM_VariantCopyTable(benchmark::State& state) {
    const std::vector<PeerValue>& values = peerValues();
    for (auto _ : state) {
        std::vector<PeerValue> copy(values);
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kCount);
}

void BM_ZkValueSumLengths(benchmark::State& state) {
    const std::vector<ZkValue>& values = zkValues();
    for (auto _ : state) {
        ZkValue sum(0);
        for (const ZkValue& v : values) {
            if (v.isAbsoluteLength())
                sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kCount);
}

void BM_VariantSumLengths(benchmark::State& state) {
    const std::vector<PeerValue>& values = peerValues();
    for (auto _ : state) {
        float sum = 0.0f;
        for (const PeerValue& v : values) {
            if (v.unit == UnitPt && v.data.index() == 2)
                sum += std::get<2>(v.data);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kCount);
}

} // namespace

BENCHMARK(BM_ZkValueCopyTable);
BENCHMARK(BM_VariantCopyTable);
BENCHMARK(BM_ZkValueSumLengths);
BENCHMARK(BM_VariantSumLengths);

int main(int argc, char** argv) {
    std::printf("sizeof(ZkValue) = %zu, sizeof(peer) = %zu\n", sizeof(ZkValue), sizeof(PeerValue));
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_ZkValueCopyTable", "BM_VariantCopyTable"},
                                   {"BM_ZkValueSumLengths", "BM_VariantSumLengths"}});
}
