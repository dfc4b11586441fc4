// The state of ZkXmlParserImpl: the layered character reader, the event engine and the tag and
// content scanner. The reader is in xmlreader.cpp, the decoders in xmldecoders.cpp, the events
// and getters in xmlevents.cpp and xmlparser.cpp, tags in xmltags.cpp, values and references in
// xmlreferences.cpp, content in xmlcontent.cpp and the message table in xmlmessages.cpp.
#ifndef ZKCOMMON_SRC_XML_XMLSCANNER_H
#define ZKCOMMON_SRC_XML_XMLSCANNER_H

#include "zkcommon/core/error.h"
#include "zkcommon/core/name.h"
#include "zkcommon/xml/xmlparser.h"

#include <cstdint>
#include <cstring>
#include <deque>
#include <istream>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ZkCommonNS {
namespace detail {

/// The end-of-input sentinel of every reading level.
constexpr UChar32 kEof = 0xFFFF;
/// Follows the replacement text of an entity pushed back into the input; the reader drops it
/// and closes the entity's expansion.
constexpr char16_t kExpansionEnd = 0xFFFE;

/// Classes of the ASCII units for the scanner's loops.
enum AsciiClass : uint16_t {
    kNameStart = 1,
    kNameChar = 2,
    kStopText = 4,      ///< "<", "&", "]"
    kStopCData = 8,     ///< "]"
    kStopComment = 16,  ///< "-"
    kStopPI = 32,       ///< "?"
    kStopValue = 64,    ///< "<", "&"
    kControl = 128,     ///< below U+0020
    kQuoteDouble = 256, ///< U+0022
    kQuoteSingle = 512, ///< U+0027
    kStopRawText = 1024 ///< "<" alone: the text of `script` and `style` in HTML
};
extern const uint16_t kAsciiClass[128];

/// The qualified name as text.
UnicodeString qualifiedName(ZkName prefix, ZkName local);

/// What the classifier saw ahead; 0 to 2 are not classes (see XmlScanner::m_peek).
enum PeekKind : int {
    PEEK_NONE = 0,
    PEEK_COMPOSING = 1,
    PEEK_EMPTY_TAG = 2,
    PEEK_START_TAG = 3,
    PEEK_END_TAG = 4,
    PEEK_TEXT = 5,
    PEEK_REFERENCE = 6,
    PEEK_PI = 7,
    PEEK_BANG = 8,
    PEEK_EOF = 9
};

/// Literal modes of readLiteral.
enum LiteralMode : int {
    LITERAL_PLAIN = 0,     ///< declaration values, public and system identifiers
    LITERAL_ATTRIBUTE = 1, ///< attribute values: references expanded
    LITERAL_ENTITY = 2,    ///< entity values: character references expanded
    LITERAL_HTML_NAME = 3, ///< an HTML attribute name without quotes
    LITERAL_VERBATIM = 4   ///< quotes kept on the result
};

/// The built-in character entity sets.
enum EntitySet : int { kEntitySetMathML = 0, kEntitySetXhtml = 1, kEntitySetHtml = 2 };

/// A copy of a parser's entity tables, made by saveEntityMaps.
struct EntityMapSnapshot {
    std::unordered_map<int32_t, UnicodeString> general;
    std::unordered_map<int32_t, UnicodeString> parameter;
    std::unordered_map<int32_t, UnicodeString> generalExternal;
    std::unordered_map<int32_t, UnicodeString> parameterExternal;
    bool mathmlLoaded = false;
};

/// Decodes `length` bytes at `source` into UTF-16 at `target` (room for `capacity` units, at
/// least 2). Stops before an incomplete sequence unless `atEnd`, and after `maxChars` code
/// points. Returns the units written; `consumed` gets the bytes used.
using Decoder = int32_t (*)(const uint8_t* source, int32_t length, bool atEnd, char16_t* target,
                            int32_t capacity, int32_t maxChars, int32_t& consumed);
/// The decoder of a built-in encoding name; the byte decoder for any other.
Decoder getDecoder(ZkNameEnum encoding);

/// A stream that gives `bytes` first and then what `rest` gives.
std::unique_ptr<std::istream> makePrefixedStream(std::string bytes, std::streambuf* rest);

/// One input: the stream and everything read ahead of the scanner. Saved whole as an input
/// frame when another input is pushed in front of it.
struct InputState {
    std::istream* stream = nullptr;     ///< current stream, may be `conversion`
    std::istream* underlying = nullptr; ///< the stream as opened or given
    /// Bytes read ahead and handed back in front of `underlying`, when a conversion stream
    /// starts in mid-stream; `conversion` reads through it.
    std::unique_ptr<std::istream> prefixed;
    std::unique_ptr<std::istream> conversion; ///< a decoding stream over `underlying`
    bool ownsUnderlying = false;
    bool stringFrame = false;
    bool atEnd = false;  ///< the stream reported its end
    bool careful = true; ///< decode one character per read while the encoding may change
    bool bomSeen = false;
    bool rootSeenHere = false;
    ZkNameEnum encodingId = ZKN_EMPTY;
    UnicodeString encodingName;
    Decoder decoder = nullptr;
    ZkName parserType;
    ZkName effectiveType;
    UnicodeString inputUri;
    UnicodeString baseUri;
    int baseDepth = 0;
    int line = -1;
    int column = -1;
    /// Decoded UTF-16 read ahead; [pos, end) is unread. Units before `rawLimit` were pushed
    /// back: they are read again without line-end handling, checks or counting.
    std::unique_ptr<char16_t[]> chars;
    int32_t charCapacity = 0;
    int32_t pos = 0;
    int32_t end = 0;
    int32_t rawLimit = 0;
    /// Bytes read from the stream and not yet decoded.
    std::unique_ptr<uint8_t[]> bytes;
    int32_t byteCapacity = 0;
    /// The bytes the last decoded block came from, and the units it gave: the block is the
    /// last `blockUnits` units before `end`.
    std::string blockBytes;
    int32_t blockUnits = 0;
    int32_t bytePos = 0;
    int32_t byteEnd = 0;
};

struct Attribute {
    ZkName prefix;
    ZkName local;
    ZkName ns;
    UnicodeString value;
    /// A value read in one piece stays where it was decoded, [viewStart, viewStart +
    /// viewLength) of the read buffer, until the buffer moves; -1 when `value` holds it.
    int32_t viewStart = -1;
    int32_t viewLength = 0;
};

struct OpenElement {
    ZkName prefix;
    ZkName local;
    ZkName ns;
    int32_t bindingStart; ///< first namespace binding made by this element
    /// Name cache slots of the names as the start tag gave them, for the end tag; -1 unknown.
    int32_t prefixSlot = -1;
    int32_t localSlot = -1;
    bool counted = false; ///< counted in XmlScanner::m_openCounts (HTML)
};

struct NsBinding {
    ZkName prefix;
    ZkName uri;
    int32_t previous; ///< the binding of the same prefix that this one hides, or -1
};

/// Interns names read from the buffer without building a string for names seen before.
class NameCache {
public:
    /// A name seen before costs two loads of its ends, one slot probe and a compare, with no
    /// call out of line.
    ZkName intern(const char16_t* text, int32_t length) {
        if (length > 0 && length <= kMaxLength && m_slots) {
            uint64_t head;
            uint64_t tail;
            ends(text, length, head, tail);
            size_t index = slotOf(head, tail);
            const Slot& slot = m_slots[index];
            if (slot.head == head && slot.tail == tail && slot.length == length &&
                (length <= 8 || sameMiddle(slot.text, text, length))) {
                m_lastSlot = int32_t(index);
                return ZkName(slot.name);
            }
        }
        return internSlow(text, length);
    }
    /// The slot of the name the last intern gave, -1 when it is not kept.
    int32_t lastSlot() const { return m_lastSlot; }
    /// The length of the name in slot `index` when the `available` units at `text` begin
    /// with it, else 0. What follows the name is the caller's to check.
    int32_t matchSlot(int32_t index, const char16_t* text, int32_t available) const {
        const Slot& slot = m_slots[size_t(index)];
        int32_t length = slot.length;
        if (!slot.plain || length > available)
            return 0;
        uint64_t head;
        uint64_t tail;
        ends(text, length, head, tail);
        return slot.head == head && slot.tail == tail &&
                       (length <= 8 || sameMiddle(slot.text, text, length))
                   ? length
                   : 0;
    }
    ZkName slotName(int32_t index) const { return ZkName(m_slots[size_t(index)].name); }

private:
    static constexpr int kSlotBits = 10;
    static constexpr int kMaxLength = 32;
    struct Slot {
        uint64_t head = 0;
        uint64_t tail = 0;
        int32_t length = -1;
        ZkNameEnum name = ZKN_EMPTY;
        bool plain = false; ///< a name of ASCII name characters, which matchSlot may find
        char16_t text[kMaxLength];
    };
    /// The first and the last four units of a name of 1 to kMaxLength units, overlapping
    /// when it is shorter than eight; a name under four units fills both alike. A name of up
    /// to eight units is all in them.
    static void ends(const char16_t* text, int32_t length, uint64_t& head, uint64_t& tail) {
        if (length >= 4) {
            memcpy(&head, text, 8);
            memcpy(&tail, text + length - 4, 8);
            return;
        }
        head = text[0];
        if (length > 1)
            head |= uint64_t(text[1]) << 16;
        if (length > 2)
            head |= uint64_t(text[2]) << 32;
        tail = head;
    }
    static size_t slotOf(uint64_t head, uint64_t tail) {
        return size_t((head * 0x9E3779B97F4A7C15ull ^ tail * 0xC2B2AE3D27D4EB4Full) >>
                      (64 - kSlotBits));
    }
    /// Equal units between the ends of two names of `length` units, 9 to kMaxLength, four at
    /// a time; the last four may run into the tail, which is equal already.
    static bool sameMiddle(const char16_t* a, const char16_t* b, int32_t length) {
        for (int32_t i = 4; i < length - 4; i += 4) {
            uint64_t x;
            uint64_t y;
            memcpy(&x, a + i, 8);
            memcpy(&y, b + i, 8);
            if (x != y)
                return false;
        }
        return true;
    }
    ZkName internSlow(const char16_t* text, int32_t length);
    std::unique_ptr<Slot[]> m_slots;
    int32_t m_lastSlot = -1;
};

class XmlScanner {
public:
    XmlScanner(ZkXmlParserImpl& owner, const ZkUri::ContentInfo* info);
    ~XmlScanner();

