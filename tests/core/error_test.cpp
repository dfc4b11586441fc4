// The error record's message and position rules, levels and the common messages.
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
    EXPECT_EQ(getErrorLevel(0), ZK_ERROR_LEVEL_FATAL);
    EXPECT_EQ(getErrorLevel(0x1FF), ZK_ERROR_LEVEL_FATAL);
    EXPECT_EQ(getErrorLevel(0x200), ZK_ERROR_LEVEL_WARNING);
    EXPECT_EQ(getErrorLevel(0x280), ZK_ERROR_LEVEL_WARNING); // 0x80 counts only with 0x100
    EXPECT_EQ(getErrorLevel(0x300), ZK_ERROR_LEVEL_ERROR);
    EXPECT_EQ(getErrorLevel(0x37F), ZK_ERROR_LEVEL_ERROR);
    EXPECT_EQ(getErrorLevel(0x380), ZK_ERROR_LEVEL_INFORMATION);
    EXPECT_EQ(getErrorLevel(0xFFFF), ZK_ERROR_LEVEL_INFORMATION);
}

TEST(Error, Construction) {
    ZkError empty;
    EXPECT_EQ(empty.getErrorCode(), 0);
    EXPECT_EQ(empty.getLineNumber(), -1);
    EXPECT_EQ(empty.getColumnNumber(), -1);
    EXPECT_TRUE(empty.getMessage().isEmpty());

    std::bad_alloc noMemory;
    ZkError memory(noMemory, u"ignored");
    EXPECT_EQ(memory.getErrorCode(), 1);
    EXPECT_EQ(memory.getRawMessage(), u"SYSTEM ERROR: Out of memory.");

    std::runtime_error failure("disk on fire");
    ZkError wrapped(failure, u"ignored");
    EXPECT_EQ(wrapped.getErrorCode(), 2);
    EXPECT_EQ(wrapped.getRawMessage(), u"SYSTEM ERROR: C++ exception: disk on fire");

    ZkError full(0x8123, u"message", u"ignored", 3, 14, UnicodeString());
    EXPECT_EQ(full.getErrorCategory(), 0x8000);
    EXPECT_EQ(full.getErrorCode(), 0x8123);
}

TEST(Error, PositionDescription) {
    ZkError lineOnly(5, u"Bad thing.", UnicodeString(), 3, -1, UnicodeString());
    EXPECT_EQ(lineOnly.getPositionDescription(), u"Line 3, ");
    EXPECT_EQ(lineOnly.getMessage(), u"Bad thing.\nLine 3, ");

    ZkError zeros(5, u"Bad thing.", UnicodeString(), 0, 0, UnicodeString());
    EXPECT_TRUE(zeros.getPositionDescription().isEmpty());
    EXPECT_EQ(zeros.getMessage(), u"Bad thing.");

    ZkError both(5, u"m", UnicodeString(), 3, 14, UnicodeString());
    EXPECT_EQ(both.getPositionDescription(), u"Line 3, Col 14, ");
    ZkError columnOnly(5, u"m", UnicodeString(), -1, 7, UnicodeString());
    EXPECT_EQ(columnOnly.getPositionDescription(), u"Col 7, ");
}

TEST(Error, SetMessageUndoesGetMessage) {
    ZkError e(5, u"Raw text.", UnicodeString(), 3, 14, UnicodeString());
    e.setMessage(e.getMessage());
    EXPECT_EQ(e.getRawMessage(), u"Raw text.");
    // Only an exact tail after a line feed is cut.
    e.setMessage(u"Other Line 3, Col 14, ");
    EXPECT_EQ(e.getRawMessage(), u"Other Line 3, Col 14, ");
    e.setRawMessage(u"x\nLine 3, Col 14, ");
    EXPECT_EQ(e.getRawMessage(), u"x\nLine 3, Col 14, ");
    ZkError noPosition(5, u"a", UnicodeString(), -1, -1, UnicodeString());
    noPosition.setMessage(u"b\n");
    EXPECT_EQ(noPosition.getRawMessage(), u"b\n");
}

TEST(Error, AppendMessage) {
    ZkError e;
    e.appendMessage(UnicodeString());
    EXPECT_TRUE(e.getRawMessage().isEmpty());
    e.appendMessage(u"first");
    EXPECT_EQ(e.getRawMessage(), u"first");
    e.appendMessage(u"second");
    EXPECT_EQ(e.getRawMessage(), u"first\nsecond");
}

