// Anti Flicker through the loaded module: identity, blobs, the blend of whole
// frames, both fields at once, and hosts without a synchronisation service.
#include <thread>

#include "blob_builder.h"
#include "module_fixture.h"

namespace zvf::test {
namespace {

const std::string kAntiFlickerId = "Velmora Co., Ltd. AntiFlicker Video Filter";

std::vector<uint8_t> PowerBlob(uint32_t power, uint32_t version = 0x00020000) {
    return WordBlob(kAntiFlickerId, {power}, version);
}

std::vector<uint8_t> Bytes(const host::Frame& f) { return {f.Pixels(), f.Pixels() + f.Bytes()}; }

void Paint(host::Frame& f, uint32_t n) {
    for (size_t i = 0; i < f.Bytes(); ++i)
        f.Pixels()[i] = static_cast<uint8_t>(i * 3 + n * 41 + (i / 20) * 29 + ((i * i) >> 4));
}

// The [1 2 1] blend of one frame at power 100, each field with the other
// field's rows of the same frame; two-row regions keep their second row.
std::vector<uint8_t> Blended(const host::Frame& f, const std::vector<uint8_t>& before) {
    const int32_t pitch = f.Width() * 2;
    const int32_t h = f.Height();
    std::vector<uint8_t> out = before;
    const uint8_t* p = f.Pixels();
    for (int32_t y = 0; y < h; ++y) {
        const int32_t fieldRows = (h - (y & 1) + 1) / 2;
        const int32_t k = y / 2;
        if (fieldRows == 2 && k == 1) continue;
        for (int32_t x = 0; x < pitch; ++x) {
            const int c = p[y * pitch + x];
            int v;
            if (fieldRows == 1)
                v = c;
            else if (k == 0)
                v = (c * 4096 + p[(y + 1) * pitch + x] * 4096) >> 13;
            else if (k == fieldRows - 1)
                v = (c * 4096 + p[(y - 1) * pitch + x] * 4096) >> 13;
            else
                v = ((p[(y - 1) * pitch + x] + p[(y + 1) * pitch + x]) * 4096 + c * 8192) >> 14;
            out[static_cast<size_t>(y) * pitch + x] = static_cast<uint8_t>(v);
        }
    }
    return out;
}

TEST(AntiFlicker, IdentityAndCapabilities) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t i = *m->Find("Anti Flicker");
    const host::FilterIdentity id = m->Identity(i);
    EXPECT_EQ(id.identifier, kAntiFlickerId);
    EXPECT_EQ(id.vendor, "Velmora Co., Ltd.");
    EXPECT_EQ(id.description, "Apply antiflicker filter");
    EXPECT_EQ((*m->Create(i))->GetCapabilities(), 0x102u);
}

TEST(AntiFlicker, AlternatingLinesBecome127) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Anti Flicker"));
    TestFrame src(6, 8), dst(6, 8, 0x11);
    for (int y = 1; y < 8; y += 2) std::fill_n(src.Row(y), 12, 255);
    ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame), status::ok);
    EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(6 * 8 * 2, 127));
}

TEST(AntiFlicker, WholeFramesMatchTheBlendAtAnySize) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (int32_t h : {1, 2, 3, 4, 5, 9}) {
        for (bool twoThreads : {false, true}) {
            auto inst = m->Create(*m->Find("Anti Flicker"));
            host::Frame src(10, h);
            TestFrame dst(10, h, 0x5A);
            Paint(src, static_cast<uint32_t>(h));
            const std::vector<uint8_t> before = dst.Bytes();
            ASSERT_EQ(inst->RenderFrame(dst.frame, src, 0, twoThreads), h == 1 ? status::fail : status::ok) << h;
            if (h == 1) {
                // Only the even row exists: it is copied; the odd field has no row.
                EXPECT_EQ(dst.Bytes(), Bytes(src));
                continue;
            }
            EXPECT_EQ(dst.Bytes(), Blended(src, before)) << "height " << h << (twoThreads ? ", two threads" : "");
        }
    }
}

TEST(AntiFlicker, PowerZeroCopiesAndStoredPowerLoads) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t i = *m->Find("Anti Flicker");
    const std::vector<uint8_t> zero = PowerBlob(0);
    auto inst = m->Create(i, &zero);
    host::Frame src(8, 6);
    TestFrame dst(8, 6);
    Paint(src, 1);
    ASSERT_EQ(inst->RenderFrame(dst.frame, src), status::ok);
    EXPECT_EQ(dst.Bytes(), Bytes(src));

    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(i)->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2 * kAntiFlickerId.size() + 4 + 16);
    EXPECT_EQ(saved, PowerBlob(100));
    std::vector<uint8_t> shortByOne = PowerBlob(40);
    shortByOne.pop_back();
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        uint32_t power;
    };
    const Case cases[] = {
        {"power 40", PowerBlob(40), 40},
        {"power 250, loaded as it is", PowerBlob(250), 250},
        {"one byte short", shortByOne, 100},
        {"later version", PowerBlob(40, 0x00020001), 100},
        {"Strobe/Freeze's identifier", WordBlob("Velmora Co., Ltd. Strobe Video Filter", {40}), 100},
    };
    for (const Case& c : cases) {
        std::vector<uint8_t> again;
        ASSERT_EQ(m->Create(i, &c.blob)->Save(&again), status::ok) << c.what;
        EXPECT_EQ(again, PowerBlob(c.power)) << c.what;
    }
}