    // ---- input (xmlreader.cpp)
    void reset();
    void closeStream();
    void openUri(ZkUri& uri, const UnicodeString& encoding, const UnicodeString& baseUri);
    void openStream(std::istream& in, const UnicodeString& encoding, const UnicodeString& baseUri);
    void probe();
    void rewind();
    void pushStream(const UnicodeString& uri, ZkName parserType, const UnicodeString& encoding);
    bool popFrame();
    /// Sniffs signature and first bytes; `force` says the stream is text.
    void sniff(bool force);
    void changeEncoding(const UnicodeString& name);
    void setDecoder(ZkNameEnum id, const UnicodeString& name);
    /// Decodes more input into the buffer; false at the end of the stream.
    bool fill();
    int32_t readBytes(uint8_t* target, int32_t capacity);
    UChar32 readCharSlow();
    UChar32 readChar() {
        InputState& in = m_in;
        if (in.pos < in.end && in.pos >= in.rawLimit) {
            char16_t c = in.chars[in.pos];
            if (c >= 0x20 && c < m_fastLimit) {
                ++in.pos;
                ++in.column;
                return c;
            }
        }
        return readCharSlow();
    }
    /// Puts characters back in front of the input; they are read again as they stand.
    void pushBack(UChar32 c);
    void pushBackText(const UnicodeString& text);
    void pushBackText(const char16_t* text, int32_t length);
    /// Guarantees `count` unread units in the buffer unless the input ends first.
    bool ensure(int32_t count);
    UChar32 validate(UChar32 c);
    bool isXml11() const { return m_xml11; }
    void setXml11(bool xml11);

