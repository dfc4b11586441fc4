// ZkUtil::CounterStyle: a list-marker style of the CSS counter style model, filled by
// @counter-style rules or taken from the predefined styles.
#ifndef ZKCOMMON_TEXT_COUNTERSTYLE_H
#define ZKCOMMON_TEXT_COUNTERSTYLE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/text/util.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZkCommonNS {

/// A system (cyclic, fixed, numeric, alphabetic, symbolic, additive, ethiopic-numeric, the
/// four Chinese systems, kansuji), its symbols and affixes. Formatting changes nothing: the
/// guard against fallback cycles is kept per thread, so one style (a predefined one above all)
/// may format on several threads at once; changing a style needs the caller's own lock.
class ZKCOMMON_API ZkUtil::CounterStyle {
public:
    /// A marker symbol: a text, or the URL of an image.
    class ZKCOMMON_API Symbol : public UnicodeString {
    public:
        Symbol() = default;
        Symbol(const UnicodeString& text, bool isUrl = false) : UnicodeString(text), m_url(isUrl) {}
        /// One code point; an invalid one gives the empty symbol.
        explicit Symbol(int codePoint);
        bool isUrl() const noexcept { return m_url; }
        bool operator==(const Symbol& other) const {
            return m_url == other.m_url && UnicodeString::operator==(other);
        }
        bool operator!=(const Symbol& other) const { return !(*this == other); }
        /// By text, then text before URL.
        bool operator<(const Symbol& other) const;

    private:
        bool m_url = false;
    };

    /// A weight with its symbol: an additive symbol, or a pad length with the padding symbol.
    class ZKCOMMON_API IntSymbol {
    public:
        IntSymbol() = default;
        IntSymbol(int weight, const Symbol& symbol) : m_weight(weight), m_symbol(symbol) {}
        int getWeight() const noexcept { return m_weight; }
        const Symbol& getSymbol() const noexcept { return m_symbol; }
        bool operator==(const IntSymbol& other) const {
            return m_weight == other.m_weight && m_symbol == other.m_symbol;
        }
        bool operator!=(const IntSymbol& other) const { return !(*this == other); }
        /// By weight only.
        bool operator<(const IntSymbol& other) const { return m_weight < other.m_weight; }

    private:
        int m_weight = 0;
        Symbol m_symbol;
    };

    using Range = std::vector<std::pair<long long, long long>>;
    /// The caller's table of @counter-style rules: the style of a name, or null.
    using Lookup = const CounterStyle* (*)(ZkName name, void* data);

    explicit CounterStyle(ZkName system);
    CounterStyle(const CounterStyle& other);
    CounterStyle& operator=(const CounterStyle& other);
    ~CounterStyle();
    /// A total order over every field, so that styles can sit in ordered containers.
    bool operator<(const CounterStyle& other) const;

    void setSystem(ZkName system) { m_system = system; }
    ZkName getSystem() const noexcept { return m_system; }
    /// The value of the first symbol of a fixed system.
    void setFirst(int first) { m_first = first; }
    int getFirst() const noexcept { return m_first; }
    void setFallback(ZkName fallback) { m_fallback = fallback; }
    ZkName getFallback() const noexcept { return m_fallback; }
    /// Null until a symbol is added.
    const std::vector<Symbol>* getSymbols() const noexcept { return m_symbols.get(); }
    /// Null until an additive symbol is added; in the order they were added.
    const std::vector<IntSymbol>* getAdditiveSymbols() const noexcept {
        return m_additiveSymbols.get();
    }
    /// Before and after the number.
    const std::pair<Symbol, Symbol>& getNegative() const noexcept { return m_negative; }
    const IntSymbol& getPad() const noexcept { return m_pad; }
    const Symbol& getPrefix() const noexcept { return m_prefix; }
    const Symbol& getSuffix() const noexcept { return m_suffix; }
    const Symbol& getZero() const noexcept { return m_zero; }
    /// Null for the auto range.
    const Range* getRange() const noexcept { return m_range.get(); }
    bool isPredefined() const noexcept { return m_predefined; }

