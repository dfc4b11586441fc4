// Fuzzes ZkMemStream: the input chooses a block size and a lazily read start, then is read as a
// program of writes, seeks, reads, searches, line skips and cuts, each checked against a
// std::string model of the content with its two positions.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <zkcommon/io/memstream.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

class Program {
public:
    Program(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    bool done() const { return m_at >= m_size; }
    uint8_t next() { return m_at < m_size ? m_data[m_at++] : 0; }
    std::string bytes(size_t length) {
        length = std::min(length, m_size - std::min(m_at, m_size));
        std::string text(reinterpret_cast<const char*>(m_data + m_at), length);
        m_at += length;
        return text;
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

struct Model {
    std::string content;
    size_t get = 0;
    size_t put = 0;
};

uint32_t checksum(const std::string& content) {
    uint32_t sum = 0;
    for (size_t i = 0; i < content.size(); i += 4) {
        uint32_t word = 0;
        for (size_t j = i; j < i + 4; ++j)
            word = word << 8 | (j < content.size() ? static_cast<uint8_t>(content[j]) : 0u);
        sum += word;
    }
    return sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Program program(data, size);
    const uint64_t grow = 1 + program.next() % 16;
    Model model;
    model.content = program.bytes(program.next() % 64);
    ZkMemStream stream(new std::istringstream(model.content), grow, true);
    for (int step = 0; step < 200 && !program.done(); ++step) {
        stream.clear();
        const size_t length = model.content.size();
        const uint8_t op = program.next();
        const size_t where = program.next() % (length + 1);
        switch (op % 8) {
        case 0: {
            const std::string text = program.bytes(op / 8);
            stream.write(text.data(), static_cast<std::streamsize>(text.size()));
            model.content.replace(model.put, std::min(text.size(), length - model.put), text);
            model.put += text.size();
            break;
        }
        case 1:
            check(static_cast<bool>(stream.seekg(static_cast<std::streamoff>(where))));
            model.get = where;
            break;
        case 2:
            check(static_cast<bool>(stream.seekp(static_cast<std::streamoff>(where))));
            model.put = where;
            break;
        case 3: {
            std::string got(op / 8, '\0');
            stream.read(&got[0], static_cast<std::streamsize>(got.size()));
            got.resize(static_cast<size_t>(stream.gcount()));
            check(got == model.content.substr(model.get, got.size()));
            check(got.size() == std::min<size_t>(op / 8, length - model.get));
            model.get += got.size();
            break;
        }
        case 4:
        case 5: {
            const std::string pattern = program.bytes(1 + op / 64);
            const bool search = op % 8 == 4;
            const bool found = search ? stream.searchSeek(pattern.data(), pattern.size())
                                      : stream.skipSeek(pattern.data(), pattern.size());
            const size_t hit = search
                                   ? model.content.find(pattern, model.get)
                                   : (model.content.compare(model.get, pattern.size(), pattern) == 0
                                          ? model.get
                                          : std::string::npos);
            check(found == (hit != std::string::npos && !pattern.empty()));
            if (found)
                model.get = search ? hit : hit + pattern.size();
            break;
        }
        case 6: {
            stream.seekEOL();
            size_t at = model.content.find_first_of("\r\n", model.get);
            at = at == std::string::npos ? length : model.content.find_first_not_of("\r\n", at);
            model.get = at == std::string::npos ? length : at;
            break;
        }
        default:
            stream.trim(where);
            model.content.resize(std::min(where, length));
            model.get = std::min(model.get, model.content.size());
            model.put = std::min(model.put, model.content.size());
            break;
        }
        stream.clear();
        check(stream.tellg() == std::streampos(static_cast<std::streamoff>(model.get)));
        check(stream.tellp() == std::streampos(static_cast<std::streamoff>(model.put)));
    }
    std::string content;
    stream.appendToString(content);
    check(content == model.content);
    check(stream.calcOTFTableChecksum() == checksum(model.content));
    return 0;
}
