// The messages of the XML scanner's codes; "\1" and "\2" stand for the two arguments.
#include "xml/xmlscanner.h"

namespace ZkCommonNS {

namespace {
struct Message {
    unsigned short code;
    const char16_t* text;
};

// clang-format off
const Message kMessages[] = {
    {129, u"Missing end tag."},
    {130, u"Only one top level element is allowed."},
    {521, u"Only one top level element is allowed."},
    {131, u"Invalid root tag name after '<!DOCTYPE'."},
    {132, u"Invalid start tag name."},
    {133, u"Invalid end tag name."},
    {134, u"End tag </\1> does not match the start tag <\2>."},
    {513, u"End tag </\1> does not match the start tag <\2>."},
    {135, u"Undeclared namespace prefix: \1"},
    {136, u"Duplicate attribute: \1"},
    {137, u"Invalid attribute name: \1"},
    {138, u"Missing '=' after attribute name."},
    {139, u"Missing whitespace between attributes."},
    {140, u"Unexpected character: \1"},
    {769, u"Unexpected character: \1"},
    {897, u"Unexpected character: \1"},
    {141, u"Unexpected whitespace after '\1'."},
    {770, u"Unexpected whitespace after '\1'."},
    {898, u"Unexpected whitespace after '\1'."},
    {142, u"Unexpected text at top level of the XML document: \1"},
    {143, u"Unexpected '<![\1'."},
    {144, u"Unexpected ']]>'."},
    {145, u"Unexpected end of input while looking for CDATA section terminator ']]>'."},
    {146, u"Unexpected end of input while looking for comment terminator '-->'."},
    {147, u"Unexpected character '--' in comment"},
    {771, u"Unexpected character '--' in comment"},
    {899, u"Unexpected character '--' in comment"},
    {148, u"Unexpected DOCTYPE declaration outside of prolog."},
    {149, u"Cannot have multiple DOCTYPE declarations."},
    {150, u"Missing whitespace after '\1'."},
    {151, u"External ID is expected after '\1'."},
    {152, u"PubidLiteral is expected after '\1'."},
    {153, u"SystemLiteral is expected after '\1'."},
    {154, u"Unexpected end of input in \1 declaration."},
    {155, u"Empty entity name."},
    {156, u"Invalid character in entity reference: \1;"},
    {157, u"Reference to undefined entity: %\1;"},
    {514, u"Reference to undefined entity: %\1;"},
    {158, u"Reference to undefined entity: &\1;"},
    {515, u"Reference to undefined entity: &\1;"},
    {159, u"Entity name is expected after '\1'."},
    {160, u"NDATA is expected after '\1'."},
    {161, u"Unexpected XML declaration."},
    {162, u"Missing 'version=' after '<?xml ' in XML declaration."},
    {163, u"Missing '=' after '\1' in XML declaration."},
    {164, u"Missing whitespace after '\1' in XML declaration."},
    {165, u"Missing whitespace before '\1' in XML declaration."},
    {166, u"Unsupported XML version: \1"},
    {167, u"Invalid standalone declaration in XML declaration."},
    {168, u"Invalid syntax in CDATA section."},
    {169, u"Invalid syntax in comment."},
    {170, u"Unexpected '<!\1'."},
    {171, u"The name 'xml' must be lower case: <?\1"},
    {172, u"Missing whitespace after PI target: <?\1"},
    {173, u"Unexpected end of input while looking for PI terminator '?>'."},
    {174, u"Missing quotation character (\" or ')."},
    {175, u"Unexpected end of input while looking for literal terminator (\1)."},
    {176, u"Unexpected '<' in attribute value."},
    {177, u"Unexpected whitespace in character reference: &#\1;"},
    {178, u"Invalid character in character reference: &#\1;"},
    {179, u"Invalid Unicode character: \1"},
    {180, u"Invalid character."},
    {181, u"Unknown or unsupported encoding: \1."},
    {182, u"No-XML document."},
    {183, u"Unclosed tag: \1"},
    {184, u"Looped entity reference: &\1;"},
    {520, u"Looped entity reference: &\1;"},
    {185, u"Conflict encoding: \1."},
    {186, u"Invalid element name: \1"},
    {187, u"Invalid attribute value: \1=\"\2\""},
    {188, u"External entity is not allowed: '\1'."},
    {516, u"External entity is not allowed: '\1'."},
    {189, u"Empty attribute name: \1"},
    {190, u"Huge text."},
};
// clang-format on
} // namespace

UnicodeString ZkXmlParserImpl::getErrorMessage(unsigned short code, const UnicodeString& arg1,
                                               const UnicodeString& arg2) {
    const char16_t* text = u"XML parser error.";
    for (const Message& message : kMessages) {
        if (message.code == code) {
            text = message.text;
            break;
        }
    }
    UnicodeString out;
    for (const char16_t* c = text; *c; ++c) {
        if (*c == 1)
            out += arg1;
        else if (*c == 2)
            out += arg2;
        else
            out += *c;
    }
    return out;
}

} // namespace ZkCommonNS
