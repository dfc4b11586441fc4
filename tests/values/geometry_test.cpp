// Tests of ZkTransMatrix against known products and random inverses, and of ZkPageRange and
// ZkUnicodeRange against a plain set of pages or code points.
#include "support.h"
#include "zkcommon/values/parser.h"
#include "zkcommon/values/ranges.h"
#include "zkcommon/values/transmatrix.h"

#include <bitset>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace ZkCommonNS;

namespace {

::testing::AssertionResult nearMatrix(const ZkTransMatrix& expected, const ZkTransMatrix& actual,
                                      float tol) {
    const float e[] = {expected.getA(), expected.getB(), expected.getC(),
                       expected.getD(), expected.getE(), expected.getF()};
    const float a[] = {actual.getA(), actual.getB(), actual.getC(),
                       actual.getD(), actual.getE(), actual.getF()};
    for (int i = 0; i < 6; ++i)
        if (!(std::fabs(e[i] - a[i]) <= tol))
            return ::testing::AssertionFailure()
                   << "element " << i << ": " << e[i] << " vs " << a[i];
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(ZkTransMatrix, MapsAndMultiplies) {
    ZkTransMatrix scale(2, 0, 0, 3);
    ZkTransMatrix move(1, 0, 0, 1, 10, 20);
    ZkPointT<float> p = (scale * move).translate(1.0f, 1.0f); // scale first, then move
    EXPECT_EQ(12.0f, p.x);
    EXPECT_EQ(23.0f, p.y);
    ZkTransMatrix m = move;
    m.mulLeft(scale);
    EXPECT_EQ(scale * move, m);
    m = scale;
    m.mulRight(move);
    EXPECT_EQ(scale * move, m);
    EXPECT_EQ(ZkPointT<double>(12.0, 23.0), (scale * move).translateD(1.0, 1.0));
    EXPECT_EQ(ZkPointT<float>(12.0f, 23.0f),
              (scale * move).translate(ZkPointT<ZkLength>(ZkLength(1.0f), ZkLength(1.0f))));
    EXPECT_TRUE(ZkTransMatrix().isUnitMatrix(0.0f, false));
    EXPECT_FALSE(move.isUnitMatrix(0.5f, false));
    EXPECT_TRUE(move.isUnitMatrix(0.0f, /*ignoreTranslation=*/true));
    EXPECT_TRUE(ZkTransMatrix(1.5f, 0.5f, -0.5f, 0.5f).isUnitMatrix(0.5f, false)); // inclusive
    ZkTransMatrix zero;
    zero.zero();
    EXPECT_FALSE(zero.isRegularMatrix());
    EXPECT_TRUE(ZkTransMatrix(1, 0, 0, -1).isMirror());
    EXPECT_FALSE(ZkTransMatrix(0, 1, -1, 0).isMirror()); // a rotation
    EXPECT_FLOAT_EQ(1.5707964f, ZkTransMatrix(0, 1, -1, 0).getAngleX());
}

TEST(ZkTransMatrix, InverseOfRotationAndRandomMatrices) {
    ZkTransMatrix rotation(0, 1, -1, 0, 5, 7); // a is 0: the rows swap
    ZkTransMatrix inverse = rotation;
    ASSERT_TRUE(inverse.inverse());
    EXPECT_TRUE(nearMatrix(ZkTransMatrix(), rotation * inverse, 1e-6f));
    EXPECT_TRUE(nearMatrix(ZkTransMatrix(), inverse * rotation, 1e-6f));
    ZkTransMatrix singular(1, 2, 2, 4, 3, 3);
    EXPECT_FALSE(singular.inverse());
    EXPECT_EQ(ZkTransMatrix(), singular);
    EXPECT_EQ(ZkTransMatrix(), ZkTransMatrix(0, 0, 0, 0).reverse());

    std::mt19937 random(42);
    std::uniform_real_distribution<float> value(-10.0f, 10.0f);
    int inverted = 0;
    for (int i = 0; i < 2000; ++i) {
        ZkTransMatrix m(value(random), value(random), value(random), value(random), value(random),
                        value(random));
        if (i % 10 == 0) // exercise the swapped pivot
            m = ZkTransMatrix(0.0f, m.getB(), m.getC(), m.getD(), m.getE(), m.getF());
        double det = double(m.getA()) * double(m.getD()) - double(m.getB()) * double(m.getC());
        if (std::fabs(det) < 0.1)
            continue;
        ZkTransMatrix r = m.reverse();
        ++inverted;
        // m then its inverse maps points back, within float precision.
        ZkPointT<double> there = m.translateD(3.0, -4.0);
        ZkPointT<double> back = r.translateD(there.x, there.y);
        ASSERT_NEAR(3.0, back.x, 1e-2) << i;
        ASSERT_NEAR(-4.0, back.y, 1e-2) << i;
    }
    EXPECT_GT(inverted, 1500);
}

// tests/data/values/ranges.tsv: page and Unicode ranges, whether they read and what was read.
TEST(ZkRanges, TableOfPageAndUnicodeRanges) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/ranges.tsv");
    ASSERT_GT(rows.size(), 25u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        const UnicodeString text = UnicodeString::fromUTF8(row[1]).unescape();
        if (row[0] == "page") {
            ZkPageRange range;
            EXPECT_EQ(row[2] == "ok", range.parsePageRange(text));
            EXPECT_EQ(row[2] == "ok", ZkPageRange::checkPageRange(text));
            std::string out;
            for (const auto& r : range.getRange())
                out += (out.empty() ? "" : " ") + std::to_string(r.first) + "-" +
                       std::to_string(r.second);
            EXPECT_EQ(row[3], out);
        } else {
            ZkUnicodeRange range;
            EXPECT_EQ(row[2] == "ok", range.parseUnicodeRange(text));
            EXPECT_EQ(row[3], utf8(range.toString()));
        }
    }
}

TEST(ZkPageRange, Queries) {
    ZkPageRange range;
    range.parsePageRange(u"9, 2-4");
    EXPECT_EQ(9, range.getFirstPage());
    EXPECT_TRUE(range.inRange(3));
    EXPECT_FALSE(range.inRange(5));
    EXPECT_FALSE(range.isSingle());
    range.parsePageRange(u"7");
    EXPECT_TRUE(range.isSingle());
}

TEST(ZkUnicodeRange, StopsAndReadsValues) {
    ZkUnicodeRange stop;
    const char16_t* end = nullptr;
    const char16_t* text = u"U+4?\?-5";
    EXPECT_FALSE(stop.parseUnicodeRange(text, &end));
    EXPECT_EQ(5, end - text);
    ZkUnicodeRange fromValue;
    EXPECT_TRUE(fromValue.parseUnicodeRange(ZkParser::parseCompound(u"'U+41' , 'U+42-43'")));
    EXPECT_EQ("U+0041-0043", utf8(fromValue.toString()));
    ZkUnicodeRange full;
    full.fullRange();
    EXPECT_TRUE(full.isFullRange());
    EXPECT_EQ("U+0000-10FFFF", utf8(full.toString()));
}

TEST(ZkUnicodeRange, MergesLikeASetOfCodePoints) {
    ZkUnicodeRange touching;
    touching.addRange({0x41, 0x5A});
    touching.addRange({0x5B, 0x60});
    ASSERT_EQ(1u, touching.getRanges().size());
    EXPECT_EQ("U+0041-0060", utf8(touching.toString()));

    // Random ranges on a small plane against a bitset model.
    constexpr int kSize = 512;
    std::mt19937 random(99);
    for (int round = 0; round < 200; ++round) {
        ZkUnicodeRange range;
        std::bitset<kSize> model;
        for (int n = 0; n < 12; ++n) {
            int from = static_cast<int>(random() % kSize);
            int to = std::min(kSize - 1, from + static_cast<int>(random() % 40));
            range.addRange({from, to});
            for (int c = from; c <= to; ++c)
                model.set(c);
        }
        const auto& ranges = range.getRanges();
        for (size_t i = 0; i + 1 < ranges.size(); ++i)
            ASSERT_LT(ranges[i].to + 1, ranges[i + 1].from) << "sorted, disjoint, not touching";
        for (int c = 0; c < kSize; ++c)
            ASSERT_EQ(model.test(c), range.inRange(c)) << "round " << round << " U+" << c;
        // The printed form reads back to the same set.
        ZkUnicodeRange again;
        ASSERT_TRUE(again.parseUnicodeRange(range.toString())) << utf8(range.toString());
        ASSERT_TRUE(again == range) << utf8(range.toString());
    }
}