TEST(Error, ThrowFatalError) {
    EXPECT_NO_THROW(ZkError().throwFatalError());
    EXPECT_NO_THROW(
        ZkError(0x200, u"w", UnicodeString(), -1, -1, UnicodeString()).throwFatalError());
    EXPECT_NO_THROW(
        ZkError(0x3FF, u"i", UnicodeString(), -1, -1, UnicodeString()).throwFatalError());
    try {
        ZkError(0x1FF, u"fatal", UnicodeString(), 2, 3, UnicodeString()).throwFatalError();
        FAIL() << "a fatal code must throw";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), 0x1FF);
        EXPECT_EQ(e.getLineNumber(), 2);
        EXPECT_EQ(e.getColumnNumber(), 3);
    }
}

TEST(Error, LastErrorMessageIsTrimmedSystemText) {
    UnicodeString text = ZkError::getLastErrorMessage(2); // ENOENT
    EXPECT_FALSE(text.isEmpty());
    EXPECT_NE(text.charAt(text.length() - 1), u' ');
}

TEST(CommonError, Messages) {
    // clang-format off
    const struct {
        int code;
        const char16_t* arg1;
        const char16_t* arg2;
        const char16_t* message;
        bool uri;
    } cases[] = {
        {3, u"", u"", u"SYSTEM ERROR: arg is null.", false},
        {3, u"newChild", u"", u"SYSTEM ERROR: newChild is null.", false},
        {4, u"x", u"", u"SYSTEM ERROR: Argument is out of range.", false},
        {6, u"newChild", u"", u"SYSTEM ERROR: newChild is created from a different document.", false},
        {7, u"", u"", u"SYSTEM ERROR: arg is not an ZkAttr object.", false},
        {8, u"newAttr", u"", u"SYSTEM ERROR: newAttr is an ZkAttr that is already an attribute of another ZkElement " u"object.", false},
        {9, u"refChild", u"", u"SYSTEM ERROR: refChild is not a child of this node.", false},
        {11, u"", u"", u"SYSTEM ERROR: Cannot set a value on node type.", false},
        {11, u"ZkNode", u"", u"SYSTEM ERROR: Cannot set a value on node type: ZkNode", false},
        {12, u"", u"", u"SYSTEM ERROR: startDocument() must be called just after setOutput().", false},
        {13, u"", u"", u"SYSTEM ERROR: attribute() must be called just after startTag().", false},
        {14, u"", u"", u"SYSTEM ERROR: Unexpected endTag().", false},
        {15, u"a", u"b", u"SYSTEM ERROR: End tag 'a' does not match the start tag 'b'.", false},
        {15, u"", u"", u"SYSTEM ERROR: End tag '' does not match the start tag ''.", false},
        {16, u"", u"", u"SYSTEM ERROR: Unexpected docdecl().", false},
        {18, u"", u"", u"SYSTEM ERROR: Unsupported node type.", false},
        {67, u"file:///x", u"", u"SYSTEM ERROR: Cannot open file.", true},
        {517, u"file:///x", u"", u"SYSTEM ERROR: Cannot open file.", true},
        {68, u"file:///x", u"", u"SYSTEM ERROR: Unexpected end of input stream.", true},
        {69, u"", u"", u"SYSTEM ERROR: Output stream is not set.", false},
        {70, u"file:///x", u"", u"SYSTEM ERROR: Input stream error.", true},
        {71, u"", u"", u"SYSTEM ERROR: Output stream error.", false},
        {77, u"/tmp/a", u"", u"SYSTEM ERROR: Cannot remove temporary file: /tmp/a", false},
        {78, u"/tmp/b", u"", u"SYSTEM ERROR: Cannot create temporary file: /tmp/b", false},
        {518, u"file:///c", u"", u"SYSTEM ERROR: Not an XML Catalog file.", true},
        {5, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {10, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {17, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {19, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {66, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {72, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {76, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
        {1000, u"", u"", u"SYSTEM ERROR: ZkErrorCodeCOMMON", false},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        ZkError e = raised(ZkErrorCodeCOMMON(c.code), c.arg1, c.arg2);
        EXPECT_EQ(e.getErrorCode(), c.code);
        EXPECT_EQ(e.getRawMessage(), UnicodeString(c.message));
        EXPECT_EQ(e.getLineNumber(), -1);
        EXPECT_EQ(e.getColumnNumber(), -1);
        EXPECT_EQ(e.getUri(), c.uri ? UnicodeString(c.arg1) : UnicodeString());
    }
}
