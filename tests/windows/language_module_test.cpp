// Language modules found for real by the Windows module: run under a
// Japanese locale (the Japanese module is used) and a Dutch one (the Dutch
// module has a stale stamp, so the built-in texts stay).
#include <gtest/gtest.h>

#include "kit/host_kit.h"

namespace zvf::test {
namespace {

std::unique_ptr<host::LoadedModule> Load() {
    std::string error;
    auto m = host::LoadedModule::Load(host::DefaultModulePath(), host::HostOptions(), &error);
    EXPECT_TRUE(m) << error;
    return m;
}

TEST(JapaneseLocale, TheJapaneseLanguageModuleGivesTheNames) {
    auto m = Load();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->ResourceLanguage(), "JPN");
    ASSERT_EQ(m->FilterCount(), 27u);
    EXPECT_EQ(m->Identity(0).name, "モノトーン");
    EXPECT_EQ(m->Identity(0).category, "\\色補正\\");
    EXPECT_EQ(m->Identity(23).name, "ブロックカラー");
    EXPECT_EQ(m->Identity(23).identifier, "Velmora Co., Ltd. SolidColor Video Filter");
}

TEST(StaleStampLocale, AModuleWithAnotherStampIsNotUsed) {
    auto m = Load();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->ResourceLanguage(), "");
    ASSERT_EQ(m->FilterCount(), 27u);
    EXPECT_EQ(m->Identity(0).name, "Monotone");
    EXPECT_EQ(m->Identity(23).name, "Block Color");
}

}  // namespace
}  // namespace zvf::test
