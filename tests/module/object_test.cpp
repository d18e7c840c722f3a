// The filter object interface through the loaded module: QueryInterface,
// reference counts, capabilities and the setup-dialog lifecycle.
#include "module_fixture.h"
#include "zvf/guids.h"

namespace zvf::test {
namespace {

TEST(FilterObject, ClassObjectRefusesTheInstanceInterface) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        for (const Guid& id : {iid::IFilterInstance, iid::IFilterInstanceAlt, iid::IHost}) {
            void* out = reinterpret_cast<void*>(1);
            EXPECT_EQ(m->FilterAt(i)->QueryInterface(&id, &out), status::no_interface);
            EXPECT_EQ(out, nullptr);
        }
        void* unknown = nullptr;
        ASSERT_EQ(m->FilterAt(i)->QueryInterface(&iid::IUnknown, &unknown), status::ok);
        EXPECT_EQ(unknown, static_cast<void*>(m->FilterAt(i)));
        static_cast<IUnknown*>(unknown)->Release();
        EXPECT_EQ(m->FilterAt(i)->QueryInterface(&iid::IVideoFilter, nullptr), status::pointer);
        EXPECT_EQ(m->FilterAt(i)->Reserved10(0), status::not_implemented);
    }
}

TEST(FilterObject, InstanceAnswersBothIdentifiersWithOnePointerAndOneCount) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        IFilterInstance* inst = nullptr;
        ASSERT_EQ(m->FilterAt(i)->CreateInstance(nullptr, 7, &inst), status::ok);
        ASSERT_NE(inst, nullptr);
        EXPECT_EQ(m->LiveObjects(), 28);
        void* a = nullptr;
        void* b = nullptr;
        void* primary = nullptr;
        ASSERT_EQ(inst->QueryInterface(&iid::IFilterInstance, &a), status::ok);
        ASSERT_EQ(inst->QueryInterface(&iid::IFilterInstanceAlt, &b), status::ok);
        ASSERT_EQ(inst->QueryInterface(&iid::IVideoFilter, &primary), status::ok);
        EXPECT_EQ(a, static_cast<void*>(inst));
        EXPECT_EQ(b, static_cast<void*>(inst));
        EXPECT_NE(primary, static_cast<void*>(inst));  // the other table of the same object
        // Both tables share one count: 1 + three QueryInterface references.
        EXPECT_EQ(static_cast<IVideoFilter*>(primary)->AddRef(), 5u);
        EXPECT_EQ(inst->Release(), 4u);
        EXPECT_EQ(static_cast<IVideoFilter*>(primary)->Release(), 3u);
        static_cast<IUnknown*>(a)->Release();
        static_cast<IUnknown*>(b)->Release();
        EXPECT_EQ(m->LiveObjects(), 28);
        EXPECT_EQ(inst->Release(), 0u);
        EXPECT_EQ(m->LiveObjects(), 27) << m->Identity(i).name;
    }
}

TEST(FilterObject, CreateInstanceRejectsANullOutPointer) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    EXPECT_EQ(m->FilterAt(0)->CreateInstance(nullptr, 0, nullptr), status::pointer);
    EXPECT_EQ(m->LiveObjects(), 27);
}

TEST(FilterObject, CapabilityConstants) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        const std::string name = m->Identity(i).name;
        auto inst = m->Create(i);
        ASSERT_TRUE(inst) << name;
        uint32_t expected = 0x102;
        if (name == "Strobe/Freeze" || name == "Motion Blur") expected = 0x106;
        if (name == "Old Movie/Film") expected = 0x006;
        if (name == "Tunnel Vision" || name == "Smooth Blur") expected = 0x002;
        EXPECT_EQ((*inst)->GetCapabilities(), expected) << name;
        EXPECT_EQ((*inst)->PrepareRender(), status::ok) << name;
        EXPECT_EQ((*inst)->EndRender(), status::ok) << name;
    }
}

