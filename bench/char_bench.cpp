// Character classes and Base64: ZkChar's name and validity tests against a plain ICU property
// look-up of the same code points, and ZkUtil's Base64 against a plain reference codec (the
// textbook table-driven RFC 4648 loops over byte strings), on the same input in the same run.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <unicode/uchar.h>
#include <vector>
#include <zkcommon/core/char.h>
#include <zkcommon/text/util.h>

using namespace ZkCommonNS;

namespace {

// A mixed document of one million code points: mostly ASCII markup and text, with Latin-1,
// Japanese and a few supplementary characters, in the proportions of a typical multilingual
// input.
const std::vector<UChar32>& sampleText() {
    static const std::vector<UChar32> text = [] {
        std::vector<UChar32> out;
        std::mt19937 random(42);
        std::uniform_int_distribution<int> pick(0, 99);
        out.reserve(1000000);
        while (out.size() < 1000000) {
            int p = pick(random);
            if (p < 70)
                out.push_back(0x20 + pick(random) % 0x5F);
            else if (p < 80)
                out.push_back(0xA0 + pick(random) % 0x60);
            else if (p < 97)
                out.push_back(0x3040 + pick(random) * 37 % 0x6000);
            else
                out.push_back(0x1F300 + pick(random));
        }
        return out;
    }();
    return text;
}

const std::string& sampleBytes() {
    static const std::string bytes = [] {
        std::string out(4 << 20, '\0');
        std::mt19937 random(7);
        for (char& c : out)
            c = static_cast<char>(random() & 0xFF);
        return out;
    }();
    return bytes;
}

void BM_ZkIsNCNameChar(benchmark::State& state) {
    const std::vector<UChar32>& text = sampleText();
    for (auto _ : state) {
        int count = 0;
        for (UChar32 c : text)
            count += ZkChar::isNCNameChar(c);
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// The ICU property nearest to an XML name character.
void BM_IcuIdContinue(benchmark::State& state) {
    const std::vector<UChar32>& text = sampleText();
    for (auto _ : state) {
        int count = 0;
        for (UChar32 c : text)
            count += u_hasBinaryProperty(c, UCHAR_XID_CONTINUE);
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

void BM_ZkIsValidChar(benchmark::State& state) {
    const std::vector<UChar32>& text = sampleText();
    for (auto _ : state) {
        int count = 0;
        for (UChar32 c : text)
            count += ZkChar::isValidChar(c);
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// The plainest ICU look-up: the general category of each code point.
void BM_IcuCharType(benchmark::State& state) {
    const std::vector<UChar32>& text = sampleText();
    for (auto _ : state) {
        int count = 0;
        for (UChar32 c : text)
            count += u_charType(c) != U_UNASSIGNED;
        benchmark::DoNotOptimize(count);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// The reference codec: the straightforward RFC 4648 loops a user would otherwise write.
std::string referenceEncode(const std::string& in) {
    static const char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((in.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= in.size(); i += 3) {
        uint32_t v = (uint8_t(in[i]) << 16) | (uint8_t(in[i + 1]) << 8) | uint8_t(in[i + 2]);
        out += kAlphabet[v >> 18];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += kAlphabet[v & 63];
    }
    if (i + 1 == in.size()) {
        uint32_t v = uint8_t(in[i]) << 16;
        out += kAlphabet[v >> 18];
        out += kAlphabet[(v >> 12) & 63];
        out += "==";
    } else if (i + 2 == in.size()) {
        uint32_t v = (uint8_t(in[i]) << 16) | (uint8_t(in[i + 1]) << 8);
        out += kAlphabet[v >> 18];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += '=';
    }
    return out;
}

std::string referenceDecode(const std::string& in) {
    int table[256];
    for (int& v : table)
        v = -1;
    const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int i = 0; i < 64; ++i)
        table[uint8_t(alphabet[i])] = i;
    std::string out;
    out.reserve(in.size() / 4 * 3);
    uint32_t group = 0;
    int count = 0;
    for (char c : in) {
        if (c == '=')
            break;
        int v = table[uint8_t(c)];
        if (v < 0)
            continue;
        group = (group << 6) | uint32_t(v);
        if (++count == 4) {
            out += char(group >> 16);
            out += char(group >> 8);
            out += char(group);
            group = 0;
            count = 0;
        }
    }
    if (count == 2)
        out += char(group >> 4);
    else if (count == 3) {
        out += char(group >> 10);
        out += char(group >> 2);
    }
    return out;
}

void BM_ZkBase64Encode(benchmark::State& state) {
    const std::string& bytes = sampleBytes();
    for (auto _ : state) {
        std::istringstream in(bytes);
        benchmark::DoNotOptimize(ZkUtil::encodeBase64(in, int(bytes.size())));
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void BM_ReferenceBase64Encode(benchmark::State& state) {
    const std::string& bytes = sampleBytes();
    for (auto _ : state)
        benchmark::DoNotOptimize(referenceEncode(bytes));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void BM_ZkBase64Decode(benchmark::State& state) {
    const std::string& bytes = sampleBytes();
    std::istringstream in(bytes);
    UnicodeString text = ZkUtil::encodeBase64(in, int(bytes.size()));
    for (auto _ : state) {
        std::ostringstream out;
        ZkUtil::decodeBase64(text.getBuffer(), text.length(), out);
        benchmark::DoNotOptimize(out.tellp());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void BM_ReferenceBase64Decode(benchmark::State& state) {
    const std::string& bytes = sampleBytes();
    std::string text = referenceEncode(bytes);
    for (auto _ : state)
        benchmark::DoNotOptimize(referenceDecode(text));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

} // namespace

BENCHMARK(BM_ZkIsNCNameChar);
BENCHMARK(BM_IcuIdContinue);
BENCHMARK(BM_ZkIsValidChar);
BENCHMARK(BM_IcuCharType);
BENCHMARK(BM_ZkBase64Encode);
BENCHMARK(BM_ReferenceBase64Encode);
BENCHMARK(BM_ZkBase64Decode);
BENCHMARK(BM_ReferenceBase64Decode);

int main(int argc, char** argv) {
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_ZkIsNCNameChar", "BM_IcuIdContinue"},
                                   {"BM_ZkIsValidChar", "BM_IcuCharType"},
                                   {"BM_ZkBase64Encode", "BM_ReferenceBase64Encode"},
                                   {"BM_ZkBase64Decode", "BM_ReferenceBase64Decode"}});
}