    // ---- events (xmlevents.cpp)
    int nextToken();
    int next();
    /// The one character a replacement text gives when read back, where that needs no
    /// scanning; -1 for any other text.
    static UChar32 plainReplacement(const UnicodeString& text);
    void startDocument();
    void endDocument();
    void dispatch(int kind);
    UnicodeString positionDescription() const;
    void report(unsigned short code, const UnicodeString& arg1, const UnicodeString& arg2);
    const UnicodeString& text() const;
    /// Appends under the huge-text gate; false when the text is over the limit and was dropped.
    bool appendText(const char16_t* text, int32_t length);
    bool appendChar(UChar32 c);
    void checkTextLimit(int32_t adding);
    // ---- HTML syntax (xmlhtml.cpp)
    /// The syntax judgments, made afresh from the hints until they settle.
    bool isHtml() const {
        if (m_settledType == ZKN_html)
            return true;
        if (m_settledType == ZKN_xhtml)
            return false;
        return m_htmlGuess >= 0 ? m_htmlGuess != 0 : judgeHtml();
    }
    bool isXhtml() const {
        if (m_settledType == ZKN_xhtml)
            return true;
        if (m_settledType == ZKN_html)
            return false;
        return m_xhtmlGuess >= 0 ? m_xhtmlGuess != 0 : judgeXhtml();
    }
    bool judgeHtml() const;
    bool judgeXhtml() const;
    /// A hint changed: the unsettled judgments are made again.
    void hintsChanged() { m_htmlGuess = m_xhtmlGuess = -1; }
    /// `script` or `style` open in HTML: "<" and "&" are data up to the element's end tag.
    bool inRawText() const;
    /// After "<" in raw text: whether "/" and the open element's name and ">" follow.
    bool rawTextEndFollows();
    /// At an HTML start tag with no prefix (folded): a tag ended or implied before it; true
    /// when an event was made and the tag is met again.
    bool impliedBeforeStartTag(ZkName local);
    /// At an HTML end tag that is not the open element's; true when an event was made.
    bool recoverEndTag(ZkName prefix, ZkName local);
    /// Opens an element no tag stands for, in the XHTML namespace, as a START_TAG.
    void openImplied(ZkName local);
    void countOpen(OpenElement& element);
    /// After an HTML start tag: `meta` and void elements.
    void finishHtmlStartTag();
    void applyMeta();
    /// Applies an encoding from a `meta` or the default charset to the rest of the input.
    void switchEncoding(const UnicodeString& name);
    /// Before the first event: a `meta` charset near the start of a document that looks like
    /// HTML chooses the decoder for the whole input.
    void prescanMeta();
    /// Text pushed back for an implied `html` or `body`; true when an element was implied.
    bool impliedByText(int32_t start);

