#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "kit/frame.h"
#include "kit/services.h"
#include "temporal/strobe_freeze/strobe_dialog.h"
#include "temporal/strobe_freeze/strobe_engine.h"
#include "temporal/strobe_freeze/strobe_kernel.h"
#include "zvf/guids.h"

namespace zvf::filters {
namespace {

// ---- cycle decision -------------------------------------------------------

TEST(StrobeDecision, DefaultsPlayFourFramesThenFlashThree) {
    const StrobeRecord defaults;
    for (uint32_t frame = 0; frame < 15; ++frame) {
        const StrobeStep s = DecideStrobe(defaults, frame, true, false);
        const StrobeOutput want = frame % 7 < 4 ? StrobeOutput::PassThrough : StrobeOutput::Color;
        EXPECT_EQ(s.output, want) << frame;
        EXPECT_FALSE(s.capture) << frame;
    }
}

TEST(StrobeDecision, CapturePointsOfTheFreezeModes) {
    struct Case {
        const char* what;
        StrobeRecord record;
        uint32_t frame;
        bool frozenValid, refresh;
        StrobeOutput output;
        bool capture;
    };
    const StrobeRecord freezeBoth{7, 3, 0, strobe_mode::kFirstFreeze, strobe_mode::kSecondFreeze};
    const Case cases[] = {
        {"cycle start captures", freezeBoth, 0, true, false, StrobeOutput::Held, true},
        {"first half holds", freezeBoth, 1, true, false, StrobeOutput::Held, false},
        {"last first-half frame holds", freezeBoth, 3, true, false, StrobeOutput::Held, false},
        {"second half starts with a capture", freezeBoth, 4, true, false, StrobeOutput::Held, true},
        {"second half holds", freezeBoth, 6, true, false, StrobeOutput::Held, false},
        {"next cycle captures", freezeBoth, 7, true, false, StrobeOutput::Held, true},
        {"frame 11 = r 4", freezeBoth, 11, true, false, StrobeOutput::Held, true},
        {"nothing held yet", freezeBoth, 2, false, false, StrobeOutput::Held, true},
        {"refresh requested", freezeBoth, 5, true, true, StrobeOutput::Held, true},
        {"move ignores refresh", StrobeRecord{}, 1, true, true, StrobeOutput::PassThrough, false},
        {"unknown first mode", {7, 3, 0, 2, 1}, 0, true, false, StrobeOutput::Nothing, false},
        {"unknown second mode", {7, 3, 0, 0, 7}, 5, true, false, StrobeOutput::Nothing, false},
        {"duration = interval: all second half", {5, 5, 0, 0, 1}, 0, true, false, StrobeOutput::Color, false},
        {"duration = interval, freeze: r = d = 0", {5, 5, 0, 0, 0}, 10, true, false, StrobeOutput::Held, true},
        {"duration > interval wraps: all first half", {3, 4, 0, 0, 1}, 2, true, false, StrobeOutput::PassThrough,
         false},
        {"interval 1, duration 1", {1, 1, 0, 1, 0}, 9, true, false, StrobeOutput::Held, true},
        {"interval 0 counts frames up to 2^32", {0, 3, 0, 0, 1}, 0xFFFFFFFCu, true, false, StrobeOutput::PassThrough,
         false},
        {"interval 0, last three frames", {0, 3, 0, 0, 1}, 0xFFFFFFFDu, true, false, StrobeOutput::Color, false},
    };
    for (const Case& c : cases) {
        const StrobeStep s = DecideStrobe(c.record, c.frame, c.frozenValid, c.refresh);
        EXPECT_EQ(s.output, c.output) << c.what;
        EXPECT_EQ(s.capture, c.capture) << c.what;
    }
}

// ---- colour conversion ----------------------------------------------------

TEST(StrobeColour, FifteenBitFullRangeConversion) {
    struct Case {
        uint32_t colorref;
        Yuv want;
    };
    const Case cases[] = {
        {0x00EBEBEB, {235, 128, 128}},  // default: grey keeps U = V = 128
        {0x000000FF, {76, 85, 255}},    // red: (9798*255+16384)>>15 = 76; U (16384-1409895)>>15 = -43; V 256 clamps
        {0xFF0000FF, {76, 85, 255}},    // the top byte is not a channel
        {0x0000FF00, {150, 44, 21}},    // green: 4921309>>15; -2751641>>15 = -84; -3482216>>15 = -107
        {0x00FF0000, {29, 255, 107}},   // blue: 969064>>15; U 256 clamps; -662936>>15 = -21
        {0x00000000, {0, 128, 128}},
        {0x00FFFFFF, {255, 128, 128}},  // 8372479>>15 = 255
    };
    for (const Case& c : cases) {
        const Yuv got = ColorRefToYuv(c.colorref);
        EXPECT_EQ(got.y, c.want.y) << std::hex << c.colorref;
        EXPECT_EQ(got.u, c.want.u) << std::hex << c.colorref;
        EXPECT_EQ(got.v, c.want.v) << std::hex << c.colorref;
    }
}

// ---- kernels --------------------------------------------------------------

// A frame of `rows` rows of `width` pixels whose every byte of row y is
// rowValue[y]; one guard byte value elsewhere.
std::vector<uint8_t> Rows(const std::vector<uint8_t>& rowValue, int32_t width) {
    std::vector<uint8_t> f;
    for (uint8_t v : rowValue) f.insert(f.end(), static_cast<size_t>(width) * 2, v);
    return f;
}

TEST(StrobeCapture, SmoothsWithTheOtherFieldsLines) {
    // Row values 0 100 200 40 80 255, two pixels wide (one pair, pitch 4).
    const std::vector<uint8_t> src = Rows({0, 100, 200, 40, 80, 255}, 2);
    struct Case {
        const char* what;
        int32_t firstRow, rows;
        std::vector<uint8_t> want;  // held row values, 0xEE where nothing is written
    };
    const Case cases[] = {
        // (3*0+100)/4, (100+400+40)/4, (240+40)/4
        {"even field, three rows", 0, 3, {25, 0xEE, 135, 0xEE, 70, 0xEE}},
        // (300+200)/4, (200+80+80)/4, (765+80)/4 truncated
        {"odd field, three rows", 1, 3, {0xEE, 125, 0xEE, 90, 0xEE, 211}},
        // first and last formulas only: (3*0+100)/4, (3*200+100)/4
        {"two rows", 0, 2, {25, 0xEE, 175, 0xEE, 0xEE, 0xEE}},
        // a single field row is held unsmoothed
        {"single row at the bottom", 5, 1, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 255}},
        {"single row at the top", 0, 1, {0, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}},
    };
    for (const Case& c : cases) {
        std::vector<uint8_t> held(src.size(), 0xEE);
        CaptureSmoothed(src.data() + c.firstRow * 4, held.data() + c.firstRow * 4, 4, c.rows, 1);
        EXPECT_EQ(held, Rows(c.want, 2)) << c.what;
    }
}

TEST(StrobeCapture, TruncatesFlatStaysFlatAndLeavesTheOddPixel) {
    // Five pixels wide: two pairs, the fifth pixel is outside every pair.
    std::vector<uint8_t> src = Rows({1, 0, 1, 0}, 5);
    std::vector<uint8_t> held(src.size(), 0xEE);
    CaptureSmoothed(src.data(), held.data(), 10, 2, 2);
    for (int x = 0; x < 10; ++x) {
        EXPECT_EQ(held[x], x < 8 ? 0 : 0xEE) << x;       // (3*1+0)/4 = 0
        EXPECT_EQ(held[20 + x], x < 8 ? 0 : 0xEE) << x;  // (3*1+0)/4 = 0
        EXPECT_EQ(held[10 + x], 0xEE) << x;
    }
    src = Rows({3, 3, 4, 1, 3}, 2);
    held.assign(src.size(), 0xEE);
    CaptureSmoothed(src.data(), held.data(), 4, 3, 1);
    EXPECT_EQ(held, Rows({3, 0xEE, 3, 0xEE, 2}, 2));  // (9+3)/4, (3+8+1)/4, (9+1)/4
    const std::vector<uint8_t> flat(6 * 8, 77);
    std::vector<uint8_t> out(flat.size(), 0);
    CaptureSmoothed(flat.data(), out.data(), 8, 3, 2);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(out[y * 8 + x], y % 2 == 0 ? 77 : 0) << y << "," << x;
}

TEST(StrobeKernels, FillAndCopyTouchOnlyTheFieldsRows) {
    std::vector<uint8_t> frame(4 * 10, 0x11);  // five pixels wide, four rows
    FillColor(frame.data() + 10 + 2, 10, 2, 1, {1, 2, 3});
    std::vector<uint8_t> want(frame.size(), 0x11);
    for (int row : {1, 3})
        for (int i = 0; i < 4; ++i) want[row * 10 + 2 + i] = std::array<uint8_t, 4>{1, 2, 1, 3}[i];
    EXPECT_EQ(frame, want);

    std::vector<uint8_t> src(4 * 10);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i);
    std::vector<uint8_t> dst(src.size(), 0xEE);
    CopyFieldRows(dst.data(), src.data(), 10, 2, 10);
    for (size_t i = 0; i < dst.size(); ++i) EXPECT_EQ(dst[i], (i / 10) % 2 == 0 ? src[i] : 0xEE) << i;
}

