// Strobe/Freeze through the loaded module: identity, blobs, the cycle on a
// frame sequence, both fields at once, and hosts short of services.
#include "blob_builder.h"
#include "module_fixture.h"

namespace zvf::test {
namespace {

const std::string kStrobeId = "Velmora Co., Ltd. Strobe Video Filter";
// Wide enough that a capture row runs through whole vectors of every level
// and a shorter rest.
constexpr int32_t kW = 44, kH = 8;

std::vector<uint8_t> StrobeBlob(uint32_t interval, uint32_t duration, uint32_t colour, uint32_t first,
                                uint32_t second, uint32_t version = 0x00020000) {
    return WordBlob(kStrobeId, {interval, duration, colour, first, second}, version);
}

// Frame n of a sequence: every byte differs with n, row and column.
void Paint(host::Frame& f, uint32_t n) {
    for (size_t i = 0; i < f.Bytes(); ++i) f.Pixels()[i] = static_cast<uint8_t>(i * 5 + n * 37 + (i / 24) * 11 + ((i * i) >> 3));
}

std::vector<uint8_t> Bytes(const host::Frame& f) { return {f.Pixels(), f.Pixels() + f.Bytes()}; }

// The held picture of a whole frame, both fields smoothed with the other
// field's lines: (3c + b) / 4 on a field's first row, (a + 2c + b) / 4 inside,
// (3c + a) / 4 on its last row.
std::vector<uint8_t> Frozen(const host::Frame& f) {
    const int32_t pitch = f.Width() * 2;
    const int32_t h = f.Height();
    std::vector<uint8_t> out(f.Bytes());
    const uint8_t* p = f.Pixels();
    for (int32_t y = 0; y < h; ++y) {
        const bool first = y < 2;
        const bool last = y >= h - 2;
        for (int32_t x = 0; x < pitch; ++x) {
            const int c = p[y * pitch + x];
            const int a = first ? c : p[(y - 1) * pitch + x];
            const int b = last ? c : p[(y + 1) * pitch + x];
            out[static_cast<size_t>(y) * pitch + x] = static_cast<uint8_t>((a + 2 * c + b) >> 2);
        }
    }
    return out;
}

std::vector<uint8_t> Flat(const host::Frame& f, uint8_t y, uint8_t u, uint8_t v) {
    std::vector<uint8_t> out(f.Bytes());
    for (size_t i = 0; i < out.size(); i += 4) {
        out[i] = y;
        out[i + 1] = u;
        out[i + 2] = y;
        out[i + 3] = v;
    }
    return out;
}

struct Sequence {
    std::vector<std::vector<uint8_t>> sources, outputs;
};

// Renders frames 0..count-1 through one fresh instance.
Sequence Render(host::LoadedModule& m, const std::vector<uint8_t>* blob, uint32_t count, bool twoThreads,
                bool prepare = true, uint32_t start = 0) {
    auto inst = m.Create(*m.Find("Strobe/Freeze"), blob);
    EXPECT_TRUE(inst);
    if (prepare) {
        EXPECT_EQ((*inst)->PrepareRender(), status::ok);
    }
    host::Frame src(kW, kH), dst(kW, kH);
    Sequence s;
    for (uint32_t n = start; n < start + count; ++n) {
        Paint(src, n);
        std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
        EXPECT_EQ(inst->RenderFrame(dst, src, n, twoThreads), status::ok);
        s.sources.push_back(Bytes(src));
        s.outputs.push_back(Bytes(dst));
    }
    return s;
}

TEST(StrobeFreeze, IdentityAndCapabilities) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t i = *m->Find("Strobe/Freeze");
    const host::FilterIdentity id = m->Identity(i);
    EXPECT_EQ(id.identifier, kStrobeId);
    EXPECT_EQ(id.vendor, "Velmora Co., Ltd.");
    EXPECT_EQ(id.description, "Freeze frames and cause an strobe effect");
    EXPECT_EQ(id.version, 0x00020000u);
    auto inst = m->Create(i);
    EXPECT_EQ((*inst)->GetCapabilities(), 0x106u);
}

TEST(StrobeFreeze, DefaultsPlayFourFramesFlashThreeAndPlayAgain) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const Sequence s = Render(*m, nullptr, 8, false);
    host::Frame shape(kW, kH);
    for (uint32_t n = 0; n < 8; ++n) {
        if (n >= 4 && n <= 6)
            EXPECT_EQ(s.outputs[n], Flat(shape, 235, 128, 128)) << "frame " << n;
        else
            EXPECT_EQ(s.outputs[n], s.sources[n]) << "frame " << n;
    }
}