    // ---- tags (xmltags.cpp)
    int classify();
    /// The next unit when it can be read in place (no pushback, no check); else -1.
    int peekUnit() const {
        const InputState& in = m_in;
        if (in.pos < in.end && in.pos >= in.rawLimit) {
            char16_t c = in.chars[in.pos];
            if (c >= 0x20 && c < m_fastLimit)
                return c;
        }
        return -1;
    }
    UChar32 peekChar();
    /// Whether the unread unit is a line end or tab that can stay in place for the text scan:
    /// reading it first would only push it back, and the text would go the slow way.
    bool startsLineText() const {
        const InputState& in = m_in;
        if (in.pos < in.end && in.pos >= in.rawLimit && !m_recording) {
            char16_t c = in.chars[in.pos];
            return c == 0x0A || c == 0x09 || c == 0x0D;
        }
        return false;
    }
    /// Reads a name; with `fold`, ASCII capitals are folded to lower case.
    ZkName readName(bool fold = false);
    ZkName readNameSlow(bool fold);
    /// Interns the names of prefix:local, `length` units at `text` with the local part at
    /// `localStart` (0 without a prefix).
    void internQName(const char16_t* text, int32_t localStart, int32_t length, ZkName& prefix,
                     ZkName& local);
    /// Reads prefix:local; false with nothing read.
    bool readQName(ZkName& prefix, ZkName& local, bool& colonWithoutLocal, bool fold = false);
    /// True when white space was skipped.
    bool skipWhitespace();
    void scanStartTag();
    void scanAttributes();
    /// The common shape name="value" or prefix:name="value" in place: reads the names, "="
    /// and the quote, and returns the quote; 0 with nothing read when anything else stands
    /// there or the input needs the slow reader.
    char16_t readAttributeHead(ZkName& prefix, ZkName& local, int32_t* predicted);
    /// Any other attribute, step by step with every report; false when none was kept.
    bool scanAttributeSlow(UChar32 c, bool html, ZkName& prefix, ZkName& local);
    /// The record of the next attribute, cleared, with its names.
    Attribute& newAttribute(ZkName prefix, ZkName local) {
        if (m_attributeCount == int(m_attributes.size()))
            m_attributes.emplace_back();
        Attribute& attribute = m_attributes[size_t(m_attributeCount)];
        attribute.prefix = prefix;
        attribute.local = local;
        attribute.ns = ZkName();
        attribute.value.remove();
        attribute.viewStart = -1;
        return attribute;
    }
    void scanTagEnd();
    void finishStartTag();
    void scanEndTag();
    /// The end tag names the open element in the text its start tag had, in place: reads
    /// the name and returns true; false with nothing read otherwise.
    bool closesInPlace();
    void closeElement();
    UnicodeString openQName() const;
    /// The value of an attribute of the current start tag.
    UnicodeString attributeValue(const Attribute& attribute) const {
        return attribute.viewStart >= 0
                   ? UnicodeString(m_in.chars.get() + attribute.viewStart, attribute.viewLength)
                   : attribute.value;
    }
    /// Copies the values still in the read buffer into their records, before the buffer moves.
    void keepAttributeValues();
    void declareNamespace(ZkName prefix, ZkName uri);
    ZkName resolvePrefix(ZkName prefix) const;
    /// Appends the run of plain characters at the read position to `target`, stopping before
    /// a character of class `stops`, before `quote`, and before anything that needs the slow
    /// reader; with `value`, tabs and line feeds become spaces.
    void scanRun(UnicodeString& target, uint16_t stops, char16_t quote, bool value);
    void readLiteral(LiteralMode mode, UnicodeString& out);
    void readAttributeValue(char16_t quote, UnicodeString& out);
    /// HTML: a value without quotes, to white space, ">" or "/>", references expanded.
    void readUnquotedValue(UnicodeString& out);
    /// After the opening quote: the value of `attribute`, in place when it can be.
    void readValue(char16_t quote, Attribute& attribute);
    /// After "&#": the code point, or with `ok` false after a report.
    UChar32 readCharReference(UnicodeString& digits, bool& ok);
    /// After "&": reads a reference into `out` (attribute context) or sets up ENTITY_REF.
    void readReference(UnicodeString* out);
    void reportUndefined(ZkName name);
    /// HTML keeps a reference it cannot read as text: into `out`, or as a TEXT event.
    void htmlLiteral(UnicodeString* out, const UnicodeString& text);
    /// HTML, after "&" and a name and the character `c`: false when the reference was kept
    /// as literal text (no ";" needed, an undefined name stays as it stood).
    bool htmlReference(UnicodeString* out, ZkName name, UChar32& c);
    void expandInto(ZkName name, const UnicodeString& replacement, UnicodeString& out);

