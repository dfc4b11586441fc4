// Namespace scopes: bindings, shadowing, undeclaring and the order of a scope's bindings.
#include <gtest/gtest.h>
#include <zkcommon/dom/namespacemanager.h>

using namespace ZkCommonNS;

TEST(NamespaceMap, OrderedByPrefixNumber) {
    ZkPtr<ZkNamespaceMap> map(new ZkNamespaceMap);
    ZkName dynamic(u"zz-dynamic-prefix");
    map->setNamespace(dynamic, ZKN_NS_SVG);
    map->setNamespace(ZKN_fo, ZKN_NS_XSL_FO);
    map->setNamespace(ZkName(), ZKN_NS_XHTML);
    ASSERT_EQ(map->getCount(), 3);
    EXPECT_EQ(map->getPrefixAt(0), ZkName());
    EXPECT_EQ(map->getPrefixAt(1), ZKN_fo);
    EXPECT_EQ(map->getPrefixAt(2), dynamic);
    EXPECT_EQ(map->getUriAt(2), ZKN_NS_SVG);
    EXPECT_TRUE(map->getPrefixAt(3).isEmpty());
    EXPECT_TRUE(map->getUriAt(-1).isEmpty());
    EXPECT_EQ(map->getDefaultNamespace(), ZKN_NS_XHTML);

    map->setNamespace(ZKN_fo, ZKN_NS_MATHML); // replaces, keeps one binding
    EXPECT_EQ(map->getCount(), 3);
    EXPECT_EQ(map->getNamespace(ZKN_fo), ZKN_NS_MATHML);
    EXPECT_EQ(map->getPrefix(ZKN_NS_MATHML), ZKN_fo);
    EXPECT_TRUE(map->getPrefix(ZKN_NS_XLINK).isEmpty());

    map->setNamespace(ZKN_svg, ZkName());
    EXPECT_TRUE(map->hasPrefix(ZKN_svg)); // bound, though to an empty URI
    EXPECT_TRUE(map->getNamespace(ZKN_svg).isEmpty());
    EXPECT_FALSE(map->hasPrefix(ZKN_xml));
}

TEST(NamespaceManager, BottomScopeAndRedundantDeclarations) {
    ZkPtr<ZkNamespaceManager> manager(new ZkNamespaceManager);
    EXPECT_EQ(manager->getDepth(), 0);
    EXPECT_EQ(manager->getNamespace(ZKN_xml), ZKN_NS_XML);
    EXPECT_EQ(manager->getNamespace(ZKN_xmlns), ZKN_NS_XMLNS);
    EXPECT_EQ(manager->getPrefix(ZKN_NS_XML), ZKN_xml);
    EXPECT_FALSE(manager->pop());
    EXPECT_EQ(manager->getDepth(), 0);
    EXPECT_EQ(manager->getCurrentMap()->getCount(), 2);
    EXPECT_TRUE(manager->getDefaultNamespace().isEmpty());
    EXPECT_TRUE(manager->isOpen(ZkName(), ZkName())); // the bottom scope counts
    EXPECT_EQ(manager->getMap(1), nullptr);
    EXPECT_EQ(manager->getMap(-1), nullptr);

    // A redundant declaration creates no map.
    manager = new ZkNamespaceManager;
    manager->push();
    manager->declare(ZKN_fo, ZKN_NS_XSL_FO);
    manager->push();
    manager->declare(ZKN_fo, ZKN_NS_XSL_FO);
    EXPECT_EQ(manager->getCurrentMap(), nullptr);
    EXPECT_TRUE(manager->getPrefixAt(0).isEmpty());
    manager->declare(ZKN_xml, ZKN_NS_XML);
    EXPECT_EQ(manager->getCurrentMap(), nullptr);
    EXPECT_EQ(manager->getMap(1)->getCount(), 1);
}

TEST(NamespaceManager, ShadowingUndeclaringAndElementNames) {
    ZkPtr<ZkNamespaceManager> manager(new ZkNamespaceManager);
    manager->push(ZkName(), ZKN_root, ZkName());
    manager->declare(ZKN_fo, ZKN_NS_XSL_FO);
    manager->push(ZkName(), ZKN_block, ZkName());
    manager->declare(ZKN_fo, ZKN_NS_SVG);
    EXPECT_EQ(manager->getNamespace(ZKN_fo), ZKN_NS_SVG);
    EXPECT_EQ(manager->getPrefixAt(0), ZKN_fo);
    EXPECT_EQ(manager->getUriAt(0), ZKN_NS_SVG);
    EXPECT_TRUE(manager->isOpen(ZkName(), ZKN_root));
    EXPECT_FALSE(manager->isOpen(ZKN_fo, ZKN_root));
    EXPECT_TRUE(manager->pop());
    EXPECT_EQ(manager->getNamespace(ZKN_fo), ZKN_NS_XSL_FO);
    EXPECT_FALSE(manager->isOpen(ZkName(), ZKN_block));

    // Undeclaring the default.
    manager = new ZkNamespaceManager;
    manager->push();
    manager->declare(ZkName(), ZKN_NS_XHTML);
    EXPECT_EQ(manager->getDefaultNamespace(), ZKN_NS_XHTML);
    manager->push();
    manager->declare(ZkName(), ZkName());
    EXPECT_TRUE(manager->getNamespace(ZkName()).isEmpty());
    EXPECT_TRUE(manager->getDefaultNamespace().isEmpty());
    EXPECT_EQ(manager->getCurrentMap()->getCount(), 1);
    manager->pop();
    EXPECT_EQ(manager->getNamespace(ZkName()), ZKN_NS_XHTML);

    // The element's own name counts as a binding.
    manager = new ZkNamespaceManager;
    manager->push(ZKN_fo, ZKN_root, ZKN_NS_XSL_FO);
    EXPECT_EQ(manager->getNamespace(ZKN_fo), ZKN_NS_XSL_FO);
    EXPECT_EQ(manager->getPrefix(ZKN_NS_XSL_FO), ZKN_fo);
    EXPECT_EQ(manager->getCurrentName(), ZKN_root);
    // Declaring what the element's own name binds is redundant.
    manager->declare(ZKN_fo, ZKN_NS_XSL_FO);
    EXPECT_EQ(manager->getCurrentMap(), nullptr);
    // An unprefixed element in a namespace is the default there.
    manager->push(ZkName(), ZKN_svg, ZKN_NS_SVG);
    EXPECT_EQ(manager->getNamespace(ZkName()), ZKN_NS_SVG);
    EXPECT_TRUE(manager->getPrefix(ZKN_NS_SVG).isEmpty());
}
