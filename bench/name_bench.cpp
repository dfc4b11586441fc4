// Name interning: built-in look-up and dynamic interning against libxml2's string dictionary,
// on the same texts in the same run.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h> // the dictionary, with the xmlChar it uses
#include <string>
#include <vector>
#include <zkcommon/core/name.h>

using namespace ZkCommonNS;

namespace {

std::vector<UnicodeString> builtinTexts() {
    std::vector<UnicodeString> texts;
    for (int number = 1; number <= ZKN_BUILTIN_LAST; number += 7)
        texts.push_back(ZkNameTable::getBuiltinNameString(ZkNameEnum(number)));
    return texts;
}

std::vector<std::string> utf8Of(const std::vector<UnicodeString>& texts) {
    std::vector<std::string> out;
    for (const UnicodeString& text : texts) {
        std::string s;
        out.push_back(text.toUTF8String(s));
    }
    return out;
}

std::vector<UnicodeString> dynamicTexts(int count) {
    std::vector<UnicodeString> texts;
    for (int i = 0; i < count; ++i)
        texts.push_back(UnicodeString::fromUTF8("x-custom-property-" + std::to_string(i)));
    return texts;
}

void BM_BuiltinLookup(benchmark::State& state) {
    std::vector<UnicodeString> texts = builtinTexts();
    for (auto _ : state)
        for (const UnicodeString& text : texts)
            benchmark::DoNotOptimize(ZkNameTable::getBuiltinNameEnum(text));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(texts.size()));
}

void BM_BuiltinToString(benchmark::State& state) {
    for (auto _ : state)
        for (int number = 1; number <= ZKN_BUILTIN_LAST; ++number)
            benchmark::DoNotOptimize(&ZkName(ZkNameEnum(number)).toString());
    state.SetItemsProcessed(int64_t(state.iterations()) * ZKN_BUILTIN_LAST);
}

void BM_DynamicIntern(benchmark::State& state) {
    std::vector<UnicodeString> texts = dynamicTexts(1000);
    for (const UnicodeString& text : texts)
        ZkName{text}; // interned once; the loop measures the repeat look-up under the lock
    for (auto _ : state)
        for (const UnicodeString& text : texts)
            benchmark::DoNotOptimize(ZkNameTable::getSharedNameEnum(text));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(texts.size()));
}

// The peer: libxml2 interns every element and attribute name through xmlDictLookup. The texts
// are in the dictionary already, as ours are in the name table.
void lookUpInLibxml2Dict(benchmark::State& state, const std::vector<std::string>& texts) {
    xmlDictPtr dict = xmlDictCreate();
    for (const std::string& text : texts)
        xmlDictLookup(dict, reinterpret_cast<const xmlChar*>(text.c_str()), int(text.size()));
    for (auto _ : state)
        for (const std::string& text : texts)
            benchmark::DoNotOptimize(xmlDictLookup(
                dict, reinterpret_cast<const xmlChar*>(text.c_str()), int(text.size())));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(texts.size()));
    xmlDictFree(dict);
}

void BM_Libxml2DictBuiltin(benchmark::State& state) {
    lookUpInLibxml2Dict(state, utf8Of(builtinTexts()));
}

void BM_Libxml2DictDynamic(benchmark::State& state) {
    lookUpInLibxml2Dict(state, utf8Of(dynamicTexts(1000)));
}

BENCHMARK(BM_BuiltinLookup);
BENCHMARK(BM_Libxml2DictBuiltin);
BENCHMARK(BM_BuiltinToString);
BENCHMARK(BM_DynamicIntern);
BENCHMARK(BM_Libxml2DictDynamic);

} // namespace

int main(int argc, char** argv) {
    return zkbench::runWithRatios(argc, argv,
                                  {{"BM_BuiltinLookup", "BM_Libxml2DictBuiltin"},
                                   {"BM_DynamicIntern", "BM_Libxml2DictDynamic"}});
}