    // ---- content (xmlcontent.cpp)
    void scanText();
    void scanCData();
    /// After "<" as data in raw text: reads a CDATA section where one may stand there.
    bool rawCData();
    void scanComment();
    void scanProcessingInstruction();
    void takeOwnText(int32_t start, bool trim);
    void readDeclarationValue(const char16_t* name, UnicodeString& value);
    void scanXmlDeclaration();
    void applyDeclaredEncoding(const UnicodeString& value);
    bool readTextDeclaration();
    void scanBang();
    void scanDoctype();
    void readExternalId(const UnicodeString& head);

    // ---- DTD and entities (xmldtd.cpp)
    /// Reads declarations up to "]" (internal) or the end of the input (external).
    void scanSubset(bool external);
    void scanEntityDeclaration(bool external);
    void readEntityValue(bool external, UnicodeString& value);
    /// After "%": expands a parameter entity reference in the subset.
    void parameterReference(bool external);
    void skipConditionalSection(bool external);
    void skipDeclaration(bool external);
    /// After the DOCTYPE: the built-in sets its identifiers stand for, or the external subset.
    void applyDoctypeIdentifiers();
    void readExternalSubset(const UnicodeString& resolved);
    /// Adds one built-in set (kEntitySetMathML and so on); a document's own entity wins.
    void loadEntitySet(int set);
    /// Whether the resource `uri` names is being read already, here or in a saved frame.
    bool isOpenInput(const UnicodeString& uri) const;
    /// A start tag of `math` in the MathML namespace opens the MathML entity scope.
    void enterMathScope();
    void leaveMathScope();
    /// While a DOCTYPE is read, every character read goes into the text buffer as well, and a
    /// character read and pushed back comes out again; the fast paths stand aside meanwhile.
    void startRecording();
    void stopRecording();
    UChar32 readRecorded();
    /// peekUnit for the reader's own limit, which recording sets aside.
    int peekRecorded() const;
    void unrecord(UChar32 c);

