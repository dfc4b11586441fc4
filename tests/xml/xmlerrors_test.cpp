// The scanner's error table: one malformed input per code it raises (tests/data/xml/errors.tsv),
// with the code, the message and the position the callback receives.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

/// Every diagnostic of a whole parse with next(), through the callback.
std::vector<ZkError> diagnose(const std::string& input, bool noExternalEntity) {
    std::vector<ZkError> errors;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, noExternalEntity);
    parser->setCallbackError(
        [](const ZkError& error, void* data) {
            static_cast<std::vector<ZkError>*>(data)->push_back(error);
        },
        &errors);
    std::istringstream in(input);
    parser->setInput(in, UnicodeString(), UnicodeString());
    try {
        for (int guard = 0; parser->next() != ZkXmlParser::END_DOCUMENT && guard < 1000; ++guard) {
        }
    } catch (const ZkError& error) {
        if (error.getErrorCode() != 128)
            errors.push_back(error);
    }
    return errors;
}

} // namespace

TEST(XmlErrors, EachCodeWithMessageAndPosition) {
    auto rows = readTable(ZK_TEST_DATA_DIR "/xml/errors.tsv");
    ASSERT_GT(rows.size(), 80u);
    for (const auto& row : rows) {
        ASSERT_GE(row.size(), 5u);
        const std::string input = unescapeField(row[0]);
        SCOPED_TRACE(input);
        std::vector<ZkError> errors =
            diagnose(input, row.size() > 5 && row[5] == "no-external-entity");
        ASSERT_FALSE(errors.empty());
        const ZkError& first = errors.front();
        EXPECT_EQ(std::stoi(row[1]), first.getErrorCode());
        EXPECT_EQ(unescapeField(row[2]), utf8(first.getRawMessage()));
        EXPECT_EQ(std::stoi(row[3]), first.getLineNumber());
        EXPECT_EQ(std::stoi(row[4]), first.getColumnNumber());
    }
}
