// The filter object base driven directly: identity string families and the
// setup dialog's remembered position.
#include <gtest/gtest.h>

#include "factories.h"
#include "platform.h"
#include "zvf/guids.h"

namespace zvf {
namespace {

constexpr Identity kListed = filters::FamilyB(u"Velmora Co., Ltd. Listed Video Filter", 10264);
constexpr Identity kLazy = filters::FamilyA(u"Velmora Co., Ltd. Lazy Video Filter", 10001, filters::kCategoryColor);
// Ids with no text in the tables: a failed load gives a null string.
constexpr Identity kMissing = filters::FamilyA(u"Velmora Co., Ltd. Missing Video Filter", 9000, 9100);

template <const Identity& kId>
class TestFilter final : public Filter<TestFilter<kId>> {
public:
    static constexpr const Identity& kIdentity = kId;
    explicit TestFilter(IHost* host) : Filter<TestFilter<kId>>(host) {}
    Status ZVF_CALL Render(IVideoFrame*, IVideoFrame*, const Rect*, uint32_t, uint32_t, int32_t, uint32_t) override {
        return status::ok;
    }
};

std::u16string Text(const char16_t* s) { return s ? std::u16string(s) : u"<null>"; }

TEST(IdentityFamilies, ListFamilyFillsWithTheFirstObjectAndEmptiesWithTheLast) {
    using F = TestFilter<kListed>;
    ClassState& cls = F::Class();
    ASSERT_EQ(cls.live.load(), 0);
    IVideoFilter* a = MakeClassObject<F>(nullptr);
    ASSERT_EQ(cls.strings.size(), 7u);
    EXPECT_EQ(Text(a->GetName()), u"Block Color");
    EXPECT_EQ(Text(a->GetCategory()), u"\\");
    EXPECT_EQ(Text(a->GetDescription()), u"Paint the frame in single color");
    EXPECT_EQ(Text(a->GetVendor()), u"Velmora Co.,Ltd.");
    EXPECT_EQ(cls.strings[4], u"The Maintainer");
    EXPECT_EQ(cls.strings[5], u"The Creator");
    EXPECT_EQ(Text(a->GetIdentifier()), u"Velmora Co., Ltd. Listed Video Filter");
    IVideoFilter* b = MakeClassObject<F>(nullptr);
    EXPECT_EQ(cls.strings.size(), 7u);  // filled once
    EXPECT_EQ(a->Release(), 0u);
    EXPECT_EQ(cls.strings.size(), 7u);
    EXPECT_EQ(b->Release(), 0u);
    EXPECT_TRUE(cls.strings.empty());
    IVideoFilter* c = MakeClassObject<F>(nullptr);
    EXPECT_EQ(Text(c->GetName()), u"Block Color");  // loaded again
    c->Release();
}

TEST(IdentityFamilies, LazyFamilyLoadsEachStringOnceAndKeepsIt) {
    using F = TestFilter<kLazy>;
    IVideoFilter* a = MakeClassObject<F>(nullptr);
    const char16_t* name = a->GetName();
    EXPECT_EQ(Text(name), u"Monotone");
    EXPECT_EQ(Text(a->GetCategory()), u"\\Color Correction\\");
    EXPECT_EQ(Text(a->GetVendor()), u"Velmora Co.,Ltd.");
    EXPECT_EQ(Text(a->GetDescription()), u"Apply monotone effect");
    a->Release();
    IVideoFilter* b = MakeClassObject<F>(nullptr);
    EXPECT_EQ(b->GetName(), name);  // the same cached text, kept for the module's life
    b->Release();

    IVideoFilter* missing = MakeClassObject<TestFilter<kMissing>>(nullptr);
    EXPECT_EQ(missing->GetName(), nullptr);
    EXPECT_EQ(missing->GetCategory(), nullptr);
    EXPECT_EQ(Text(missing->GetIdentifier()), u"Velmora Co., Ltd. Missing Video Filter");
    missing->Release();
}

TEST(SetupPlacement, FirstShowCentresOnTheCursorThenTheSavedPlaceSurvivesCloseAndReopen) {
    using F = TestFilter<kListed>;
    IVideoFilter* cls = MakeClassObject<F>(nullptr);
    IFilterInstance* inst = nullptr;
    ASSERT_EQ(cls->CreateInstance(nullptr, 3, &inst), status::ok);
    auto* f = static_cast<F*>(inst);
    ASSERT_EQ(inst->OpenSetup(nullptr), status::ok);
    ASSERT_EQ(inst->ShowSetup(1), status::ok);
    const Rect first = f->Dialog()->View()->WindowRect();
    Point cursor{};
    ASSERT_TRUE(platform::CursorPos(&cursor));
    const Rect monitor = platform::ScreenRect();
    const Point expected =
        PlaceAtCursor({0, 0, first.right - first.left, first.bottom - first.top}, cursor, monitor);
    EXPECT_EQ(first.left, expected.x);
    EXPECT_EQ(first.top, expected.y);

    f->Dialog()->View()->MoveTo(37, 41);  // the user drags it
    ASSERT_EQ(inst->ShowSetup(0), status::ok);
    ASSERT_EQ(inst->ShowSetup(1), status::ok);
    EXPECT_EQ(f->Dialog()->View()->WindowRect().left, 37);
    f->Dialog()->View()->MoveTo(50, 60);
    ASSERT_EQ(inst->CloseSetup(), status::ok);  // closing saves the position too
    ASSERT_EQ(inst->OpenSetup(nullptr), status::ok);
    ASSERT_EQ(inst->ShowSetup(1), status::ok);
    EXPECT_EQ(f->Dialog()->View()->WindowRect().left, 50);
    EXPECT_EQ(f->Dialog()->View()->WindowRect().top, 60);
    EXPECT_EQ(f->HostContext(), 3u);
    inst->Release();
    cls->Release();
}

}  // namespace
}  // namespace zvf
