// The W3C XML conformance cases, DTD cases included: well-formed documents parse without a fatal
// error, and not-well-formed ones raise one.
#include "support.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

using Case = ConformanceCase;
const std::string& kSuite = kConformanceSuite;

/// A fatal error raised by the parse, or an empty string.
std::string parse(const std::string& path) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    // The suite is XML: a root named html is no hint of HTML here.
    parser->setParserType(ZkName(ZKN_xml), ZkName(ZKN_xml));
    try {
        ZkUri uri(UnicodeString::fromUTF8(path), ZkUri::URISTR_FILEPATH);
        parser->setInput(uri, UnicodeString(), UnicodeString());
        while (parser->next() != ZkXmlParser::END_DOCUMENT) {
        }
    } catch (const ZkError& error) {
        return std::to_string(error.getErrorCode()) + " " + utf8(error.getRawMessage());
    }
    return std::string();
}

/// Cases whose outcome differs from the suite's, each for a rule of ours: id -> reason.
std::map<std::string, std::string> readDifferences() {
    std::map<std::string, std::string> differences;
    std::ifstream in(ZK_TEST_DATA_DIR "/xml/conformance_differences.tsv");
    std::string line;
    while (std::getline(in, line)) {
        size_t tab = line.find('\t');
        if (!line.empty() && line[0] != '#' && tab != std::string::npos)
            differences[line.substr(0, tab)] = line.substr(tab + 1);
    }
    return differences;
}

} // namespace

TEST(XmlConformance, AllCases) {
    std::vector<Case> cases = readConformanceCases();
    ASSERT_GT(cases.size(), 400u);
    std::map<std::string, std::string> differences = readDifferences();
    ASSERT_GT(differences.size(), 3u);
    std::map<std::string, int> reasons;                // reason -> cases
    std::map<std::string, std::pair<int, int>> counts; // collection -> (passed, run)
    for (const Case& c : cases) {
        if (c.type != "valid" && c.type != "invalid" && c.type != "not-wf")
            continue;
        std::string path = kSuite + c.uri;
        std::string error = parse(path);
        bool wellFormed = c.type != "not-wf";
        bool passed = wellFormed == error.empty();
        std::string collection = c.uri.substr(0, c.uri.find('/'));
        auto& count = counts[collection];
        ++count.second;
        auto difference = differences.find(c.id);
        if (difference != differences.end()) {
            EXPECT_FALSE(passed) << c.id << " passes now; drop it from the differences";
            ++reasons[difference->second];
            continue;
        }
        count.first += passed;
        EXPECT_TRUE(passed) << c.id << " (" << c.type << ") " << c.uri << ": "
                            << (error.empty() ? "no fatal error" : error);
    }
    for (const auto& entry : counts)
        std::cout << "[ conformance ] " << entry.first << ": " << entry.second.first << " of "
                  << entry.second.second << " cases pass\n";
    for (const auto& entry : reasons)
        std::cout << "[ conformance ] " << entry.second << " differ: " << entry.first << "\n";
}