    ZkXmlParserImpl& m_owner;

    // Features and policy.
    bool m_features[ZkXmlParser::kFeatureCount] = {};
    int m_hugeTextLimit = ZkXmlParserImpl::kDefaultHugeTextLimit;
    ZkName m_parserType;
    ZkName m_defaultType;
    UnicodeString m_htmlDefaultCharset;
    UnicodeString m_contentType;
    UnicodeString m_extension;
    bool m_extensionFromUri = false; ///< taken from the input's URI, not given as a hint
    UnicodeString m_language;
    UnicodeString m_metaContentType; ///< the first content type a `meta` gave
    UnicodeString m_pubid;
    UnicodeString m_systemId;
    bool m_autoClose = true;
    std::unique_ptr<ZkUri::ContentInfo> m_info;

    // Input.
    InputState m_in;
    UnicodeString m_requestedEncoding;    ///< given to setInput, applied again by rewind
    UnicodeString m_lastUri;              ///< the resource setInput opened, for rewind
    std::istream* m_lastStream = nullptr; ///< the stream setInput borrowed, for rewind
    std::vector<InputState> m_frames;
    char16_t m_fastLimit = 0xD800; ///< units from 0x20 below this need no check
    bool m_xml11 = false;

    // Event.
    int m_event = ZkXmlParser::START_DOCUMENT;
    int m_peek = PEEK_NONE;
    /// A tag whose name was read before an implied event: PEEK_START_TAG or PEEK_END_TAG, met
    /// again next with this name, and the rest of the tag still in the input.
    int m_held = PEEK_NONE;
    ZkName m_heldPrefix;
    ZkName m_heldLocal;
    bool m_hasXmlDecl = false;
    mutable ZkNameEnum m_settledType = ZKN_EMPTY; ///< html or xhtml once settled
    mutable int8_t m_htmlGuess = -1; ///< an unsettled judgment kept until a hint changes
    mutable int8_t m_xhtmlGuess = -1;
    bool m_metaCharsetSeen = false; ///< the prescan found a `meta` charset
    bool m_metaPending = false;     ///< the start tag is an HTML `meta`
    UnicodeString m_metaCharset;
    UnicodeString m_metaContent;
    UnicodeString m_metaHttpEquiv;
    /// Open unprefixed HTML elements by name, for the end tag rules.
    std::vector<int32_t> m_openCounts;
    std::unordered_map<int32_t, int32_t> m_openCountsDynamic;
    bool m_doctypeSeen = false;
    bool m_rootSeen = false;
    bool m_emptyTag = false;
    ZkName m_firstElement;
    ZkName m_rootNamespace;
    ZkName m_entityName;
    ZkName m_target;
    int m_eventLine = -1;
    int m_eventColumn = -1;
    std::vector<Attribute> m_attributes;
    int m_attributeCount = 0;
    /// Name cache slots of the last qualified name read in place; -1 when unknown.
    int32_t m_qnamePrefixSlot = -1;
    int32_t m_qnameLocalSlot = -1;
    bool m_prefixedAttributes = false; ///< some attribute of the start tag has a prefix
    /// Name cache slots of the unprefixed attribute names last read at each position of a
    /// start tag, by a hash of the element's local name: tags of a kind repeat their
    /// attributes in order, and a name found there is taken with one compare. -1 for none.
    static constexpr int kPredictedAttributes = 16;
    static constexpr int kPredictedKindBits = 3;
    int32_t m_attributeSlots[1 << kPredictedKindBits][kPredictedAttributes];
    bool m_valuesInBuffer = false;         ///< some attribute values are views into the read buffer
    std::vector<uint64_t> m_attributeKeys; ///< open addressing, for many attributes
    std::vector<OpenElement> m_open;
    std::vector<NsBinding> m_bindings;
    std::unordered_map<int32_t, int32_t> m_prefixTop; ///< prefix -> innermost binding
    uint64_t m_bindingsGeneration = 0;                ///< changes whenever m_prefixTop does
    /// The last prefix resolvePrefix looked up, and its answer in that generation.
    mutable ZkName m_resolvedPrefix;
    mutable ZkName m_resolvedUri;
    mutable uint64_t m_resolvedGeneration = ~uint64_t(0);
    ZkName m_elementPrefix;
    ZkName m_elementName;
    ZkName m_elementNs;
    UnicodeString m_text;
    int32_t m_mark = 0;
    mutable UnicodeString m_cachedText;
    mutable bool m_cachedValid = false;
    UnicodeString m_ownText; ///< text of comments, instructions and DOCTYPE
    bool m_useOwnText = false;
    UnicodeString m_scratch;
    NameCache m_names;

