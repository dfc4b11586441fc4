// Built-in numbering, interning, the shared table's life and names from several threads.
#include "support.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>
#include <zkcommon/core/lock.h>
#include <zkcommon/core/name.h>

using namespace ZkCommonNS;

namespace {

// The data file the tables are generated from: one name a line, in number order.
std::vector<std::string> readNameList() {
    std::ifstream in(ZK_SOURCE_DIR "/data/names.txt");
    std::vector<std::string> names;
    for (std::string line; std::getline(in, line);)
        names.push_back(line);
    return names;
}

} // namespace

TEST(NameTable, BuiltinCountAndBoundaries) {
    EXPECT_EQ(kFirstDynamicName, ZKN_BUILTIN_LAST + 1);
    EXPECT_TRUE(ZkNameTable::getBuiltinNameString(ZkNameEnum(0)).isEmpty());
    EXPECT_TRUE(ZkNameTable::getBuiltinNameString(ZkNameEnum(-1)).isEmpty());
    EXPECT_TRUE(ZkNameTable::getBuiltinNameString(ZkNameEnum(3666)).isEmpty());
    EXPECT_EQ(ZkNameTable::getBuiltinNameEnum(UnicodeString()), ZKN_EMPTY);
}

TEST(NameTable, EveryBuiltinRoundTripsAndIsUnique) {
    std::vector<std::string> list = readNameList();
    ASSERT_EQ(list.size(), 3665u);
    std::set<std::string> seen;
    for (int number = 1; number <= ZKN_BUILTIN_LAST; ++number) {
        const UnicodeString& text = ZkNameTable::getBuiltinNameString(ZkNameEnum(number));
        ASSERT_FALSE(text.isEmpty()) << number;
        EXPECT_EQ(utf8(text), list[size_t(number - 1)]) << number;
        EXPECT_TRUE(seen.insert(utf8(text)).second) << "duplicate " << utf8(text);
        EXPECT_EQ(ZkNameTable::getBuiltinNameEnum(text), number);
        EXPECT_EQ(ZkName(text), ZkNameEnum(number));
    }
    EXPECT_EQ(utf8(ZkName(ZKN_NS_XSL_FO).toString()), "http://www.w3.org/1999/XSL/Format");
    // Exactly three names hold a blank of their own.
    int withBlank = 0;
    for (const std::string& name : seen)
        withBlank += name.find(' ') != std::string::npos;
    EXPECT_EQ(withBlank, 3);
}

TEST(Name, CaseAndOrder) {
    EXPECT_TRUE(ZkName(u"clipPath").isBuiltin());
    EXPECT_TRUE(ZkName(u"clippath").isBuiltin());
    EXPECT_NE(ZkName(u"clipPath"), ZkName(u"clippath")) << "SVG names keep both cases";
    EXPECT_EQ(ZkName(UnicodeString()), ZKN_EMPTY);
    EXPECT_NE(ZkName(u"FOO-name-test"), ZkName(u"foo-name-test"));
    EXPECT_EQ(ZkName(u"FOO-name-test").lowerName(), ZkName(u"foo-name-test"));
    EXPECT_EQ(ZkName(u"Font-Size").lowerName(), ZKN_font_size);
    EXPECT_TRUE(ZkName(ZKN_above) < ZkName(ZKN_abs)) << "by number";
    EXPECT_FALSE(ZkName(ZKN_wrap_reverse) < ZkName(ZKN_ANSI_X3_4));
}

TEST(Name, LowerNameRules) {
    EXPECT_TRUE(ZkName().isLowerName());
    EXPECT_TRUE(ZkName(u"a-b_c@1{}~").isLowerName());
    EXPECT_FALSE(ZkName(u"aB").isLowerName());
    EXPECT_FALSE(ZkName(u"tab\there").isLowerName());
    EXPECT_FALSE(ZkName(u"del\x7F").isLowerName());
    // A non-ASCII letter is never "lower", even without capitals; its lower-cased copy is the
    // same text and so the same name.
    ZkName accented(u"caf\u00e9-name-test");
    EXPECT_FALSE(accented.isLowerName());
    EXPECT_EQ(accented.lowerName(), accented);
    EXPECT_EQ(ZkName(u"CAF\u00c9-NAME-TEST").lowerName(), accented);
}

TEST(Name, InheritEtc) {
    int count = 0;
    for (int number = 0; number <= ZKN_BUILTIN_LAST; ++number)
        count += ZkName::isInheritEtc(ZkNameEnum(number));
    EXPECT_EQ(count, 5);
    for (const char16_t* keyword : {u"inherit", u"default", u"initial", u"unset", u"revert"})
        EXPECT_TRUE(ZkName::isInheritEtc(ZkName(keyword)));
    EXPECT_FALSE(ZkName::isInheritEtc(ZkName(u"auto")));
}

TEST(NameList, ViewsAndInstances) {
    const ZkNameEnum items[] = {ZKN_above, ZKN_abs, ZKN_H_text, ZKN_EMPTY};
    ZkNameList terminated(items);
    EXPECT_EQ(terminated.getCount(), 3);
    EXPECT_EQ(terminated.indexOf(ZKN_H_text), 2);
    EXPECT_EQ(terminated.indexOf(ZKN_font), -1);
    EXPECT_EQ(ZkNameList(nullptr, 5).getCount(), 0);
    EXPECT_FALSE(ZkNameList(items, 2).hasItem(ZKN_H_text));
    ZkNameListInstance owned(2);
    owned.setItem(ZKN_color, 1);
    EXPECT_TRUE(owned.hasItem(ZKN_color));
    EXPECT_FALSE(owned.hasItem(ZKN_above));
}

