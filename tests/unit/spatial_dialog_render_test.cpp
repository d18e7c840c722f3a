// A setup dialog changing the record while another thread renders: every
// render must equal the kernel's output for some state the dialog wrote
// (each flag or field read once per render), and the thread sanitizer build
// must see no race.
#include <gtest/gtest.h>

#include <atomic>
#include <algorithm>
#include <thread>
#include <vector>

#include "factories.h"
#include "kit/frame.h"
#include "notify_counter.h"
#include "spatial/emboss/emboss_dialog.h"
#include "spatial/emboss/emboss_kernel.h"
#include "spatial/mirror/mirror_dialog.h"
#include "spatial/mirror/mirror_kernel.h"

namespace zvf::filters {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr int32_t kW = 16, kH = 8;

// An instance of the filter with its setup dialog open.
struct OpenInstance {
    explicit OpenInstance(IVideoFilter* cls) : classObject(cls) {
        EXPECT_EQ(cls->CreateInstance(nullptr, 5, &instance), status::ok);
        EXPECT_EQ(instance->OpenSetup(nullptr), status::ok);
    }
    ~OpenInstance() {
        instance->CloseSetup();
        instance->Release();
        classObject->Release();
    }
    SetupDialog* Dialog() const { return static_cast<FilterBase*>(instance)->Dialog(); }
    IVideoFilter* classObject;
    IFilterInstance* instance = nullptr;
};

Bytes Source() {
    Bytes b(kW * kH * 2);
    for (size_t i = 0; i < b.size(); ++i) b[i] = static_cast<uint8_t>(i * 29 + 3);
    return b;
}

// Field 0 of the whole frame through `kernel`, from a zeroed destination.
template <class Kernel>
Bytes Expected(Kernel kernel) {
    Bytes src = Source(), dst(src.size(), 0);
    host::Frame s(src.data(), kW, kH), d(dst.data(), kW, kH);
    const Rect r{0, 0, kW, kH};
    FieldView v;
    EXPECT_EQ(OpenField(&d, &s, &r, 0, &v), status::ok);
    kernel(v);
    return dst;
}

// Renders field 0 repeatedly on another thread while `change` runs on this
// one; returns how many renders failed or matched none of `allowed`.
template <class Change>
int32_t StrayRendersWhile(IFilterInstance* instance, const std::vector<Bytes>& allowed, Change change) {
    std::atomic<bool> done{false};
    int32_t stray = 0;
    std::thread renderer([&] {
        Bytes src = Source();
        host::Frame s(src.data(), kW, kH);
        const Rect r{0, 0, kW, kH};
        do {
            Bytes dst(src.size(), 0);
            host::Frame d(dst.data(), kW, kH);
            const bool rendered = instance->Render(&d, &s, &r, 0, 0, 0, 0) == status::ok;
            if (!rendered || std::find(allowed.begin(), allowed.end(), dst) == allowed.end()) ++stray;
        } while (!done.load());
    });
    change();
    done = true;
    renderer.join();
    return stray;
}

TEST(DialogWhileRendering, MirrorRendersOnlyStatesTheDialogWrote) {
    test::NotifyCounter notes;
    OpenInstance open(CreateMirror(nullptr));
    auto* dialog = dynamic_cast<MirrorSetupDialog*>(open.Dialog());
    ASSERT_NE(dialog, nullptr);
    std::vector<Bytes> allowed;
    for (int flags = 0; flags < 4; ++flags)
        allowed.push_back(Expected([&](const FieldView& v) { MirrorField(v, flags & 1, flags & 2); }));
    const int32_t stray = StrayRendersWhile(open.instance, allowed, [&] {
        for (int i = 0; i < 400; ++i)
            dialog->Click(i % 2 ? MirrorSetupDialog::kHorizontalBox : MirrorSetupDialog::kVerticalBox, (i / 2) % 2);
    });
    EXPECT_EQ(stray, 0);
    EXPECT_EQ(notes.calls, 400);
    EXPECT_EQ(notes.lastContext, 5u);
}

TEST(DialogWhileRendering, EmbossRendersOnlyStatesTheDialogWrote) {
    test::NotifyCounter notes;
    OpenInstance open(CreateEmboss(nullptr));
    auto* dialog = dynamic_cast<EmbossSetupDialog*>(open.Dialog());
    ASSERT_NE(dialog, nullptr);
    std::vector<Bytes> allowed;
    for (uint32_t dir = 0; dir < 8; ++dir)
        for (uint32_t depth : {1u, 2u})
            allowed.push_back(Expected([&](const FieldView& v) { EmbossField(v, dir, depth); }));
    const int32_t stray = StrayRendersWhile(open.instance, allowed, [&] {
        for (int i = 0; i < 400; ++i) {
            dialog->SelectRadio(EmbossSetupDialog::kFirstRadio + static_cast<uint32_t>(i % 8));
            dialog->SetDepth(1 + (i / 8) % 2);
        }
    });
    EXPECT_EQ(stray, 0);
    EXPECT_EQ(notes.calls, 800);
}

}  // namespace
}  // namespace zvf::filters
