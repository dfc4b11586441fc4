// Links against the library through its umbrella header and checks one name.
#include <cstdio>
#include <zkcommon/zkcommon.h>

int main() {
    using namespace ZkCommonNS;
    ZkName name(u"#text");
    std::printf("%d\n", int(name.getEnum()));
    return name == ZKN_H_text ? 0 : 1;
}