// ---- the engine with hosts of every kind ----------------------------------

// A host that offers a recording synchronisation service and, when asked, a
// copy service that always fails.
struct FakeHost final : IHost, IFieldSync, IFrameCopy {
    bool offerSync = true;
    bool offerCopy = false;
    std::vector<int32_t> syncCalls;
    int32_t copyCalls = 0;

    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        *out = nullptr;
        if (*iid == iid::IFieldSync && offerSync) *out = static_cast<IFieldSync*>(this);
        if (*iid == iid::IFrameCopy && offerCopy) *out = static_cast<IFrameCopy*>(this);
        return *out != nullptr ? status::ok : status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL CreateObject(uint32_t, uint32_t, const Guid*, void**) override { return status::not_implemented; }
    Status ZVF_CALL Synchronize(int32_t field) override {
        syncCalls.push_back(field);
        return status::ok;
    }
    Status ZVF_CALL CopyFieldRect(IVideoFrame*, const Rect*, IVideoFrame*, const Rect*, int32_t) override {
        ++copyCalls;
        return status::not_implemented;
    }
};

// Frame n of a test sequence: every byte depends on n, row and column.
void Paint(host::Frame& f, uint32_t n) {
    for (size_t i = 0; i < f.Bytes(); ++i) f.Pixels()[i] = static_cast<uint8_t>(i * 7 + n * 31 + (i / 16) * 3);
}

