// ZkUtil::getPredefinedCounterStyle: the predefined styles, built from the generated table on
// first use under a lock and kept until ZkUtil::cleanup.
#include "text/utilcleanup.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/text/counterstyle.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace ZkCommonNS {

namespace {

struct PredefinedStyle {
    ZkNameEnum name;
    ZkNameEnum system;
    int first;
    const char16_t* const* symbols;
    int symbolCount;
    const int* weights;
    const char16_t* const* additiveSymbols;
    int additiveCount;
    const long long* range; // pairs of low and high
    int rangeCount;
    const char16_t* prefix;
    const char16_t* suffix;
    const char16_t* negativeBefore;
    const char16_t* negativeAfter;
    ZkNameEnum fallback;
};

#include "counterstyles.inc"

using CounterStyle = ZkUtil::CounterStyle;

// One slot per row of the table. A built style is published with a release store, so readers
// take it without the lock; building and dropping happen under the lock.
std::atomic<CounterStyle*> s_styles[kPredefinedStyleCount];

ZkLock& styleLock() {
    static ZkLock s_lock;
    return s_lock;
}

void dropStyles() {
    ZkMutex guard(styleLock());
    for (std::atomic<CounterStyle*>& slot : s_styles)
        delete slot.exchange(nullptr, std::memory_order_acq_rel);
}

const bool s_registered = (detail::registerUtilCleanup(&dropStyles), true);

std::unique_ptr<CounterStyle> buildStyle(const PredefinedStyle& row) {
    auto style = std::make_unique<CounterStyle>(ZkName(row.system));
    style->setFirst(row.first);
    for (int i = 0; i < row.symbolCount; ++i)
        style->addSymbol(CounterStyle::Symbol(UnicodeString(row.symbols[i])));
    for (int i = 0; i < row.additiveCount; ++i)
        style->addAdditiveSymbol(row.weights[i],
                                 CounterStyle::Symbol(UnicodeString(row.additiveSymbols[i])));
    for (int i = 0; i < row.rangeCount; ++i)
        style->addRange(row.range[2 * i], row.range[2 * i + 1]);
    style->setPrefix(CounterStyle::Symbol(UnicodeString(row.prefix)));
    style->setSuffix(CounterStyle::Symbol(UnicodeString(row.suffix)));
    style->setNegative(CounterStyle::Symbol(UnicodeString(row.negativeBefore)),
                       CounterStyle::Symbol(UnicodeString(row.negativeAfter)));
    style->setFallback(ZkName(row.fallback));
    style->setPredefined(true);
    return style;
}

const PredefinedStyle* findRow(ZkNameEnum name) {
    const PredefinedStyle* end = kPredefinedStyles + kPredefinedStyleCount;
    const PredefinedStyle* row =
        std::lower_bound(kPredefinedStyles, end, name,
                         [](const PredefinedStyle& r, ZkNameEnum n) { return r.name < n; });
    return row != end && row->name == name ? row : nullptr;
}

} // namespace

const CounterStyle* ZkUtil::getPredefinedCounterStyle(ZkName name, void* data) {
    (void)data;
    (void)s_registered;
    // Every predefined name is a built-in name; a dynamic one cannot match.
    if (!name.isBuiltin() || name.isEmpty())
        return nullptr;
    const PredefinedStyle* row = findRow(name.getEnum());
    if (!row)
        return nullptr;
    std::atomic<CounterStyle*>& slot = s_styles[row - kPredefinedStyles];
    if (CounterStyle* built = slot.load(std::memory_order_acquire))
        return built;
    ZkMutex guard(styleLock());
    CounterStyle* built = slot.load(std::memory_order_acquire);
    if (!built) {
        built = buildStyle(*row).release();
        slot.store(built, std::memory_order_release);
    }
    return built;
}

} // namespace ZkCommonNS
