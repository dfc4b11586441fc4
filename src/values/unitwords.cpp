// The unit words behind numbers as the tokenizer meets them: any case, looked up by their
// letters packed into one integer, so that reading a unit allocates nothing and interns nothing.
#include "values/parserinternal.h"
#include "zkcommon/text/util.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ZkCommonNS {

namespace {

// Unit words are short ASCII: "pvmin" is the longest.
constexpr int32_t kLongestUnit = 5;

struct UnitKey {
    uint64_t key;
    ZkUnitType unit;
    bool operator<(const UnitKey& other) const noexcept { return key < other.key; }
};

// The lowered letters of `word`, one byte each; 0 for a word that can be no unit.
uint64_t packLowered(const char16_t* word, int32_t length) noexcept {
    if (length <= 0 || length > kLongestUnit)
        return 0;
    uint64_t key = 0;
    for (int32_t i = 0; i < length; ++i) {
        char16_t c = word[i];
        if (c >= u'A' && c <= u'Z')
            c = static_cast<char16_t>(c + 32);
        else if (c == 0 || c > 0x7F)
            return 0;
        key = (key << 8) | c;
    }
    return key;
}

// Built once from the unit words themselves; the first unit of a word wins ("%" is 2, not 55).
const std::vector<UnitKey>& unitKeys() {
    static const std::vector<UnitKey> keys = [] {
        std::vector<UnitKey> table;
        auto add = [&table](const UnicodeString& word, ZkUnitType unit) {
            uint64_t key = packLowered(word.getBuffer(), word.length());
            if (key == 0)
                return;
            for (const UnitKey& k : table)
                if (k.key == key)
                    return;
            table.push_back({key, unit});
        };
        for (int u = 0; u < kUnitTypeCount; ++u)
            add(ZkUtil::toUnitName(static_cast<ZkUnitType>(u)).toString(),
                static_cast<ZkUnitType>(u));
        add(u"vm", UnitVmin); // the old spelling of vmin
        std::sort(table.begin(), table.end());
        return table;
    }();
    return keys;
}

} // namespace

ZkUnitType detail::unitOfWord(const UnicodeString& word) {
    uint64_t key = packLowered(word.getBuffer(), word.length());
    if (key == 0)
        return UnitNone;
    const std::vector<UnitKey>& keys = unitKeys();
    auto it = std::lower_bound(keys.begin(), keys.end(), UnitKey{key, UnitNone});
    return it != keys.end() && it->key == key ? it->unit : UnitNone;
}

} // namespace ZkCommonNS
