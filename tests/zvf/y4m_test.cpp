// Y4M headers, plane packing and the reader and writer over real streams.
#include <gtest/gtest.h>

#include <cstring>

#include "errors.h"
#include "video_io.h"
#include "y4m.h"
#include "zvf_test_util.h"

namespace zvf::cli {
namespace {

TEST(Y4mHeader, TagsAndInterlaceFlags) {
    struct Case {
        const char* line;
        int32_t w, h;
        uint32_t property;
    } cases[] = {
        {"YUV4MPEG2 W720 H576 F25:1 It A16:15 C422", 720, 576, 1},
        {"YUV4MPEG2 W720 H480 F30000:1001 Ib A10:11 C422 XYSCSS=422", 720, 480, 0},
        {"YUV4MPEG2 C422 H2 W4 Ip", 4, 2, 1},
        {"YUV4MPEG2 W1920 H1080 Im C422 XCOLORRANGE=LIMITED Xanything", 1920, 1080, 1},
        {"YUV4MPEG2 W2 H1 C422", 2, 1, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const VideoFormat f = ParseY4mHeader(c.line);
        EXPECT_EQ(f.width, c.w);
        EXPECT_EQ(f.height, c.h);
        EXPECT_EQ(f.frameProperty, c.property);
        // Every tag comes back verbatim and in order.
        EXPECT_EQ(Y4mHeaderLine(f), std::string(c.line) + "\n");
    }
}

TEST(Y4mHeader, RefusalsNameTheProblem) {
    struct Case {
        const char* line;
        const char* message;
    } cases[] = {
        {"YUV4MPEG W4 H2 C422", "does not start with YUV4MPEG2"},
        {"", "does not start with YUV4MPEG2"},
        {"YUV4MPEG2 W4 H2", "no C tag means 4:2:0"},
        {"YUV4MPEG2 W4 H2 C420jpeg", "'C420jpeg'"},
        {"YUV4MPEG2 W4 H2 C422p10", "'C422p10'"},
        {"YUV4MPEG2 W4 H2 C444", "only 8-bit 4:2:2"},
        {"YUV4MPEG2 W4 C422", "no W or H tag"},
        {"YUV4MPEG2 Wx H2 C422", "tag 'Wx'"},
        {"YUV4MPEG2 W0 H2 C422", "tag 'W0'"},
        {"YUV4MPEG2 W4 H99999 C422", "tag 'H99999'"},
        {"YUV4MPEG2 W5 H2 C422", "odd width 5"},
        {"YUV4MPEG2 W4 H2 Iq C422", "interlace tag 'Iq'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        try {
            ParseY4mHeader(c.line);
            ADD_FAILURE() << "accepted";
        } catch (const CliError& e) {
            EXPECT_EQ(e.Code(), kExitBadInput);
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
    }
}

TEST(Y4mPlanes, PackKnownAnswerAndRoundTrip) {
    // 4x2: Y plane 8 bytes, then Cb and Cr planes of 2x2.
    const uint8_t planar[16] = {1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 20, 21, 22, 23};
    const uint8_t want[16] = {1, 10, 2, 20, 3, 11, 4, 21, 5, 12, 6, 22, 7, 13, 8, 23};
    uint8_t packed[16];
    PackPlanar(planar, 4, 2, packed);
    EXPECT_EQ(0, std::memcmp(packed, want, 16));
    uint8_t back[16];
    UnpackToPlanar(packed, 4, 2, back);
    EXPECT_EQ(0, std::memcmp(back, planar, 16));
}

TEST(Y4mStream, WriterAndReaderRoundTripFramesAndMarkers) {
    const std::string clip = test::Y4mClip(6, 4, 3, "F30000:1001 Ib A1:1 C422 XFOO=bar");
    FILE* in = std::tmpfile();
    std::fwrite(clip.data(), 1, clip.size(), in);
    std::rewind(in);
    VideoReader reader(in, std::nullopt);
    EXPECT_EQ(reader.Format().frameProperty, 0u);
    ASSERT_TRUE(reader.FramesHint().has_value());
    EXPECT_EQ(*reader.FramesHint(), 3u);
    FILE* out = std::tmpfile();
    VideoWriter writer(out, reader.Format());
    std::vector<uint8_t> frame;
    int frames = 0;
    while (reader.Next(&frame)) {
        writer.Write(frame, reader.FrameParameters());
        ++frames;
    }
    writer.Flush();
    std::fclose(in);
    EXPECT_EQ(frames, 3);
    EXPECT_EQ(test::Drain(out), clip);  // header, markers and planes byte for byte
}

TEST(Y4mStream, FrameParametersPassThrough) {
    const std::string clip = "YUV4MPEG2 W2 H1 C422\nFRAME Ixyz XA=1\n" + std::string(4, 'a') + "FRAME\n" + "bbbb";
    FILE* in = std::tmpfile();
    std::fwrite(clip.data(), 1, clip.size(), in);
    std::rewind(in);
    VideoReader reader(in, std::nullopt);
    std::vector<uint8_t> frame;
    ASSERT_TRUE(reader.Next(&frame));
    EXPECT_EQ(reader.FrameParameters(), " Ixyz XA=1");
    ASSERT_TRUE(reader.Next(&frame));
    EXPECT_EQ(reader.FrameParameters(), "");
    EXPECT_FALSE(reader.Next(&frame));
    std::fclose(in);
}

TEST(RawStream, PackedFramesAndHeaderForY4mOutput) {
    const VideoFormat raw = RawFormat(4, 2, "50:1", true);
    EXPECT_EQ(Y4mHeaderLine(raw), "YUV4MPEG2 W4 H2 F50:1 Ip A1:1 C422\n");
    FILE* in = std::tmpfile();
    const std::string bytes(16 * 2 + 5, 'x');  // two frames and a cut one
    std::fwrite(bytes.data(), 1, bytes.size(), in);
    std::rewind(in);
    VideoReader reader(in, raw);
    std::vector<uint8_t> frame;
    EXPECT_TRUE(reader.Next(&frame));
    EXPECT_TRUE(reader.Next(&frame));
    EXPECT_THROW(reader.Next(&frame), CliError);
    std::fclose(in);
}

}  // namespace
}  // namespace zvf::cli
