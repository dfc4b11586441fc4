// Pull mode keeps memory flat: a 50 MB document walked in document order, each finished record
// dropped at once, stays far below what a whole load of the document holds.
#include "domtest.h"

#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <zkcommon/dom/iterator.h>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer runtime's count of live heap bytes (declared in its allocator interface, whose
// header not every compiler installs).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#define ZK_TEST_UNDER_ASAN 1
#endif

using namespace ZkCommonNS;
using namespace domtest;

namespace {

// Bytes the process holds in the heap now.
size_t heapInUse() {
#ifdef ZK_TEST_UNDER_ASAN
    return __sanitizer_get_current_allocated_bytes();
#else
    struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// Writes a document of about `bytes` bytes: records with attributes, nested elements, text
// with references, and an instruction now and then. Returns the number of records.
long writeDocument(const std::string& path, size_t bytes) {
    std::ofstream out(path, std::ios::binary);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<records xmlns=\"urn:records\">\n";
    size_t written = 0;
    long count = 0;
    while (written < bytes) {
        std::string record = "<record id=\"r" + std::to_string(count) +
                             "\" kind=\"plain\"><name>Record number " + std::to_string(count) +
                             "</name><value unit=\"pt\">" + std::to_string(count % 977) +
                             ".5</value><note>Text &amp; more text, caf\xC3\xA9 "
                             "&#x263A;</note></record>\n";
        if (count % 100 == 0)
            record += "<?marker " + std::to_string(count) + "?>\n";
        out << record;
        written += record.size();
        ++count;
    }
    out << "</records>\n";
    return count;
}

} // namespace

TEST(PullMemory, FiftyMegabytesInPullMode) {
#ifdef ZK_TEST_UNDER_ASAN
    const size_t size = 5u << 20; // the sanitizer build walks a smaller document
#else
    const size_t size = 50u << 20;
#endif
    TempDir dir;
    const std::string big = dir.path() + "/big.xml";
    const long records = writeDocument(big, size);
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->setPullMode(true);
    doc->load(UnicodeString::fromUTF8(big));

    // Walk in document order through the loading getters, dropping each record once read, and
    // sample the heap as it goes.
    long elements = 0, nodes = 0;
    size_t peak = 0;
    const size_t base = heapInUse();
    ZkNode* root = doc->getDocumentElement();
    for (ZkNode *child = root->getFirstChild(), *next; child; child = next) {
        ZkTreeIterator inner(child, nullptr, false, ZkTreeIterator::PRE_ORDER);
        while (inner.nextNode())
            ++nodes;
        elements += child->isElementNode();
        next = child->getNextSibling();
        root->removeChild(child);
        if (elements % 256 == 0)
            peak = std::max(peak, std::max(heapInUse(), base) - base);
    }
    EXPECT_EQ(elements, records);
    // Each record: itself, three elements, three texts, and the line end after it; the line
    // end before the first. Instructions aren't reported, and the texts around them join.
    EXPECT_EQ(nodes, records * 8 + 1);
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_FALSE(root->isLoading());

    // A whole load holds every node at once, so it grows with the document: a tenth of the
    // document loaded whole already needs more than the pull walk of all of it.
    const std::string tenth = dir.path() + "/tenth.xml";
    writeDocument(tenth, size / 10);
    const size_t before = heapInUse();
    ZkPtr<ZkDocument> whole(new ZkDocument());
    whole->load(UnicodeString::fromUTF8(tenth));
    const size_t wholeTenth = heapInUse() - before;
    std::cout << "[ pull memory ] pull walk of " << (size >> 20) << " MB: peak " << peak
              << " bytes; whole load of a tenth: " << wholeTenth << " bytes\n";
    EXPECT_LT(peak, wholeTenth);
}
