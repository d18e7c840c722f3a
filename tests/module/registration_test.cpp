#include <set>

#include "module_fixture.h"
#include "zvf/guids.h"

namespace zvf::test {
namespace {

TEST(Registration, RegistersAll27InOrderWithTheirIdentity) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->StartupResult(), 1);
    ASSERT_EQ(m->FilterCount(), 27u);
    EXPECT_EQ(m->LiveObjects(), 27);
    for (size_t i = 0; i < 27; ++i) {
        const host::FilterIdentity id = m->Identity(i);
        EXPECT_EQ(id.name, kRegistrationOrder[i]);
        EXPECT_EQ(id.identifier, std::string("Velmora Co., Ltd. ") + kIdentifierKeys[i] + " Video Filter");
        EXPECT_EQ(id.kind, 1u);
        EXPECT_EQ(id.version, 0x00020000u);
        EXPECT_FALSE(id.description.empty()) << id.name;
        EXPECT_EQ(id.vendor.rfind("Velmora Co.,", 0), 0u) << id.name;
    }
}

TEST(Registration, IdentityStringsOfTheDocumentedFilters) {
    struct Expected {
        const char* name;
        const char* category;
        const char* description;
        const char* vendor;
    };
    const Expected cases[] = {
        {"Block Color", "\\", "Paint the frame in single color", "Velmora Co.,Ltd."},
        {"Blur", "\\", "Add Blur effect to a video", "Velmora Co.,Ltd."},
        {"Smooth Blur", "\\", "Add blur and color correction to a video", "Velmora Co.,Ltd."},
        {"Mirror", "\\", "Add mirror effect", "Velmora Co.,Ltd."},
        {"Emboss", "\\", "Add emboss effects", "Velmora Co.,Ltd."},
        {"Monotone", "\\Color Correction\\", "Apply monotone effect", "Velmora Co.,Ltd."},
        {"Color Balance", "\\Color Correction\\", "Color Balance", "Velmora Co.,Ltd."},
        {"Color Wheel", "\\Color Correction\\", "Adjust color using color wheel", "Velmora Co.,Ltd."},
        {"YUV Curve", "\\Color Correction\\", "Adjust color using YUV Curve", "Velmora Co.,Ltd."},
        {"Video Noise", "\\", "Video Noise", "Velmora Co.,Ltd."},
        {"Strobe/Freeze", "\\", "Freeze frames and cause an strobe effect", "Velmora Co., Ltd."},
        {"Matrix", "\\", "Apply a blur filter to selected areas of the video", "Velmora Co., Ltd."},
        {"Anti Flicker", "\\", "Apply antiflicker filter", "Velmora Co., Ltd."},
    };
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const Expected& e : cases) {
        const auto i = m->Find(e.name);
        ASSERT_TRUE(i) << e.name;
        const host::FilterIdentity id = m->Identity(*i);
        EXPECT_EQ(id.category, e.category) << e.name;
        EXPECT_EQ(id.description, e.description) << e.name;
        EXPECT_EQ(id.vendor, e.vendor) << e.name;
    }
}

TEST(Registration, RefusingRegistryStillRunsEveryFactoryAndKeepsTheObjects) {
    host::HostOptions options;
    options.registryResult = static_cast<Status>(0x80004005u);
    auto m = LoadModule(options);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->StartupResult(), 1);
    EXPECT_EQ(m->FilterCount(), 0u);
    ASSERT_EQ(m->Host().attempted.size(), 27u);
    for (size_t i = 0; i < 27; ++i)
        EXPECT_EQ(host::LoadedModule::IdentityOf(m->Host().attempted[i]).name, kRegistrationOrder[i]);
    // The reference taken before the refused registration is left held.
    EXPECT_EQ(m->LiveObjects(), 27);
}

TEST(Registration, HostWithoutRegistryRegistersNothing) {
    host::HostOptions options;
    options.registry = false;
    auto m = LoadModule(options);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->StartupResult(), 0);
    EXPECT_TRUE(m->Host().attempted.empty());
    EXPECT_EQ(m->LiveObjects(), 0);
    EXPECT_EQ(m->Host().LiveSharedObjects(), 1);  // taken before the registry was asked for
    EXPECT_EQ(m->Shutdown(), 1);
    EXPECT_EQ(m->Host().LiveSharedObjects(), 0);
}

TEST(Registration, ShutdownReleasesTheSharedObjectOnceAndAnswersOneTwice) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->Host().LiveSharedObjects(), 1);
    EXPECT_EQ(m->Shutdown(), 1);
    EXPECT_EQ(m->Host().LiveSharedObjects(), 0);
    EXPECT_EQ(m->Shutdown(), 1);
    EXPECT_EQ(m->Host().LiveSharedObjects(), 0);
}

TEST(Registration, HostWithoutSharedObjectStillRegisters) {
    host::HostOptions options;
    options.sharedObject = false;
    auto m = LoadModule(options);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->StartupResult(), 1);
    EXPECT_EQ(m->FilterCount(), 27u);
}

}  // namespace
}  // namespace zvf::test