// The shared table is process-wide, so each test below starts from a clean one.
class SharedNameTable : public ::testing::Test {
protected:
    void SetUp() override { ZkNameTable::cleanup(); }
    void TearDown() override { ZkNameTable::cleanup(); }
};

TEST_F(SharedNameTable, InterningIsStable) {
    EXPECT_TRUE(ZkNameTable::getSharedNameString(ZkNameEnum(3666)).isEmpty());
    ZkNameEnum first = ZkNameTable::getSharedNameEnum(u"x-first-new-name");
    EXPECT_EQ(first, 3666);
    EXPECT_EQ(ZkNameTable::getSharedNameEnum(u"x-first-new-name"), first);
    EXPECT_EQ(ZkNameTable::getSharedNameTable()->getNameLast(), 3666);
    EXPECT_EQ(ZkNameTable::getSharedNameEnum(u"x-second-new-name"), 3667);
    EXPECT_EQ(ZkName(ZkNameEnum(3667)).toString(), u"x-second-new-name");
    // A built-in text never enters the dynamic map.
    EXPECT_EQ(ZkNameTable::getSharedNameEnum(u"#text"), ZKN_H_text);
    EXPECT_EQ(ZkNameTable::getSharedNameTable()->getNameLast(), 3667);
    ZkNameTable* table = ZkNameTable::getSharedNameTable();
    EXPECT_EQ(table->lookupName(u"x-first-new-name"), 3666);
    EXPECT_EQ(table->lookupName(u"never-interned"), ZKN_EMPTY);
    EXPECT_EQ(table->lookupName(u"font"), ZKN_font);
    EXPECT_EQ(table->getNameString(ZkNameEnum(3667)), u"x-second-new-name");
    EXPECT_TRUE(table->getNameString(ZkNameEnum(3668)).isEmpty());
    EXPECT_EQ(table->getNameEnum(u"x-third-new-name"), 3668);
}

TEST_F(SharedNameTable, GenerateID) {
    ZkName id = ZkName::generateID(UnicodeString());
    EXPECT_EQ(id.toString(), u"-N3666");
    EXPECT_EQ(id, ZkNameEnum(3666));
    EXPECT_EQ(ZkName::generateID(u"P").toString(), u"-P3667");
}

TEST_F(SharedNameTable, ReferenceCountEndsTheTable) {
    ZkNameTable* table = ZkNameTable::addRefSharedNameTable();
    ZkName name(u"x-counted-name");
    EXPECT_EQ(ZkNameTable::addRefSharedNameTable(), table);
    ZkNameTable::releaseSharedNameTable();
    EXPECT_EQ(name.toString(), u"x-counted-name");
    ZkNameTable::releaseSharedNameTable();
    // The last release ends the table: dynamic numbers are void and numbering restarts.
    EXPECT_TRUE(name.toString().isEmpty());
    ZkNameTable::releaseSharedNameTable(); // no table: nothing happens
    EXPECT_EQ(ZkName(u"x-another-name"), ZkNameEnum(3666));
}

TEST_F(SharedNameTable, CleanupVoidsDynamicNames) {
    ZkName name(u"x-before-cleanup");
    ZkNameTable::addRefSharedNameTable();
    ZkNameTable::cleanup();
    EXPECT_TRUE(name.toString().isEmpty());
    EXPECT_EQ(ZkName(u"font"), ZKN_font); // built-in names need no table
}

TEST_F(SharedNameTable, TwoThreadsInternConsistently) {
    constexpr int kNames = 2000;
    std::vector<ZkNameEnum> numbers[2];
    auto worker = [&](int which) {
        numbers[which].resize(kNames * 2);
        for (int i = 0; i < kNames; ++i) {
            // Both threads intern the same dynamic texts, in opposite orders, mixed with
            // built-in look-ups.
            int index = which == 0 ? i : kNames - 1 - i;
            UnicodeString text = UnicodeString(u"thread-name-") +
                                 UnicodeString(char16_t(u'a' + index % 26)) +
                                 UnicodeString::fromUTF8(std::to_string(index));
            numbers[which][size_t(index)] = ZkNameTable::getSharedNameEnum(text);
            numbers[which][size_t(kNames + index)] = ZkNameTable::getSharedNameEnum(
                ZkNameTable::getBuiltinNameString(ZkNameEnum(1 + index % ZKN_BUILTIN_LAST)));
            // Reading back a name while the other thread adds more.
            EXPECT_EQ(ZkNameTable::getSharedNameString(numbers[which][size_t(index)]), text);
        }
    };
    std::thread a(worker, 0), b(worker, 1);
    a.join();
    b.join();
    EXPECT_EQ(numbers[0], numbers[1]);
    std::set<ZkNameEnum> distinct(numbers[0].begin(), numbers[0].begin() + kNames);
    EXPECT_EQ(distinct.size(), size_t(kNames));
    EXPECT_EQ(ZkNameTable::getSharedNameTable()->getNameLast(), ZKN_BUILTIN_LAST + kNames);
    for (int i = 0; i < kNames; ++i)
        EXPECT_EQ(numbers[0][size_t(kNames + i)], 1 + i % ZKN_BUILTIN_LAST);
}