TEST(SetupLifecycle, StatusCodesThroughOpenShowHideRefreshClose) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        const std::string name = m->Identity(i).name;
        auto inst = m->Create(i);
        ASSERT_TRUE(inst);
        IFilterInstance* f = inst->Get();
        // No dialog: Color Balance, Blur and Smooth Blur count that as idle, the others do not.
        const bool idleWithoutDialog = name == "Color Balance" || name == "Blur" || name == "Smooth Blur";
        EXPECT_EQ(f->IsSetupIdle(), idleWithoutDialog ? 1 : 0) << name;
        EXPECT_EQ(f->ShowSetup(1), status::fail) << name;
        EXPECT_EQ(f->RefreshSetup(), status::pointer) << name;
        EXPECT_EQ(f->CloseSetup(), status::ok) << name;
        EXPECT_EQ(f->OpenSetup(nullptr), status::ok) << name;
        EXPECT_EQ(f->OpenSetup(nullptr), status::ok) << name;  // already open
        EXPECT_EQ(f->ShowSetup(1), status::ok) << name;
        EXPECT_EQ(f->RefreshSetup(), status::ok) << name;
        EXPECT_EQ(f->ShowSetup(0), status::ok) << name;
        EXPECT_EQ(f->CloseSetup(), status::ok) << name;
        EXPECT_EQ(f->RefreshSetup(), status::pointer) << name;
        EXPECT_EQ(f->ShowSetup(1), status::fail) << name;
        // A dialog left open dies with its instance.
        EXPECT_EQ(f->OpenSetup(nullptr), status::ok) << name;
    }
    EXPECT_EQ(m->LiveObjects(), 27);
}

TEST(SetupLifecycle, BlockColorIsIdleOnlyWhileItsDialogIsHidden) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Block Color"));
    ASSERT_TRUE(inst);
    ASSERT_EQ((*inst)->OpenSetup(nullptr), status::ok);
    EXPECT_EQ((*inst)->IsSetupIdle(), 1);
    ASSERT_EQ((*inst)->ShowSetup(1), status::ok);
    EXPECT_EQ((*inst)->IsSetupIdle(), 0);
    ASSERT_EQ((*inst)->ShowSetup(0), status::ok);
    EXPECT_EQ((*inst)->IsSetupIdle(), 1);
}

TEST(Render, UnbuiltFiltersAnswerNotImplementedAndWriteNothing) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        auto inst = m->Create(i);
        ASSERT_TRUE(inst);
        TestFrame src(16, 8, 0x40);
        TestFrame dst(16, 8, 0x11);
        const Status s = inst->RenderField(dst.frame, src.frame, {0, 0, 16, 8}, 0);
        if (s == status::not_implemented) {
            EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11)) << m->Identity(i).name;
        } else {
            EXPECT_EQ(s, status::ok) << m->Identity(i).name;
        }
    }
}

TEST(Render, BadArgumentsAreRejectedBeforeAnythingIsWritten) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Block Color"));
    ASSERT_TRUE(inst);
    struct Case {
        const char* what;
        Rect rect;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {"right past the frame", {0, 0, 17, 8}, 0, status::invalid_arg},
        {"bottom past the frame", {0, 0, 16, 9}, 0, status::invalid_arg},
        {"negative left", {-2, 0, 16, 8}, 0, status::invalid_arg},
        {"negative top", {0, -1, 16, 8}, 0, status::invalid_arg},
        {"right left of left", {8, 0, 6, 8}, 0, status::invalid_arg},
        {"bottom above top", {0, 6, 16, 4}, 0, status::invalid_arg},
        {"width 1", {3, 0, 4, 8}, 0, status::fail},
        {"width 0", {3, 0, 3, 8}, 0, status::fail},
        {"one even row, odd field", {0, 0, 16, 1}, 1, status::fail},
        {"one odd row, even field", {0, 3, 16, 4}, 0, status::fail},
        {"no rows", {0, 4, 16, 4}, 0, status::fail},
    };
    for (const Case& c : cases) {
        TestFrame src(16, 8, 0x40);
        TestFrame dst(16, 8, 0x11);
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.rect, c.field), c.expected) << c.what;
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11)) << c.what;
    }
    TestFrame dst(16, 8, 0x11);
    const Rect all{0, 0, 16, 8};
    EXPECT_EQ((*inst)->Render(nullptr, &dst.frame, &all, 0, 0, 0, 0), status::pointer);
    EXPECT_EQ((*inst)->Render(&dst.frame, &dst.frame, nullptr, 0, 0, 0, 0), status::pointer);
    TestFrame other(8, 8, 0x40);
    EXPECT_EQ((*inst)->Render(&dst.frame, &other.frame, &all, 0, 0, 0, 0), status::invalid_arg);
    EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
}

}  // namespace
}  // namespace zvf::test