TEST(StrobeFreeze, PureRedColourFrame) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = StrobeBlob(2, 1, 0x000000FF, 0, 1);
    const Sequence s = Render(*m, &blob, 2, false);
    host::Frame shape(kW, kH);
    EXPECT_EQ(s.outputs[0], s.sources[0]);
    EXPECT_EQ(s.outputs[1], Flat(shape, 76, 85, 255));
}

TEST(StrobeFreeze, FreezeHalvesHoldTheSmoothedCaptures) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = StrobeBlob(7, 3, 0, 1, 0);
    const Sequence s = Render(*m, &blob, 10, false);
    const uint32_t capturedAt[10] = {0, 0, 0, 0, 4, 4, 4, 7, 7, 7};
    host::Frame f(kW, kH);
    for (uint32_t n = 0; n < 10; ++n) {
        std::copy(s.sources[capturedAt[n]].begin(), s.sources[capturedAt[n]].end(), f.Pixels());
        EXPECT_EQ(s.outputs[n], Frozen(f)) << "frame " << n;
    }
}

TEST(StrobeFreeze, RefreshFlagCapturesTheCurrentPicture) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = StrobeBlob(7, 3, 0, 1, 0);
    auto inst = m->Create(*m->Find("Strobe/Freeze"), &blob);
    host::Frame src(kW, kH), dst(kW, kH);
    Paint(src, 0);
    ASSERT_EQ(inst->RenderFrame(dst, src, 0), status::ok);
    Paint(src, 1);
    ASSERT_EQ(inst->RenderFrame(dst, src, 1, false, 1), status::ok);
    EXPECT_EQ(Bytes(dst), Frozen(src));
}

TEST(StrobeFreeze, OutOfRangeValuesLoadAsTheyAre) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    // Mode 2 in the first half: the call succeeds and writes nothing.
    const std::vector<uint8_t> blob = StrobeBlob(0, 3, 0, 2, 1);
    auto inst = m->Create(*m->Find("Strobe/Freeze"), &blob);
    std::vector<uint8_t> saved;
    ASSERT_EQ(inst->Save(&saved), status::ok);
    EXPECT_EQ(saved, blob);
    TestFrame src(4, 4, 0x40), dst(4, 4, 0x11);
    EXPECT_EQ(inst->RenderFrame(dst.frame, src.frame, 9), status::ok);
    EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(32, 0x11));
}

TEST(StrobeFreeze, BlobLayoutAndLoadChecks) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t i = *m->Find("Strobe/Freeze");
    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(i)->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2 * kStrobeId.size() + 4 + 32);
    EXPECT_EQ(saved, StrobeBlob(7, 3, 0x00EBEBEB, 0, 1));

    const std::vector<uint8_t> custom = StrobeBlob(9, 4, 0x00102030, 1, 0);
    std::vector<uint8_t> shortByOne(custom.begin(), custom.end() - 1);
    const std::vector<uint8_t> defaults = StrobeBlob(7, 3, 0x00EBEBEB, 0, 1);
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        const std::vector<uint8_t>& saved;
    };
    const Case cases[] = {
        {"custom values", custom, custom},
        {"one byte short", shortByOne, defaults},
        {"later version", StrobeBlob(9, 4, 0x00102030, 1, 0, 0x00020001), defaults},
        {"earlier version", StrobeBlob(9, 4, 0x00102030, 1, 0, 0x00010000), StrobeBlob(9, 4, 0x00102030, 1, 0)},
        {"another filter's identifier",
         WordBlob("Velmora Co., Ltd. AntiFlicker Video Filter", {9, 4, 0x00102030, 1, 0}), defaults},
        {"another tag", WordBlob(kStrobeId, {9, 4, 0x00102030, 1, 0}, 0x00020000, 0x00010001), defaults},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(i, &c.blob);
        ASSERT_TRUE(inst) << c.what;
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok) << c.what;
        EXPECT_EQ(again, c.saved) << c.what;
    }
}