// Renders frames 0..count-1 (both fields, even first) and returns the outputs.
std::vector<std::vector<uint8_t>> RenderSequence(IHost* host, const StrobeRecord& record, uint32_t count,
                                                 int32_t w = 8, int32_t h = 6) {
    StrobeEngine engine;
    engine.Prepare(host);
    host::Frame src(w, h), dst(w, h);
    std::vector<std::vector<uint8_t>> out;
    const Rect all{0, 0, w, h};
    for (uint32_t n = 0; n < count; ++n) {
        Paint(src, n);
        std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
        EXPECT_EQ(engine.Render(host, &dst, &src, &all, n, 0, false, record), status::ok);
        EXPECT_EQ(engine.Render(host, &dst, &src, &all, n, 1, false, record), status::ok);
        out.emplace_back(dst.Pixels(), dst.Pixels() + dst.Bytes());
    }
    return out;
}

TEST(StrobeEngine, SynchronisesAroundTheHeldFrameAndEveryCapture) {
    FakeHost host;
    StrobeEngine engine;
    host::Frame src(4, 4), dst(4, 4);
    const Rect all{0, 0, 4, 4};
    const StrobeRecord freeze{7, 3, 0, strobe_mode::kFirstFreeze, strobe_mode::kSecondFreeze};
    struct Step {
        uint32_t frame;
        int32_t field;
        std::vector<int32_t> calls;
    };
    const Step steps[] = {
        {0, 1, {1, 1, 1, 1}},  // held frame made, then the capture
        {1, 1, {1, 1}},        // held: no capture
        {0, 2, {0, 0, 0, 0}},  // selector 2 is the even field
        {4, 0, {0, 0, 0, 0}},
    };
    for (const Step& s : steps) {
        host.syncCalls.clear();
        ASSERT_EQ(engine.Render(&host, &dst, &src, &all, s.frame, s.field, false, freeze), status::ok);
        EXPECT_EQ(host.syncCalls, s.calls) << "frame " << s.frame << " field " << s.field;
    }
    host.syncCalls.clear();
    ASSERT_EQ(engine.Render(&host, &dst, &src, &all, 5, 0, false, StrobeRecord{}), status::ok);
    EXPECT_EQ(host.syncCalls, (std::vector<int32_t>{0, 0}));
}

