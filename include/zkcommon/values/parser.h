// ZkParser: the static operations that type the text of an attribute or a CSS value: one value or
// a list, the compound form that ZkValue::toString() prints, colour functions, name="value"
// attribute strings and the small languages of link targets.
#ifndef ZKCOMMON_VALUES_PARSER_H
#define ZKCOMMON_VALUES_PARSER_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/values/tokenizer.h"
#include "zkcommon/values/value.h"

#include <map>

namespace ZkCommonNS {

/// Static operations only. None of them throws: text that is not what was asked for comes back
/// as a String of unit 0 holding the text, or as Null where the operation says so.
class ZKCOMMON_API ZkParser {
public:
    ZkParser() = delete;

    /// Bits of the `flags` of parse.
    enum : int {
        NoNumber = 1,    ///< a number is not a value
        NoHashColor = 2, ///< a hash colour is not a value
        List = 4,        ///< the text is a blank-separated list
        Compound = 8,    ///< a "{" opens a compound
        InCompound = 16  ///< ";" and "}" end the value
    };

    /// parse(text, 0, type).
    static ZkValue parse(const UnicodeString& text,
                         ZkTokenizer::TokenizerType type = ZkTokenizer::TokenizerDefault);
    /// One token (or, with List, a list of values) by the flags; anything else, and the empty
    /// text, gives a String of unit 0 holding the text.
    static ZkValue parse(const UnicodeString& text, int flags,
                         ZkTokenizer::TokenizerType type = ZkTokenizer::TokenizerDefault);
    /// parse(text, List | Compound, type): the inverse of ZkValue::toString().
    static ZkValue parseCompound(const UnicodeString& text,
                                 ZkTokenizer::TokenizerType type = ZkTokenizer::TokenizerDefault);
    /// parse(text, NoNumber | NoHashColor, type).
    static ZkValue parseNonNumeric(const UnicodeString& text,
                                   ZkTokenizer::TokenizerType type = ZkTokenizer::TokenizerDefault);

    /// A colour (a hash colour, a colour function, a name left unresolved, or a string or number
    /// as it stands) read from the tokenizer's position; Null on failure, the tokenizer then
    /// behind the token that failed.
    static ZkValue parseColor(ZkTokenizer& tokenizer, bool allowIcc);
    /// The colour of the whole text; on failure, or with text left over, a String of unit 0
    /// holding the text, `*clamped` untouched. `*clamped` tells whether a component was out of
    /// range.
    static ZkValue parseColor(const UnicodeString& text, bool allowIcc, bool* clamped = nullptr);

    /// Bits of the `flags` of parseAttributes.
    enum : int {
        AttributesLenient = 1,   ///< step over what does not fit
        AttributesRepeatable = 2 ///< a repeated name is allowed; the first value stays
    };
    /// Reads name="value" pairs into `out` (cleared first). Without AttributesLenient a missing
    /// name, "=", quote or closing quote, and without AttributesRepeatable a repeated name, clear
    /// `out` and give false.
    static bool parseAttributes(const UnicodeString& text, std::map<ZkName, UnicodeString>& out,
                                int flags = 0);

    /// A PDF destination type ("fit", "xyz-top 150% ...", a zoom figure): a name or a compound.
    /// Anything unknown gives the name xyz-top.
    static ZkValue parseDestinationType(const UnicodeString& text);
    /// A page number or a named destination, with open parameters behind a "#".
    static ZkValue parseInternalDestination(const UnicodeString& text, int defaultPage);
    /// uri, page, last-page, view, zoom, nameddest ... of "file.pdf#page=3&zoom=50"; Null for a
    /// text starting with "#", and with `internal` for a text without a page.
    static ZkValue parsePDFOpenParameters(const UnicodeString& text, bool internal);
    /// sheet and chart of "book.xlsx#sheet=2&chart=1"; Null when nothing is set.
    static ZkValue parseExcelOpenParameters(const UnicodeString& text);
    /// The key=value pairs behind "#" as a compound whose unnamed item is the part before it; a
    /// text without "#" gives a String.
    static ZkValue parseUriFragmentParameters(const UnicodeString& text, bool lowerKeys);
    /// uri and nameddest or open parameters of an xlink:href; Null for the empty text.
    static ZkValue parseXlinkHref(const UnicodeString& text);
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_PARSER_H