    void addSymbol(const Symbol& symbol);
    void addSymbol(int codePoint) { addSymbol(Symbol(codePoint)); }
    /// Code points up to a terminating 0.
    void addSymbols(int codePoint, ...);
    /// Symbols up to an optional terminating 0.
    template <typename... Rest> void addSymbols(const Symbol& first, const Rest&... rest) {
        addSymbol(first);
        addMoreSymbols(rest...);
    }
    /// Each character of an ASCII (or UTF-8) string is one symbol.
    void addSymbols(const char* characters);
    void addAdditiveSymbol(const IntSymbol& symbol);
    void addAdditiveSymbol(int weight, const Symbol& symbol) {
        addAdditiveSymbol(IntSymbol(weight, symbol));
    }
    void addAdditiveSymbol(int weight, int codePoint) {
        addAdditiveSymbol(IntSymbol(weight, Symbol(codePoint)));
    }
    void addAdditiveSymbol(int weight, const char* text);
    void clrSymbols() {
        m_symbols.reset();
        m_symbolUnits.clear();
    }
    void clrAdditiveSymbols() { m_additiveSymbols.reset(); }
    /// A low above its high is kept and matches nothing.
    void addRange(long long low, long long high);
    void clrRange() { m_range.reset(); }

    void setPrefix(const Symbol& prefix) { m_prefix = prefix; }
    void setPrefix(int codePoint) { m_prefix = Symbol(codePoint); }
    void setPrefix(const char* text);
    void setSuffix(const Symbol& suffix) { m_suffix = suffix; }
    void setSuffix(int codePoint) { m_suffix = Symbol(codePoint); }
    void setSuffix(const char* text);
    void setZero(const Symbol& zero) { m_zero = zero; }
    void setZero(int codePoint) { m_zero = Symbol(codePoint); }
    void setZero(const char* text);
    void setNegative(const Symbol& before, const Symbol& after) { m_negative = {before, after}; }
    void setNegative(const char* before, const char* after);
    void setPad(const IntSymbol& pad) { m_pad = pad; }
    void setPad(int length, const Symbol& symbol) { m_pad = IntSymbol(length, symbol); }
    void setPad(int length, const char* symbol);
    /// Marks a style as one of the predefined ones.
    void setPredefined(bool predefined) { m_predefined = predefined; }

    /// Whether `value` lies in the style's range: an explicit range, or the system's own
    /// (alphabetic and symbolic from 1, additive from 0, others everything).
    bool checkRange(long long value) const noexcept;
    /// The marker text of `value`. A value the system cannot write, one out of range, or a
    /// result of 1000 UTF-16 units or more goes to the fallback style: `lookup` is asked
    /// first, then the predefined styles; a fallback cycle ends in decimal. The fallback keeps
    /// this style's prefix and suffix. With `plain` the prefix and suffix are left out.
    UnicodeString formatNumber(long long value, Lookup lookup, void* lookupData, bool plain) const;
    UnicodeString formatNumber(long long value) const {
        return formatNumber(value, nullptr, nullptr, false);
    }
    /// Pads `text`, puts the negative symbols around it when `negative`, and unless `plain`
    /// the prefix and suffix.
    UnicodeString finishString(const UnicodeString& text, bool negative, bool plain) const;

private:
    void addMoreSymbols() {}
    template <typename... Rest> void addMoreSymbols(int terminator, const Rest&...) {
        (void)terminator; // a 0 ends the list, as with the code point form
    }
    template <typename... Rest> void addMoreSymbols(const Symbol& next, const Rest&... rest) {
        addSymbol(next);
        addMoreSymbols(rest...);
    }
    UnicodeString formatFallback(long long value, Lookup lookup, void* lookupData,
                                 bool plain) const;
    void finishInPlace(UnicodeString& text, bool negative, bool plain) const;
    bool formatSystem(long long value, UnicodeString& text, bool& negative) const;
    void appendByIndex(const size_t* indices, int count, UnicodeString& text) const;

    ZkName m_system;
    int m_first = 1;
    std::unique_ptr<std::vector<Symbol>> m_symbols;
    std::unique_ptr<std::vector<IntSymbol>> m_additiveSymbols;
    std::pair<Symbol, Symbol> m_negative;
    Symbol m_zero;
    Symbol m_prefix;
    Symbol m_suffix;
    std::unique_ptr<Range> m_range;
    IntSymbol m_pad;
    bool m_predefined = false;
    ZkName m_fallback;
    // The symbols as one string while every symbol is one UTF-16 unit (empty otherwise), so
    // the positional systems write a whole number at once.
    std::u16string m_symbolUnits;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_TEXT_COUNTERSTYLE_H