TEST(StrobeEngine, HostsWithoutServicesRenderTheSameFrames) {
    host::HostObject kit{host::HostOptions()};
    FakeHost failingCopy;
    failingCopy.offerSync = false;
    failingCopy.offerCopy = true;
    FakeHost syncOnly;
    const StrobeRecord records[] = {
        StrobeRecord{},
        {7, 3, 0x000000FF, strobe_mode::kFirstFreeze, strobe_mode::kSecondFreeze},
        {4, 1, 0x00FF0000, strobe_mode::kFirstFreeze, strobe_mode::kColorFrame},
        {5, 2, 0, strobe_mode::kMove, strobe_mode::kSecondFreeze},
    };
    for (const StrobeRecord& r : records) {
        const auto reference = RenderSequence(&kit, r, 12);
        EXPECT_EQ(RenderSequence(nullptr, r, 12), reference) << "no host";
        EXPECT_EQ(RenderSequence(&failingCopy, r, 12), reference) << "copy service that fails";
        EXPECT_EQ(RenderSequence(&syncOnly, r, 12), reference) << "no copy service";
    }
    EXPECT_GT(failingCopy.copyCalls, 0);
}

TEST(StrobeEngine, PassesThroughWhileTheHostGivesNoFrame) {
    StrobeEngine engine;
    host::Frame src(6, 4), dst(6, 4);
    Paint(src, 3);
    src.RefuseCompatible(true);
    const Rect all{0, 0, 6, 4};
    const StrobeRecord defaults;
    ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 5, 1, false, defaults), status::ok);  // a colour frame
    EXPECT_FALSE(engine.HoldsFrame());
    for (size_t i = 0; i < dst.Bytes(); ++i) EXPECT_EQ(dst.Pixels()[i], (i / 12) % 2 == 1 ? src.Pixels()[i] : 0) << i;
    src.RefuseCompatible(false);  // the next call tries again
    ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 5, 1, false, defaults), status::ok);
    EXPECT_TRUE(engine.HoldsFrame());
    EXPECT_EQ(dst.Pixels()[12], 235);
    EXPECT_EQ(dst.Pixels()[13], 128);
}

TEST(StrobeEngine, EachFieldCapturesItsOwnRowsAfterPrepare) {
    // Starting mid-cycle in a freeze half: nothing is held yet, so both
    // fields capture whichever order they come in.
    const StrobeRecord freeze{7, 3, 0, strobe_mode::kFirstFreeze, strobe_mode::kSecondFreeze};
    for (int32_t first : {0, 1}) {
        StrobeEngine engine;
        host::Frame src(4, 4), dst(4, 4), expected(4, 4);
        Paint(src, 9);
        const Rect all{0, 0, 4, 4};
        ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 2, first, false, freeze), status::ok);
        ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 2, 1 - first, false, freeze), status::ok);
        CaptureSmoothed(src.Pixels(), expected.Pixels(), 8, 2, 2);
        CaptureSmoothed(src.Pixels() + 8, expected.Pixels() + 8, 8, 2, 2);
        EXPECT_EQ(std::vector<uint8_t>(dst.Pixels(), dst.Pixels() + dst.Bytes()),
                  std::vector<uint8_t>(expected.Pixels(), expected.Pixels() + expected.Bytes()))
            << "first field " << first;
    }
}

TEST(StrobeEngine, RefreshAndANewFrameSizeCaptureAgain) {
    const StrobeRecord freeze{7, 3, 0, strobe_mode::kFirstFreeze, strobe_mode::kSecondFreeze};
    StrobeEngine engine;
    host::Frame src(4, 2), dst(4, 2);
    const Rect all{0, 0, 4, 2};
    std::fill_n(src.Pixels(), src.Bytes(), 10);
    ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 0, 0, false, freeze), status::ok);
    std::fill_n(src.Pixels(), src.Bytes(), 90);
    ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 1, 0, false, freeze), status::ok);
    EXPECT_EQ(dst.Pixels()[0], 10);  // held
    ASSERT_EQ(engine.Render(nullptr, &dst, &src, &all, 1, 0, true, freeze), status::ok);
    EXPECT_EQ(dst.Pixels()[0], 90);  // refreshed

    // A bigger frame without a new sequence: the held frame is made again at
    // the new size and captured, never written past its end.
    host::Frame big(16, 8), bigDst(16, 8);
    std::fill_n(big.Pixels(), big.Bytes(), 50);
    const Rect bigAll{0, 0, 16, 8};
    ASSERT_EQ(engine.Render(nullptr, &bigDst, &big, &bigAll, 2, 0, false, freeze), status::ok);
    EXPECT_EQ(bigDst.Pixels()[big.Bytes() - 64], 50);
}

