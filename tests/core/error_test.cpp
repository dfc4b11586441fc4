// The error record's message and position rules, levels and the common messages.
#include "support.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <zkcommon/core/error.h>

using namespace ZkCommonNS;

namespace {

ZkError raised(ZkErrorCodeCOMMON code, const UnicodeString& arg1 = UnicodeString(),
               const UnicodeString& arg2 = UnicodeString()) {
    try {
        throwCommonError(code, 0, arg1, arg2);
    } catch (const ZkError& e) {
        return e;
    }
    return ZkError();
}

} // namespace

TEST(ErrorLevel, FromCodeBits) {
    // clang-format off
    const std::pair<unsigned short, ZkErrorLevel> cases[] = {
        {0, ZK_ERROR_LEVEL_FATAL}, {0x1FF, ZK_ERROR_LEVEL_FATAL}, {0x200, ZK_ERROR_LEVEL_WARNING},
        {0x280, ZK_ERROR_LEVEL_WARNING}, // 0x80 counts only with 0x100
        {0x300, ZK_ERROR_LEVEL_ERROR}, {0x37F, ZK_ERROR_LEVEL_ERROR}, {0x380, ZK_ERROR_LEVEL_INFORMATION}, {0xFFFF, ZK_ERROR_LEVEL_INFORMATION},
    };
    // clang-format on
    for (const auto& k : cases)
        EXPECT_EQ(getErrorLevel(k.first), k.second) << k.first;
}

TEST(Error, StandardExceptionsAndCategory) {
    std::bad_alloc noMemory;
    std::runtime_error failure("disk on fire");
    ZkError memory(noMemory, u"ignored");
    EXPECT_EQ(memory.getErrorCode(), 1);
    EXPECT_EQ(memory.getRawMessage(), u"SYSTEM ERROR: Out of memory.");
    ZkError wrapped(failure, u"ignored");
    EXPECT_EQ(wrapped.getErrorCode(), 2);
    EXPECT_EQ(wrapped.getRawMessage(), u"SYSTEM ERROR: C++ exception: disk on fire");
    EXPECT_EQ(ZkError(0x8123, u"message", u"ignored", 3, 14, UnicodeString()).getErrorCategory(),
              0x8000);
    EXPECT_TRUE(ZkError().getMessage().isEmpty());
}

TEST(Error, PositionDescription) {
    // clang-format off
    const struct { int line, column; const char16_t* position; } cases[] = {
        {3, -1, u"Line 3, "}, {0, 0, u""}, {3, 14, u"Line 3, Col 14, "}, {-1, 7, u"Col 7, "}, {-1, -1, u""},
    };
    // clang-format on
    for (const auto& k : cases) {
        ZkError e(5, u"Bad thing.", UnicodeString(), k.line, k.column, UnicodeString());
        EXPECT_EQ(e.getPositionDescription(), k.position);
        EXPECT_EQ(e.getMessage(),
                  UnicodeString(u"Bad thing.") + (k.position[0] ? u"\n" : u"") + k.position);
    }
}

TEST(Error, SetAndAppendMessage) {
    ZkError e(5, u"Raw text.", UnicodeString(), 3, 14, UnicodeString());
    e.setMessage(e.getMessage());
    EXPECT_EQ(e.getRawMessage(), u"Raw text.") << "setMessage undoes getMessage";
    // Only an exact tail after a line feed is cut.
    e.setMessage(u"Other Line 3, Col 14, ");
    EXPECT_EQ(e.getRawMessage(), u"Other Line 3, Col 14, ");
    e.setRawMessage(u"x\nLine 3, Col 14, ");
    EXPECT_EQ(e.getRawMessage(), u"x\nLine 3, Col 14, ");
    ZkError plain;
    plain.appendMessage(UnicodeString());
    plain.appendMessage(u"first"); // no line feed before the first
    plain.appendMessage(u"second");
    EXPECT_EQ(plain.getRawMessage(), u"first\nsecond");
    plain.setMessage(u"b\n");
    EXPECT_EQ(plain.getRawMessage(), u"b\n");
}

TEST(Error, ThrowFatalError) {
    for (unsigned short code : {0, 0x200, 0x3FF})
        EXPECT_NO_THROW(
            ZkError(code, u"m", UnicodeString(), -1, -1, UnicodeString()).throwFatalError());
    try {
        ZkError(0x1FF, u"fatal", UnicodeString(), 2, 3, UnicodeString()).throwFatalError();
        FAIL() << "a fatal code must throw";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), 0x1FF);
        EXPECT_EQ(e.getColumnNumber(), 3);
    }
}

TEST(CommonError, Messages) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/core/commonerrors.tsv");
    ASSERT_EQ(rows.size(), 33u);
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0] + " " + row[3]);
        ASSERT_EQ(row.size(), 5u);
        const int code = std::stoi(row[0]);
        const UnicodeString arg1 = UnicodeString::fromUTF8(row[1]);
        ZkError e = raised(ZkErrorCodeCOMMON(code), arg1, UnicodeString::fromUTF8(row[2]));
        EXPECT_EQ(e.getErrorCode(), code);
        EXPECT_EQ(utf8(e.getRawMessage()), row[3]);
        EXPECT_EQ(e.getLineNumber(), -1);
        EXPECT_EQ(e.getColumnNumber(), -1);
        EXPECT_EQ(e.getUri(), row[4] == "uri" ? arg1 : UnicodeString());
    }
}