// A host that decodes every frame into the same source buffer: the field
// rendered first sees the other field's rows of the same frame whether the
// fields run one after the other or at once.
std::vector<std::vector<uint8_t>> RenderReusedBuffer(host::LoadedModule& m, bool twoThreads, uint32_t power) {
    const std::vector<uint8_t> blob = PowerBlob(power);
    auto inst = m.Create(*m.Find("Anti Flicker"), &blob);
    EXPECT_EQ((*inst)->PrepareRender(), status::ok);
    host::Frame src(14, 10), dst(14, 10);
    std::vector<std::vector<uint8_t>> out;
    for (uint32_t n = 0; n < 6; ++n) {
        Paint(src, n);
        EXPECT_EQ(inst->RenderFrame(dst, src, n, twoThreads), status::ok);
        out.push_back(Bytes(dst));
    }
    EXPECT_EQ((*inst)->EndRender(), status::ok);
    return out;
}

TEST(AntiFlicker, BothFieldsAtOnceGiveTheFramesOfOneAfterTheOther) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (uint32_t power : {100u, 37u, 0u}) {
        const auto one = RenderReusedBuffer(*m, false, power);
        for (int run = 0; run < 4; ++run) EXPECT_EQ(RenderReusedBuffer(*m, true, power), one) << power;
    }
}

TEST(AntiFlicker, ScalarHostGivesTheSameFrames) {
    // A host reporting no processor features gets the scalar rows.
    auto fast = LoadModule();
    ASSERT_TRUE(fast);
    const auto reference = RenderReusedBuffer(*fast, false, 73);
    fast.reset();
    host::HostOptions options;
    options.processorFeatures = 0;
    auto scalar = LoadModule(options);
    ASSERT_TRUE(scalar);
    EXPECT_EQ(RenderReusedBuffer(*scalar, false, 73), reference);
}

TEST(AntiFlicker, FieldsOfSeparateFramesBlendWithThePreviousFrameWhenRunInTurn) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Anti Flicker"));
    host::Frame a(4, 6), b(4, 6);
    std::fill_n(a.Pixels(), a.Bytes(), 0);
    std::fill_n(b.Pixels(), b.Bytes(), 200);
    TestFrame dst(4, 6);
    ASSERT_EQ(inst->RenderFrame(dst.frame, a, 0), status::ok);
    // Frame 1's even field runs first and meets frame 0's odd rows: 200 and 0 give 100.
    ASSERT_EQ(inst->RenderFrame(dst.frame, b, 1), status::ok);
    for (int y = 0; y < 6; ++y) EXPECT_EQ(dst.Row(y)[0], y % 2 == 0 ? 100 : 200) << y;
    // Both at once: each field waits for the other's source of the same frame.
    ASSERT_EQ(inst->RenderFrame(dst.frame, a, 2, true), status::ok);
    ASSERT_EQ(inst->RenderFrame(dst.frame, b, 3, true), status::ok);
    for (int y = 0; y < 6; ++y) EXPECT_EQ(dst.Row(y)[0], 200) << y;
}

TEST(AntiFlicker, HostWithoutSynchronisationStillBlends) {
    host::HostOptions options;
    options.fieldSync = false;
    auto m = LoadModule(options);
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Anti Flicker"));
    TestFrame src(6, 8), dst(6, 8, 0x11);
    for (int y = 1; y < 8; y += 2) std::fill_n(src.Row(y), 12, 255);
    ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame), status::ok);
    EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(6 * 8 * 2, 127));
    // Without the pairing, fields on two threads may meet either frame's
    // rows; what matters is that nothing breaks.
    for (int n = 0; n < 20; ++n) EXPECT_EQ(inst->RenderFrame(dst.frame, src.frame, n, true), status::ok);
}

TEST(AntiFlicker, RectanglesOutsideTheFrameAreRejected) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Anti Flicker"));
    const Rect cases[] = {{0, 0, 17, 8}, {0, 0, 16, 9}, {-2, 0, 16, 8}, {0, -1, 16, 8}, {0, 6, 16, 4}};
    for (const Rect& r : cases) {
        for (int32_t field : {0, 1}) {
            TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
            EXPECT_EQ(inst->RenderField(dst.frame, src.frame, r, field), status::invalid_arg);
            EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
        }
    }
}

}  // namespace
}  // namespace zvf::test