TEST(StrobeEngine, RejectsBadRectanglesBeforeAnything) {
    FakeHost host;
    StrobeEngine engine;
    struct Case {
        const char* what;
        Rect rect;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {"right past the frame", {0, 0, 9, 6}, 0, status::invalid_arg},
        {"bottom past the frame", {0, 0, 8, 7}, 0, status::invalid_arg},
        {"negative left", {-2, 0, 8, 6}, 0, status::invalid_arg},
        {"inverted", {6, 0, 2, 6}, 0, status::invalid_arg},
        {"one pixel wide", {3, 0, 4, 6}, 0, status::fail},
        {"no odd row", {0, 2, 8, 3}, 1, status::fail},
    };
    for (const Case& c : cases) {
        host::Frame src(8, 6), dst(8, 6);
        std::fill_n(dst.Pixels(), dst.Bytes(), 0x11);
        EXPECT_EQ(engine.Render(&host, &dst, &src, &c.rect, 5, c.field, false, StrobeRecord{}), c.expected) << c.what;
        EXPECT_EQ(std::vector<uint8_t>(dst.Pixels(), dst.Pixels() + dst.Bytes()),
                  std::vector<uint8_t>(dst.Bytes(), 0x11))
            << c.what;
    }
    EXPECT_TRUE(host.syncCalls.empty());
    EXPECT_FALSE(engine.HoldsFrame());
}

// ---- dialog and record ----------------------------------------------------

TEST(StrobeDialog, ChangesReachTheRecordAtOnceAndCancelRestoresTheShownValues) {
    StrobeRecord record;
    StrobeSetupDialog dialog(&record);
    dialog.OnShown();
    EXPECT_TRUE(dialog.SwatchEnabled());
    dialog.SetInterval(0);     // below the range
    EXPECT_EQ(record.interval, 1u);
    dialog.SetInterval(250);   // above it
    EXPECT_EQ(record.interval, 100u);
    dialog.SetDuration(12);
    EXPECT_EQ(record.duration, 12u);
    dialog.SetFirstHalfMode(strobe_mode::kFirstFreeze);
    dialog.SetSecondHalfMode(strobe_mode::kSecondFreeze);
    dialog.SetSecondHalfMode(5);  // not a choice: ignored
    EXPECT_EQ(record.firstHalfMode, 1u);
    EXPECT_EQ(record.secondHalfMode, 0u);
    EXPECT_FALSE(dialog.SwatchEnabled());
    dialog.SetFrameColor(0xAA123456);
    EXPECT_EQ(record.frameColor, 0x00123456u);
    EXPECT_EQ(dialog.SwatchColor(), 0x00123456u);
    EXPECT_EQ(dialog.Shown().interval, 7u);
    dialog.Cancel();
    const StrobeRecord defaults;
    EXPECT_EQ(std::memcmp(&record, &defaults, sizeof record), 0);
    EXPECT_EQ(dialog.Working().duration, 3u);
    record.duration = 40;
    dialog.Reload();
    EXPECT_EQ(dialog.Working().duration, 40u);
}

TEST(StrobeRecordDesc, DefaultsAndLayoutMatchTheRecord) {
    std::array<uint8_t, 20> bytes{};
    WriteDefaults(kStrobeRecord, bytes.data());
    const StrobeRecord defaults;
    EXPECT_EQ(std::memcmp(bytes.data(), &defaults, sizeof defaults), 0);
    EXPECT_EQ(kStrobeRecord.payloadSize, sizeof(StrobeRecord));
    EXPECT_EQ(FindField(kStrobeRecord, "secondHalfMode")->offset, offsetof(StrobeRecord, secondHalfMode));
    EXPECT_EQ(FindField(kStrobeRecord, "frameColor")->offset, offsetof(StrobeRecord, frameColor));
}

}  // namespace
}  // namespace zvf::filters
