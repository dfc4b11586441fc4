// Tests of the bit access functions of ZkUtil and its BitIterator.
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>

using namespace ZkCommonNS;

TEST(ZkUtilBits, FetchAndPatchByWidth) {
    const unsigned char data[] = {0xA5, 0x3C, 0xF0, 0x12, 0x34, 0x56}; // 1010 0101 0011 1100 ...
    const int bits[] = {1, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 0, 0};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(ZkUtil::fetchBit1(data, i), bits[i]) << i;
    // clang-format off
    const long long fetched[] = {ZkUtil::fetchBit2(data, 0), ZkUtil::fetchBit2(data, 2), ZkUtil::fetchBit4(data, 1),
        ZkUtil::fetchBit4(data, 3), ZkUtil::fetchBit8(data, 2), ZkUtil::fetchBit12(data, 1), ZkUtil::fetchBit12(data, 2),
        ZkUtil::fetchBit16(data, 1), ZkUtil::fetchBit24(data, 1), ZkUtil::fetchBit32(data, 0)};
    const long long expected[] = {2, 1, 0x5, 0xC, 0xF0, 0xCF0, 0x123, 0xF012, 0x123456, 0xA53CF012u};
    // clang-format on
    for (size_t i = 0; i < sizeof expected / sizeof expected[0]; ++i)
        EXPECT_EQ(fetched[i], expected[i]) << i;

    unsigned char patched[2] = {0, 0};
    ZkUtil::patchBit1(patched, 0);
    ZkUtil::patchBit1(patched, 9);
    EXPECT_EQ(patched[0], 0x80);
    EXPECT_EQ(patched[1], 0x40);
    unsigned char two[1] = {0}, four[1] = {0};
    ZkUtil::patchBit2(two, 1);
    EXPECT_EQ(two[0], 0x30);
    ZkUtil::patchBit4(four, 1);
    EXPECT_EQ(four[0], 0x0F);
}

TEST(ZkUtilBitIterator, ReadsAndWritesWithTwoPositions) {
    unsigned char data[2] = {0, 0};
    ZkUtil::BitIterator it(data, 16);
    it.patch(true);
    it.patch(false);
    it.patch(true);
    it.advancePatch(4);
    it.patch(true);
    EXPECT_EQ(it.getPatchPos(), 8);
    EXPECT_EQ(data[0], 0xA1);
    EXPECT_TRUE(it.fetch());
    EXPECT_FALSE(it.fetch());
    EXPECT_EQ(it.fetch(6), 0x21u);
    EXPECT_EQ(it.getFetchPos(), 8);
    it.seekFetch(0);
    EXPECT_EQ(it.fetch(8), 0xA1u);
    it.seekPatch(15);
    EXPECT_FALSE(it.endPatch());
    it.patch(true);
    EXPECT_TRUE(it.endPatch());
    EXPECT_EQ(data[1], 0x01);
    EXPECT_TRUE(it.endFetch(9));
    EXPECT_FALSE(it.endFetch(8));
    it.advanceFetch(8);
    EXPECT_TRUE(it.endFetch());
    // Beyond the end a write is dropped and a read gives 0.
    it.patch(true);
    EXPECT_EQ(it.getPatchPos(), 17);
    EXPECT_EQ(data[1], 0x01);
    EXPECT_FALSE(it.fetch());
    EXPECT_EQ(it.getFetchPos(), 17);
    // A read-only iterator ignores patches.
    const unsigned char constant[1] = {0x0F};
    ZkUtil::BitIterator reader(constant, 8);
    reader.patch(true);
    EXPECT_EQ(reader.fetch(8), 0x0Fu);
}

TEST(ZkUtilBitIterator, CountRunAndResize) {
    const unsigned char data[4] = {0x00, 0x00, 0x0F, 0xFF};
    ZkUtil::BitIterator it(data, 32);
    EXPECT_EQ(it.countRun(false, 100), 20);
    EXPECT_EQ(it.countRun(false, 5), 5);
    EXPECT_EQ(it.countRun(true, 100), 0);
    it.seekFetch(30);
    EXPECT_EQ(it.countRun(true, 100), 2);
    EXPECT_EQ(it.getFetchPos(), 30);
    it.seekFetch(32);
    EXPECT_EQ(it.countRun(true, 100), 0);

    unsigned char wider[3] = {0x00, 0xFF, 0x00};
    it.seekFetch(3);
    it.resizeData(wider, 24);
    EXPECT_EQ(it.getBitCount(), 24);
    EXPECT_EQ(it.getFetchPos(), 3);
    EXPECT_FALSE(it.fetch());
}
