// ZkUtil::CounterStyle: symbols and settings, the systems of formatNumber, padding and affixes,
// and the fallback chain with its cycle guard.
#include "zkcommon/text/counterstyle.h"

#include "text/numerals.h"

#include <cstdarg>
#include <tuple>

namespace ZkCommonNS {

namespace {

// Results this long go to the fallback: a huge value in a repeating system must not spend
// unbounded time or memory.
constexpr int kMaxMarkerLength = 1000;
// Fallback chains longer than this end in decimal, so a long chain of rules cannot recurse
// deeply.
constexpr int kMaxFallbackDepth = 32;

// The styles of this thread that are running their fallback, innermost last. Keeping the
// guard per thread rather than in the style lets several threads share a style (the predefined
// ones above all) without a data race.
thread_local const ZkUtil::CounterStyle* t_fallbackChain[kMaxFallbackDepth];
thread_local int t_fallbackDepth = 0;

bool isInFallback(const ZkUtil::CounterStyle* style) {
    for (int i = 0; i < t_fallbackDepth; ++i)
        if (t_fallbackChain[i] == style)
            return true;
    return false;
}

UnicodeString fromUtf8(const char* text) {
    return text ? UnicodeString::fromUTF8(text) : UnicodeString();
}

int codePointLength(const UnicodeString& text) {
    return text.countChar32();
}

bool isChineseSystem(ZkName system) {
    return system == ZKN_simp_chinese_informal || system == ZKN_simp_chinese_formal ||
           system == ZKN_trad_chinese_informal || system == ZKN_trad_chinese_formal;
}

template <typename T> bool lessPointee(const std::unique_ptr<T>& a, const std::unique_ptr<T>& b) {
    if (!a || !b)
        return !a && b;
    return *a < *b;
}

template <typename T> std::unique_ptr<T> clonePointee(const std::unique_ptr<T>& source) {
    return source ? std::make_unique<T>(*source) : nullptr;
}

} // namespace

using CounterStyle = ZkUtil::CounterStyle;

CounterStyle::Symbol::Symbol(int codePoint) {
    if (codePoint >= 0 && codePoint <= 0x10FFFF && !U_IS_SURROGATE(codePoint))
        append(static_cast<UChar32>(codePoint));
}

bool CounterStyle::Symbol::operator<(const Symbol& other) const {
    int8_t order = compare(other);
    if (order != 0)
        return order < 0;
    return !m_url && other.m_url;
}

CounterStyle::CounterStyle(ZkName system)
    : m_system(system), m_negative(Symbol(UNICODE_STRING_SIMPLE("-")), Symbol()),
      m_suffix(UNICODE_STRING_SIMPLE(". ")), m_fallback(ZKN_decimal) {}

CounterStyle::CounterStyle(const CounterStyle& other)
    : m_system(other.m_system), m_first(other.m_first), m_symbols(clonePointee(other.m_symbols)),
      m_additiveSymbols(clonePointee(other.m_additiveSymbols)), m_negative(other.m_negative),
      m_zero(other.m_zero), m_prefix(other.m_prefix), m_suffix(other.m_suffix),
      m_range(clonePointee(other.m_range)), m_pad(other.m_pad), m_predefined(other.m_predefined),
      m_fallback(other.m_fallback), m_symbolUnits(other.m_symbolUnits) {}

CounterStyle& CounterStyle::operator=(const CounterStyle& other) {
    if (this != &other) {
        CounterStyle copy(other);
        m_system = copy.m_system;
        m_first = copy.m_first;
        m_symbols = std::move(copy.m_symbols);
        m_additiveSymbols = std::move(copy.m_additiveSymbols);
        m_negative = copy.m_negative;
        m_zero = copy.m_zero;
        m_prefix = copy.m_prefix;
        m_suffix = copy.m_suffix;
        m_range = std::move(copy.m_range);
        m_pad = copy.m_pad;
        m_predefined = copy.m_predefined;
        m_fallback = copy.m_fallback;
        m_symbolUnits = std::move(copy.m_symbolUnits);
    }
    return *this;
}

CounterStyle::~CounterStyle() = default;

bool CounterStyle::operator<(const CounterStyle& other) const {
    auto key = [](const CounterStyle& s) {
        return std::tie(s.m_system, s.m_first, s.m_negative, s.m_zero, s.m_prefix, s.m_suffix,
                        s.m_pad, s.m_predefined, s.m_fallback);
    };
    if (key(*this) < key(other))
        return true;
    if (key(other) < key(*this))
        return false;
    // IntSymbol orders by weight only; the whole pad still has to be told apart.
    if (m_pad.getSymbol() != other.m_pad.getSymbol())
        return m_pad.getSymbol() < other.m_pad.getSymbol();
    if (lessPointee(m_symbols, other.m_symbols))
        return true;
    if (lessPointee(other.m_symbols, m_symbols))
        return false;
    if (lessPointee(m_range, other.m_range))
        return true;
    if (lessPointee(other.m_range, m_range))
        return false;
    const std::vector<IntSymbol>* a = m_additiveSymbols.get();
    const std::vector<IntSymbol>* b = other.m_additiveSymbols.get();
    if (!a || !b)
        return !a && b;
    size_t count = a->size() < b->size() ? a->size() : b->size();
    for (size_t i = 0; i < count; ++i) {
        const IntSymbol& x = (*a)[i];
        const IntSymbol& y = (*b)[i];
        if (x.getWeight() != y.getWeight())
            return x.getWeight() < y.getWeight();
        if (x.getSymbol() != y.getSymbol())
            return x.getSymbol() < y.getSymbol();
    }
    return a->size() < b->size();
}

void CounterStyle::addSymbol(const Symbol& symbol) {
    if (!m_symbols)
        m_symbols = std::make_unique<std::vector<Symbol>>();
    bool allUnits = m_symbolUnits.size() == m_symbols->size();
    m_symbols->push_back(symbol);
    if (allUnits && symbol.length() == 1)
        m_symbolUnits.push_back(symbol.charAt(0));
    else
        m_symbolUnits.clear();
}

void CounterStyle::addSymbols(int codePoint, ...) {
    va_list args;
    va_start(args, codePoint);
    for (int c = codePoint; c != 0; c = va_arg(args, int))
        addSymbol(Symbol(c));
    va_end(args);
}

void CounterStyle::addSymbols(const char* characters) {
    UnicodeString text = fromUtf8(characters);
    for (int i = 0; i < text.length();) {
        UChar32 c = text.char32At(i);
        addSymbol(Symbol(c));
        i += U16_LENGTH(c);
    }
}

void CounterStyle::addAdditiveSymbol(const IntSymbol& symbol) {
    if (!m_additiveSymbols)
        m_additiveSymbols = std::make_unique<std::vector<IntSymbol>>();
    m_additiveSymbols->push_back(symbol);
}

void CounterStyle::addAdditiveSymbol(int weight, const char* text) {
    addAdditiveSymbol(IntSymbol(weight, Symbol(fromUtf8(text))));
}

void CounterStyle::addRange(long long low, long long high) {
    if (!m_range)
        m_range = std::make_unique<Range>();
    m_range->emplace_back(low, high);
}

void CounterStyle::setPrefix(const char* text) {
    m_prefix = Symbol(fromUtf8(text));
}

void CounterStyle::setSuffix(const char* text) {
    m_suffix = Symbol(fromUtf8(text));
}

void CounterStyle::setZero(const char* text) {
    m_zero = Symbol(fromUtf8(text));
}

void CounterStyle::setNegative(const char* before, const char* after) {
    m_negative = {Symbol(fromUtf8(before)), Symbol(fromUtf8(after))};
}

void CounterStyle::setPad(int length, const char* symbol) {
    m_pad = IntSymbol(length, Symbol(fromUtf8(symbol)));
}

bool CounterStyle::checkRange(long long value) const noexcept {
    if (m_range) {
        for (const auto& pair : *m_range)
            if (pair.first <= value && value <= pair.second)
                return true;
        return false;
    }
    if (m_system == ZKN_alphabetic || m_system == ZKN_symbolic)
        return value >= 1;
    if (m_system == ZKN_additive)
        return value >= 0;
    return true;
}

// Appends the symbols of `indices` from the last to the first: through one buffer when every
// symbol is one unit.
void CounterStyle::appendByIndex(const size_t* indices, int count, UnicodeString& text) const {
    if (!m_symbolUnits.empty()) {
        char16_t buffer[64];
        for (int i = 0; i < count; ++i)
            buffer[i] = m_symbolUnits[indices[count - 1 - i]];
        text.append(buffer, 0, count);
        return;
    }
    while (count > 0)
        text.append((*m_symbols)[indices[--count]]);
}

// The text of the system alone; false sends the value to the fallback.
bool CounterStyle::formatSystem(long long value, UnicodeString& text, bool& negative) const {
    const std::vector<Symbol>* symbols = m_symbols.get();
    long long n = symbols ? static_cast<long long>(symbols->size()) : 0;
    unsigned long long magnitude = value < 0 ? 0ULL - static_cast<unsigned long long>(value)
                                             : static_cast<unsigned long long>(value);
    negative = false;
    ZkNameEnum system = m_system.getEnum();

    if (system == ZKN_additive) {
        const std::vector<IntSymbol>* additive = m_additiveSymbols.get();
        if (!additive || additive->empty())
            return false;
        if (magnitude == 0) {
            if (additive->back().getWeight() != 0)
                return false;
            text = additive->back().getSymbol();
            return true;
        }
        for (const IntSymbol& entry : *additive) {
            if (entry.getWeight() <= 0 || magnitude < static_cast<unsigned>(entry.getWeight()))
                continue;
            unsigned long long weight = static_cast<unsigned>(entry.getWeight());
            unsigned long long count = magnitude / weight;
            int length = entry.getSymbol().length();
            if (length > 0 &&
                (count >= kMaxMarkerLength ||
                 text.length() + static_cast<long long>(count) * length >= kMaxMarkerLength))
                return false;
            for (unsigned long long i = 0; length > 0 && i < count; ++i)
                text.append(entry.getSymbol());
            magnitude -= count * weight;
        }
        if (magnitude != 0)
            return false;
        negative = value < 0;
        return true;
    }
    if (system == ZKN_cyclic) {
        if (n < 1)
            return false;
        long long index = (value % n - 1 + n) % n;
        text = (*symbols)[static_cast<size_t>(index)];
        return true;
    }
    if (system == ZKN_symbolic) {
        if (n < 1 || value < 1)
            return false;
        const Symbol& symbol = (*symbols)[static_cast<size_t>((value - 1) % n)];
        long long count = (value - 1) / n + 1;
        if (!symbol.isEmpty() &&
            (count >= kMaxMarkerLength || count * symbol.length() >= kMaxMarkerLength))
            return false;
        for (long long i = 0; !symbol.isEmpty() && i < count; ++i)
            text.append(symbol);
        return true;
    }
    if (system == ZKN_alphabetic) {
        if (n < 2 || value < 1)
            return false;
        size_t indices[64];
        int count = 0;
        for (unsigned long long a = magnitude; a > 0; a /= static_cast<unsigned long long>(n)) {
            --a;
            indices[count++] = static_cast<size_t>(a % static_cast<unsigned long long>(n));
        }
        appendByIndex(indices, count, text);
        return true;
    }
    if (system == ZKN_fixed) {
        if (n < 1 || value < m_first)
            return false;
        unsigned long long index =
            static_cast<unsigned long long>(value) - static_cast<unsigned long long>(m_first);
        if (index >= static_cast<unsigned long long>(n))
            return false;
        text = (*symbols)[static_cast<size_t>(index)];
        return true;
    }
    if (system == ZKN_numeric) {
        if (n < 2)
            return false;
        size_t indices[64];
        int count = 0;
        unsigned long long base = static_cast<unsigned long long>(n);
        do {
            indices[count++] = static_cast<size_t>(magnitude % base);
            magnitude /= base;
        } while (magnitude != 0);
        appendByIndex(indices, count, text);
        negative = value < 0;
        return true;
    }
    if (system == ZKN_ethiopic_numeric) {
        return value >= 1 && detail::appendEthiopicNumeral(magnitude, text);
    }
    if (isChineseSystem(m_system)) {
        if (n < 13 && magnitude != 0)
            return false;
        if (magnitude == 0) {
            if (n < 1)
                return false;
            text = (*symbols)[0];
            return true;
        }
        bool informal = system == ZKN_simp_chinese_informal || system == ZKN_trad_chinese_informal;
        bool teen = magnitude >= 10 && magnitude <= 19;
        // Built from the ones upwards as pieces, then written in reverse.
        const UnicodeString* pieces[64];
        int count = 0;
        int previousDigit = -1;
        int place = 0;
        for (unsigned long long a = magnitude; a != 0; a /= 10, ++place) {
            int digit = static_cast<int>(a % 10);
            if (digit != 0 && place > 0) {
                if (place + 9 >= n)
                    return false; // no marker for this place
                pieces[count++] = &(*symbols)[static_cast<size_t>(place + 9)];
            }
            bool skip = (digit == 0 && count == 0) || (digit == 0 && previousDigit == 0) ||
                        (informal && teen && place == 1);
            if (!skip)
                pieces[count++] = &(*symbols)[static_cast<size_t>(digit)];
            previousDigit = digit;
        }
        while (count > 0)
            text.append(*pieces[--count]);
        negative = value < 0;
        return true;
    }
    if (system == ZKN_kansuji) {
        detail::KansujiParams params;
        params.style = n == 22   ? detail::KansujiParams::kGrouping
                       : n == 25 ? detail::KansujiParams::kReadable
                                 : detail::KansujiParams::kSimple;
        // The symbols replace the defaults in place; an empty symbol keeps the default.
        auto take = [&](long long index, UChar32& slot) {
            if (index < n && !(*symbols)[static_cast<size_t>(index)].isEmpty())
                slot = (*symbols)[static_cast<size_t>(index)].char32At(0);
        };
        for (int i = 0; i < 10; ++i)
            take(i, params.digits[i]);
        if (n == 22) {
            for (int i = 0; i < 12; ++i)
                take(10 + i, params.marks[detail::KansujiParams::kFirstGroupWord + i]);
        } else if (n == 25) {
            for (int i = 0; i < 3; ++i)
                take(10 + i, params.marks[detail::KansujiParams::kTen + i]);
            for (int i = 0; i < 12; ++i)
                take(13 + i, params.marks[detail::KansujiParams::kFirstGroupWord + i]);
        }
        char buffer[24];
        int length = 0;
        do {
            buffer[length++] = static_cast<char>('0' + magnitude % 10);
            magnitude /= 10;
        } while (magnitude != 0);
        UnicodeString digits;
        while (length > 0)
            digits.append(static_cast<char16_t>(buffer[--length]));
        detail::appendKansuji(digits, params, text);
        negative = value < 0;
        return true;
    }
    return false; // an unknown system writes nothing of its own
}

UnicodeString CounterStyle::formatNumber(long long value, Lookup lookup, void* lookupData,
                                         bool plain) const {
    if (value == 0 && !m_zero.isEmpty())
        return finishString(m_zero, false, plain);
    if (!checkRange(value))
        return formatFallback(value, lookup, lookupData, plain);
    UnicodeString text;
    bool negative = false;
    if (!formatSystem(value, text, negative) || text.length() >= kMaxMarkerLength)
        return formatFallback(value, lookup, lookupData, plain);
    finishInPlace(text, negative, plain);
    return text;
}

UnicodeString CounterStyle::finishString(const UnicodeString& text, bool negative,
                                         bool plain) const {
    UnicodeString result(text);
    finishInPlace(result, negative, plain);
    return result;
}

void CounterStyle::finishInPlace(UnicodeString& text, bool negative, bool plain) const {
    const Symbol& padSymbol = m_pad.getSymbol();
    if (m_pad.getWeight() > 0 && !padSymbol.isEmpty()) {
        int missing = m_pad.getWeight() - codePointLength(text);
        if (missing > 0) {
            int padLength = codePointLength(padSymbol);
            int times = (missing + padLength - 1) / padLength;
            // Padding stops short of the marker limit: a pad length from a style sheet must
            // not make the library build a huge string.
            int room = (kMaxMarkerLength - text.length()) / padSymbol.length();
            if (times > room)
                times = room > 0 ? room : 0;
            UnicodeString pad;
            for (int i = 0; i < times; ++i)
                pad.append(padSymbol);
            text.insert(0, pad);
        }
    }
    if (negative) {
        text.insert(0, m_negative.first);
        text.append(m_negative.second);
    }
    if (!plain) {
        text.insert(0, m_prefix);
        text.append(m_suffix);
    }
}

UnicodeString CounterStyle::formatFallback(long long value, Lookup lookup, void* lookupData,
                                           bool plain) const {
    // This style joins the thread's chain; once the chain is full, decimal ends it.
    bool pushed = t_fallbackDepth < kMaxFallbackDepth;
    if (pushed)
        t_fallbackChain[t_fallbackDepth++] = this;
    struct Pop {
        bool active;
        ~Pop() {
            if (active)
                --t_fallbackDepth;
        }
    } pop{pushed};

    const CounterStyle* style = nullptr;
    if (pushed && lookup) {
        const CounterStyle* found = lookup(m_fallback, lookupData);
        if (found && !isInFallback(found))
            style = found;
    }
    // The caller's rules do not hold the predefined styles; a fallback to one of them is
    // served here.
    if (pushed && !style) {
        const CounterStyle* predefined = getPredefinedCounterStyle(m_fallback, nullptr);
        if (predefined && !isInFallback(predefined))
            style = predefined;
    }
    UnicodeString text;
    if (style) {
        text = style->formatNumber(value, lookup, lookupData, /*plain=*/true);
    } else {
        const CounterStyle* decimal = getPredefinedCounterStyle(ZKN_decimal, nullptr);
        bool negative = false;
        decimal->formatSystem(value, text, negative);
        decimal->finishInPlace(text, negative, /*plain=*/true);
    }
    if (!plain) {
        text.insert(0, m_prefix);
        text.append(m_suffix);
    }
    return text;
}

} // namespace ZkCommonNS