TEST(StrobeFreeze, BothFieldsAtOnceGiveTheFramesOfOneAfterTheOther) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<std::vector<uint8_t>> blobs = {
        StrobeBlob(7, 3, 0x00EBEBEB, 0, 1), StrobeBlob(7, 3, 0, 1, 0), StrobeBlob(5, 2, 0x00FF0000, 1, 1),
        StrobeBlob(4, 3, 0, 0, 0),
    };
    for (const auto& blob : blobs) {
        for (bool prepare : {true, false}) {
            // Starting mid-cycle, a freeze half has nothing held yet.
            for (uint32_t start : {0u, 2u, 6u}) {
                const Sequence one = Render(*m, &blob, 12, false, prepare, start);
                for (int run = 0; run < 3; ++run)
                    EXPECT_EQ(Render(*m, &blob, 12, true, prepare, start).outputs, one.outputs)
                        << "start " << start << ", run " << run;
            }
        }
    }
}

TEST(StrobeFreeze, HostsShortOfServicesRenderTheSameFrames) {
    auto full = LoadModule();
    ASSERT_TRUE(full);
    const std::vector<uint8_t> blob = StrobeBlob(5, 2, 0, 1, 0);
    const Sequence reference = Render(*full, &blob, 10, false);
    full.reset();
    for (int variant = 0; variant < 3; ++variant) {
        host::HostOptions options;
        options.fieldSync = variant == 1;
        options.frameCopy = variant == 2;
        auto m = LoadModule(options);
        ASSERT_TRUE(m);
        EXPECT_EQ(Render(*m, &blob, 10, false).outputs, reference.outputs) << "variant " << variant;
        EXPECT_EQ(Render(*m, &blob, 10, true).outputs, reference.outputs) << "variant " << variant << ", two threads";
    }
}

TEST(StrobeFreeze, NoFrameFromTheHostPassesThrough) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Strobe/Freeze"));
    host::Frame src(8, 4), dst(8, 4);
    Paint(src, 3);
    src.RefuseCompatible(true);
    ASSERT_EQ(inst->RenderFrame(dst, src, 5), status::ok);  // a colour frame when the host has a frame to give
    EXPECT_EQ(Bytes(dst), Bytes(src));
}

TEST(StrobeFreeze, HeldFrameIsDroppedByPrepareRenderAndWithTheInstance) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const int32_t before = host::Frame::LiveCompatibleFrames();
    {
        auto inst = m->Create(*m->Find("Strobe/Freeze"));
        TestFrame src(8, 4, 1), dst(8, 4);
        ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame, 0), status::ok);
        EXPECT_EQ(host::Frame::LiveCompatibleFrames(), before + 1);
        ASSERT_EQ((*inst)->PrepareRender(), status::ok);
        EXPECT_EQ(host::Frame::LiveCompatibleFrames(), before);
        ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame, 1), status::ok);
        EXPECT_EQ(host::Frame::LiveCompatibleFrames(), before + 1);
        ASSERT_EQ((*inst)->EndRender(), status::ok);
    }
    EXPECT_EQ(host::Frame::LiveCompatibleFrames(), before);
}

TEST(StrobeFreeze, RectanglesOutsideTheFrameAreRejected) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Strobe/Freeze"));
    const Rect cases[] = {{0, 0, 17, 8}, {0, 0, 16, 9}, {-2, 0, 16, 8}, {0, -1, 16, 8}, {8, 0, 6, 8}};
    for (const Rect& r : cases) {
        for (uint32_t frame : {0u, 5u}) {
            TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
            EXPECT_EQ(inst->RenderField(dst.frame, src.frame, r, 0, frame), status::invalid_arg);
            EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
        }
    }
    TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
    EXPECT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 16, 1}, 1), status::fail);
    EXPECT_EQ(inst->RenderField(dst.frame, src.frame, {5, 0, 6, 8}, 0, 5), status::fail);
    EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
}

}  // namespace
}  // namespace zvf::test
