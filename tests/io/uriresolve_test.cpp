// Reference resolution against a base (the normal examples of RFC 3986 section 5.4.1, the
// library's file, drive and archive repairs), relative references and containment, from
// tests/data/io/references.tsv.
#include "support.h"
#include "zkcommon/io/uri.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

TEST(UriReferences, ResolveRelativeAndDescendantTable) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/io/references.tsv");
    ASSERT_GT(rows.size(), 90u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1] + " | " + row[2]);
        UnicodeString field[3];
        for (int i = 0; i < 3; ++i)
            field[i] = UnicodeString::fromUTF8(row[static_cast<size_t>(i) + 1]).unescape();
        const std::string& kind = row[0];
        const ZkUri first(field[0], ZkUri::URISTR_URI);
        if (kind == "resolve-auto") {
            EXPECT_EQ(utf8(field[2]), utf8(ZkUri(first, field[1]).toString()));
        } else if (kind.rfind("resolve", 0) == 0) {
            const ZkUri::URISTRTYPE type = kind == "resolve-path"   ? ZkUri::URISTR_FILEPATH
                                           : kind == "resolve-asis" ? ZkUri::URISTR_URI_ASIS
                                                                    : ZkUri::URISTR_URI;
            EXPECT_EQ(utf8(field[2]), utf8(ZkUri(first, field[1], type).toString()));
        } else if (kind == "relative") {
            EXPECT_EQ(utf8(field[2]), utf8(first.getRelativeUri(field[1])));
        } else {
            ASSERT_EQ(kind, "descendant");
            EXPECT_EQ(row[3] == "yes",
                      first.isDescendantOrSelf(ZkUri(field[1], ZkUri::URISTR_URI)));
        }
    }
}
