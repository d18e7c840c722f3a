// Filter specifications, progress lines, colour conversion of the contact
// sheet, zvf list and zvf demo.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "contact_sheet.h"
#include "errors.h"
#include "module/module_fixture.h"
#include "params.h"
#include "progress.h"
#include "record_catalog.h"
#include "zvf_test_util.h"

namespace zvf::test {
namespace {

TEST(FilterSpec, Forms) {
    struct Case {
        const char* text;
        const char* filter;
        const char* blob;
        std::vector<std::pair<std::string, std::string>> pairs;
    } cases[] = {
        {"blur", "blur", "", {}},
        {"Block Color:y=1:u=2", "Block Color", "", {{"y", "1"}, {"u", "2"}}},
        {"blur@saved.blob", "blur", "saved.blob", {}},
        {"blur@dir/a b.blob:radius=3", "blur", "dir/a b.blob", {{"radius", "3"}}},
        {"m:k=1,2,3:e=", "m", "", {{"k", "1,2,3"}, {"e", ""}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const cli::FilterSpec s = cli::ParseFilterSpec(c.text);
        EXPECT_EQ(s.filter, c.filter);
        EXPECT_EQ(s.blobPath, c.blob);
        EXPECT_EQ(s.pairs, c.pairs);
    }
    for (const char* bad : {"", ":y=1", "@x", "blur:radius", "blur:=3", "blur@"})
        EXPECT_THROW(cli::ParseFilterSpec(bad), cli::CliError) << bad;
}

TEST(FilterSpec, ArrayFieldsAndFormatting) {
    constexpr FieldDesc fields[] = {
        {"k", FieldType::I16, 0, 3, -10, 10, 0},
        {"g", FieldType::F64, 6, 1, 0, 4, 1},
    };
    const RecordDesc record{fields, 14};
    std::vector<uint8_t> payload(14, 0);
    cli::ApplyPairs(record, payload, {{"k", "-10,5"}, {"g", "0.1"}}, "T");
    EXPECT_EQ(ReadFieldValue(fields[0], payload.data(), 0), -10);
    EXPECT_EQ(ReadFieldValue(fields[0], payload.data(), 1), 5);
    EXPECT_EQ(ReadFieldValue(fields[0], payload.data(), 2), 0);
    EXPECT_EQ(ReadFieldValue(fields[1], payload.data()), 0.1);
    EXPECT_EQ(cli::FormatValue(0.1, FieldType::F64), "0.1");
    EXPECT_EQ(cli::FormatValue(1.0 / 3, FieldType::F64), "0.3333333333333333");
    EXPECT_EQ(cli::DescribeField(fields[0]), "k i16[3] -10..10 = 0");
}

TEST(Progress, Lines) {
    EXPECT_EQ(cli::Progress::Line(50, 200, 2.0), "frame 50/200  25.0 fps  ETA 0:00:06");
    EXPECT_EQ(cli::Progress::Line(10, std::nullopt, 4.0), "frame 10  2.5 fps");
    EXPECT_EQ(cli::Progress::Line(1, 90001, 1.0), "frame 1/90001  1.0 fps  ETA 25:00:00");
}

TEST(ContactSheet, StudioRangeToRgb) {
    struct Case {
        uint8_t y, cb, cr;
        uint8_t r, g, b;
    } cases[] = {
        {16, 128, 128, 0, 0, 0},       {235, 128, 128, 255, 255, 255}, {126, 128, 128, 128, 128, 128},
        {81, 90, 240, 255, 0, 0},      {145, 54, 34, 0, 255, 0},       {41, 240, 110, 0, 0, 255},
    };
    for (const Case& c : cases) {
        const uint8_t pair[4] = {c.y, c.cb, c.y, c.cr};
        cli::RgbImage img(2, 1, 0);
        cli::PackedToRgb(pair, 2, 1, &img, 0, 0);
        for (int x = 0; x < 2; ++x) {
            EXPECT_NEAR(img.At(x, 0)[0], c.r, 1) << int(c.y);
            EXPECT_NEAR(img.At(x, 0)[1], c.g, 1) << int(c.y);
            EXPECT_NEAR(img.At(x, 0)[2], c.b, 1) << int(c.y);
        }
    }
}

TEST(List, RegistrationOrderAndParameters) {
    const ZvfResult r = RunZvf({"list", "--json"});
    ASSERT_EQ(r.code, 0);
    const auto all = nlohmann::json::parse(r.out);
    ASSERT_EQ(all.size(), 27u);
    for (size_t i = 0; i < 27; ++i) {
        SCOPED_TRACE(kRegistrationOrder[i]);
        EXPECT_EQ(all[i]["name"], kRegistrationOrder[i]);
        EXPECT_EQ(host::IdentifierKey(all[i]["identifier"].get<std::string>()), kIdentifierKeys[i]);
        const std::string id = all[i]["identifier"];
        const RecordDesc* record = filters::FindRecord(std::u16string(id.begin(), id.end()));
        ASSERT_EQ(all[i]["parameters"].is_null(), record == nullptr);
        if (record != nullptr) {
            EXPECT_EQ(all[i]["parameters"].size(), record->fields.size());
        }
    }
    EXPECT_EQ(all[23]["rendering"], true);  // Block Color
    EXPECT_EQ(all[23]["capabilities"], 0x102);
    // The text form and the Japanese table.
    EXPECT_NE(RunZvf({"list"}).out.find("parameters: y u8 0..255 = 255, u u8 0..255 = 128, v u8 0..255 = 128"),
              std::string::npos);
    const auto ja = nlohmann::json::parse(RunZvf({"list", "--lang", "ja", "--json"}).out);
    EXPECT_NE(ja[23]["name"], all[23]["name"]);
    EXPECT_EQ(ja[23]["identifier"], all[23]["identifier"]);
}

TEST(Demo, SheetFramesAndLegend) {
    ScratchDir dir;
    const ZvfResult r = RunZvf({"demo", "-o", dir.path.string()});
    ASSERT_EQ(r.code, 0) << r.err;
    const std::string png = ReadAll(dir / "contact-sheet.png");
    ASSERT_GT(png.size(), 8u);
    EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
    // One frame per tile: the original and every filter that renders.
    const auto list = nlohmann::json::parse(RunZvf({"list", "--json"}).out);
    size_t built = 0;
    for (const auto& f : list) built += f["rendering"].get<bool>() ? 1 : 0;
    const std::string y4m = ReadAll(dir / "frames.y4m");
    const size_t header = y4m.find('\n') + 1;
    EXPECT_EQ(y4m.size(), header + (1 + built) * (6 + 352 * 288 * 2));
    EXPECT_NE(r.out.find("  1  original"), std::string::npos);
    EXPECT_NE(r.out.find("Block Color      y=81:u=90:v=240"), std::string::npos) << r.out;
    if (built < 27) {
        EXPECT_NE(r.out.find("not shown, rendering not built yet"), std::string::npos);
    }
    EXPECT_EQ(ReadAll(dir / "legend.txt"), r.out);
}

}  // namespace
}  // namespace zvf::test