    // Entities: the general table holds the five predefined ones and the caller's additions.
    std::unordered_map<int32_t, UnicodeString> m_entities;
    /// The HTML set, shared by every parser and read in place after the document's own
    /// entities; null until an HTML root loads it.
    const std::unordered_map<int32_t, UnicodeString>* m_sharedEntities = nullptr;
    /// The replacement text of a general entity, or null.
    const UnicodeString* findEntity(ZkName name) const {
        auto found = m_entities.find(name.getEnum());
        if (found != m_entities.end())
            return &found->second;
        if (m_sharedEntities && !m_externalEntities.count(name.getEnum())) {
            auto shared = m_sharedEntities->find(name.getEnum());
            if (shared != m_sharedEntities->end())
                return &shared->second;
        }
        return nullptr;
    }
    std::unordered_set<int32_t> m_reportedEntities;
    /// Expansions in progress in the pushed-back text: the entity and the unread length of the
    /// buffer below which its text ends. A reference to an entity in this list is a loop.
    std::vector<std::pair<ZkName, int64_t>> m_expanding;
    std::unordered_map<int32_t, UnicodeString> m_paramEntities;
    std::unordered_map<int32_t, UnicodeString> m_externalEntities;      ///< name -> system id
    std::unordered_map<int32_t, UnicodeString> m_externalParamEntities; ///< name -> system id
    std::unordered_set<int32_t> m_reportedParams;
    bool m_setLoaded[3] = {}; ///< the built-in sets loaded into this parser
    ZkName m_doctypeName;
    int m_includeDepth = 0;       ///< INCLUDE sections open in the subset
    int64_t m_subsetExpanded = 0; ///< units parameter entities brought into the subsets
    int m_mathScopeDepth = -1;    ///< depth of the `math` element that loaded the MathML set
    const void* m_mathSnapshot = nullptr;
    bool m_recording = false;         ///< the DOCTYPE's source text gathers in m_text
    char16_t m_recordedFastLimit = 0; ///< m_fastLimit to restore when recording stops

    // Errors.
    ZkXmlParser::ErrorCallback m_callback = nullptr;
    void* m_callbackData = nullptr;
    std::deque<ZkError> m_errors;
};

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_XML_XMLSCANNER_H
