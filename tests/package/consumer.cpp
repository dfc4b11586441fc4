// Links against the library through its umbrella header and checks one name.
#include <zkcommon/zkcommon.h>

#include <cstdio>

int main() {
    using namespace ZkCommonNS;
    ZkName name(u"#text");
    std::printf("%d\n", int(name.getEnum()));
    return name == ZKN_H_text ? 0 : 1;
}
