// Fixed run-time type numbers of the library's classes; isA follows the base column of each row.
#ifndef ZKCOMMON_CORE_TYPEIDS_H
#define ZKCOMMON_CORE_TYPEIDS_H

namespace ZkCommonNS {
namespace ZkTypeID {
// clang-format off
constexpr unsigned int kObjectBase          = 0xDF537371; // root
constexpr unsigned int kRCObject            = 0xD18D040A; // ZkObjectBase
constexpr unsigned int kNameTable           = 0xDF2E12FA; // ZkRCObject
constexpr unsigned int kNamedValueMap       = 0x2D6DF390; // ZkRCObject
constexpr unsigned int kNamespaceManager    = 0xFD1182AD; // ZkRCObject
constexpr unsigned int kNamespaceMap        = 0xE8F3CB34; // ZkRCObject
constexpr unsigned int kValueArray          = 0x5B81E171; // ZkRCObject
constexpr unsigned int kNode                = 0xFF72074A; // ZkRCObject
constexpr unsigned int kAttr                = 0x507DD55F; // ZkNode (Attr answers as ZkAttr)
constexpr unsigned int kAttrNS              = 0xF2136280; // ZkAttr
constexpr unsigned int kDocument            = 0x2A780AB6; // ZkNode
constexpr unsigned int kDocumentFragment    = 0xB7475C6F; // ZkNode
constexpr unsigned int kElement             = 0x9B60777D; // ZkNode
constexpr unsigned int kElementPlain        = 0x883D36C4; // ZkElement (class Element)
constexpr unsigned int kElementNS           = 0x92C5C0B8; // Element
constexpr unsigned int kProcessingInstruction = 0x78626383; // ZkNode
constexpr unsigned int kTextNode            = 0xD8444919; // ZkNode
constexpr unsigned int kNodeIterable        = 0x6D959880; // ZkRCObject
constexpr unsigned int kNodeList            = 0xB426D516; // ZkNodeIterable
constexpr unsigned int kChildNodeList       = 0xA6531568; // ZkNodeList
constexpr unsigned int kTreeNodeList        = 0x78F0F49E; // ZkNodeList
constexpr unsigned int kNamedNodeMap        = 0xDE19E4A4; // ZkNodeIterable
constexpr unsigned int kAttrNodeMap         = 0x95F69A2C; // ZkNamedNodeMap
constexpr unsigned int kXmlParser           = 0x34A5686C; // ZkRCObject
constexpr unsigned int kXmlParserImpl       = 0xC6714BC2; // ZkXmlParser
constexpr unsigned int kMSXmlParser         = 0x7608EA26; // ZkXmlParser
constexpr unsigned int kXmlSerializer       = 0x5DCEE8F5; // ZkRCObject
constexpr unsigned int kXmlSerializerImpl   = 0x40058898; // ZkXmlSerializer
constexpr unsigned int kXmlCatalogs         = 0x026E56FE; // ZkRCObject
constexpr unsigned int kXmlCatalogsImpl     = 0x03AB9026; // ZkXmlCatalogs
constexpr unsigned int kCssParser           = 0xF4440044; // ZkRCObject
constexpr unsigned int kCssParserImpl       = 0x922A3921; // ZkCssParser
constexpr unsigned int kSelectorDeclarationsPair = 0x36B62C20; // ZkRCObject
constexpr unsigned int kCssRules            = 0x11D99FFE; // ZkRCObject
constexpr unsigned int kCssRulesImpl        = 0x48BEBBFC; // ZkCssRules
constexpr unsigned int kCssRulesStylesheet  = 0x90083561; // ZkCssRulesImpl
constexpr unsigned int kCssMediaQuery       = 0xB7886B64; // ZkRCObject
constexpr unsigned int kCssMediaQueryImpl   = 0x0E0195BC; // ZkCssMediaQuery
constexpr unsigned int kCssMediaQueryList   = 0x4D4D30CF; // ZkRCObject
constexpr unsigned int kCssDeclarationsList = 0x78ACABA4; // ZkRCObject
constexpr unsigned int kCssPageRuleList     = 0x55C4C68F; // ZkRCObject
constexpr unsigned int kZipEntry            = 0x3DBE4CC1; // ZkRCObject (directory, end and extheader entries answer as it)
constexpr unsigned int kZipFileEntry        = 0xD8C59E0C; // ZkZipEntry
// clang-format on
} // namespace ZkTypeID
} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_TYPEIDS_H
