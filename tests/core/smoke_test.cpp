#include <zkcommon/core/name.h>
#include <gtest/gtest.h>
using namespace ZkCommonNS;
TEST(Smoke, Name) { EXPECT_EQ(ZkName(u"#text"), ZKN_H_text); }
