// Tests of ZkNamedValueMap and its iterator.
#include "zkcommon/values/value.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

using namespace ZkCommonNS;

namespace {

ZkName nameOf(int i) {
    return ZkName(UnicodeString::fromUTF8("zk-map-test-" + std::to_string(i)));
}

} // namespace

TEST(ZkNamedValueMap, SetGetReplaceRemove) {
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    ZkValue out(7);
    EXPECT_FALSE(map->getNamedItemFast(ZkName(ZKN_width), out));
    EXPECT_EQ(out, ZkValue(7));
    map->setNamedItem(ZkName(ZKN_width), ZkValue(10, UnitPt));
    map->setNamedItem(ZkNamedValue(ZkValue(u"auto"), ZkName(ZKN_height)));
    EXPECT_EQ(map->getCount(), 2);
    EXPECT_TRUE(map->hasNamedItem(ZkName(ZKN_width)));
    EXPECT_FALSE(map->hasNamedItem(ZkName(ZKN_color)));
    ZkNamedValue width = map->getNamedItem(ZkName(ZKN_width));
    EXPECT_EQ(width.getName(), ZkName(ZKN_width));
    EXPECT_EQ(width.getIntegerValue(0), 10);
    ZkNamedValue missing = map->getNamedItem(ZkName(ZKN_color));
    EXPECT_TRUE(missing.isNull());
    EXPECT_TRUE(missing.getName().isEmpty());
    map->setNamedItem(ZkName(ZKN_width), ZkValue(20, UnitPt));
    EXPECT_EQ(map->getCount(), 2);
    EXPECT_TRUE(map->getNamedItemFast(ZkName(ZKN_width), out));
    EXPECT_EQ(out.getIntegerValue(0), 20);
    EXPECT_FALSE(map->removeNamedItem(ZkName(ZKN_width), ZkValue(10, UnitPt)));
    EXPECT_TRUE(map->removeNamedItem(ZkName(ZKN_width), ZkValue(20, UnitPt)));
    EXPECT_FALSE(map->removeNamedItem(ZkName(ZKN_width)));
    EXPECT_TRUE(map->removeNamedItem(ZkName(ZKN_height)));
    EXPECT_EQ(map->getCount(), 0);
    EXPECT_TRUE(map->item(0).isNull());
}

TEST(ZkNamedValueMap, GrowsAndKeepsEveryEntry) {
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    const int count = 1000;
    for (int i = 0; i < count; ++i)
        map->setNamedItem(nameOf(i), ZkValue(i));
    EXPECT_EQ(map->getCount(), count);
    for (int i = 0; i < count; ++i) {
        ZkValue out;
        ASSERT_TRUE(map->getNamedItemFast(nameOf(i), out)) << i;
        EXPECT_EQ(out.getIntegerValue(-1), i);
    }
    // Every entry is met once on a walk of the list, and item(i) follows the same order.
    std::map<int, int> seen;
    ZkNamedValueMapIterator it(map.get());
    int index = 0;
    while (it.hasNext()) {
        const ZkNamedValue& entry = it.next();
        EXPECT_EQ(map->item(index).getName(), entry.getName());
        ++seen[entry.getIntegerValue(-1)];
        ++index;
    }
    EXPECT_EQ(index, count);
    EXPECT_EQ(static_cast<int>(seen.size()), count);
    EXPECT_TRUE(it.next().isNull());
    it.setToStart();
    EXPECT_TRUE(it.hasNext());
    for (int i = 0; i < count; i += 2)
        EXPECT_TRUE(map->removeNamedItem(nameOf(i)));
    EXPECT_EQ(map->getCount(), count / 2);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(map->hasNamedItem(nameOf(i)), i % 2 == 1) << i;
}

TEST(ZkNamedValueMap, CloneKeepsTheListOrder) {
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    for (int i = 0; i < 50; ++i)
        map->setNamedItem(nameOf(i), ZkValue(i));
    ZkPtr<ZkNamedValueMap> copy = map->clone();
    ASSERT_EQ(copy->getCount(), 50);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(copy->item(i).getName(), map->item(i).getName());
    copy->setNamedItem(nameOf(0), ZkValue(-1));
    EXPECT_EQ(map->getNamedItem(nameOf(0)).getIntegerValue(99), 0);
    ZkPtr<ZkNamedValueMap> empty(new ZkNamedValueMap());
    EXPECT_EQ(empty->clone()->getCount(), 0);
}

TEST(ZkNamedValueMap, IteratorOverNullAndClear) {
    ZkNamedValueMapIterator none(nullptr);
    EXPECT_FALSE(none.hasNext());
    EXPECT_TRUE(none.next().isNull());
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    map->setNamedItem(ZkName(ZKN_width), ZkValue(1));
    map->clear();
    EXPECT_EQ(map->getCount(), 0);
    map->setNamedItem(ZkName(ZKN_width), ZkValue(2));
    EXPECT_EQ(map->getCount(), 1);
}
