// zvf blob save and show: round trips for every built filter, and the
// reasons the module would ignore a blob.
#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "kit/host_kit.h"
#include "params.h"
#include "record_catalog.h"
#include "zvf_test_util.h"

namespace zvf::test {
namespace {

// Values across each field's range: its ends and a point inside.
std::vector<double> Probes(const FieldDesc& f) {
    if (!(f.min < f.max)) return {f.def};
    const bool integral = f.type != FieldType::F64;
    double mid = f.min + (f.max - f.min) / 3;
    if (integral) mid = std::floor(mid);
    return {f.min, f.max, mid};
}

// The module loaded on its own, as a blob's next user would: what it saves
// after loading `blob`. The module serves one host at a time, so it is
// loaded only between zvf's own runs.
std::vector<uint8_t> LoadAndSave(const std::string& id, const std::vector<uint8_t>& blob) {
    auto module = host::LoadedModule::Load(host::DefaultModulePath());
    auto instance = module->Create(*module->Find(id), &blob);
    std::vector<uint8_t> again;
    EXPECT_EQ(instance->Save(&again), 0);
    return again;
}

TEST(Blob, SaveShowRoundTripForEveryBuiltFilter) {
    ScratchDir dir;
    int checked = 0;
    for (const filters::CatalogEntry& e : filters::RecordCatalog()) {
        const std::string id = host::Utf8(std::u16string(e.identifier).c_str());
        SCOPED_TRACE(id);
        for (const FieldDesc& f : e.record->fields) {
            if (f.type == FieldType::Reserved) continue;
            for (const double v : Probes(f)) {
                std::string values;
                for (uint32_t i = 0; i < f.count; ++i) values += (i ? "," : "") + cli::FormatValue(v, f.type);
                const std::string request = id + ":" + std::string(f.name) + "=" + values;
                SCOPED_TRACE(request);
                const std::string file = dir / "p.blob";
                const ZvfResult saved = RunZvf({"blob", "save", request, "-o", file});
                ASSERT_EQ(saved.code, 0) << saved.err;
                const std::string bytes = ReadAll(file);

                // The module loads the blob back to the same bytes: it is what SaveParameters writes.
                const std::vector<uint8_t> blob(bytes.begin(), bytes.end());
                EXPECT_EQ(LoadAndSave(id, blob), blob);

                const ZvfResult shown = RunZvf({"blob", "show", "--json", file});
                ASSERT_EQ(shown.code, 0) << shown.out << shown.err;
                const auto j = nlohmann::json::parse(shown.out);
                EXPECT_TRUE(j["loads"].get<bool>());
                EXPECT_EQ(j["identifier"].get<std::string>(), id);
                EXPECT_EQ(j["version"].get<uint32_t>(), 0x00020000u);
                // The value comes back, or the module derives the field from
                // others and zvf said it was not kept.
                bool found = false, kept = true;
                for (const auto& field : j["fields"])
                    if (field["name"] == f.name) {
                        found = true;
                        for (const auto& x : field["values"]) kept = kept && x.get<double>() == v;
                    }
                EXPECT_TRUE(found);
                EXPECT_EQ(!kept, saved.err.find(std::string(f.name) + "=" + values + " was not kept") != std::string::npos)
                    << saved.err;
                ++checked;
            }
        }
        // A saved blob with a pair on top: the pair wins, the rest comes from the blob.
        const std::string base = dir / "base.blob";
        ASSERT_EQ(RunZvf({"blob", "save", id, "-o", base}).code, 0);
        const ZvfResult same = RunZvf({"blob", "save", id + "@" + base, "-o", dir / "same.blob"});
        ASSERT_EQ(same.code, 0) << same.err;
        EXPECT_EQ(ReadAll(dir / "same.blob"), ReadAll(base));
    }
    EXPECT_GT(checked, 0);
}

TEST(Blob, BlobAndPairsTogether) {
    ScratchDir dir;
    ASSERT_EQ(RunZvf({"blob", "save", "blockcolor:y=10:u=20:v=30", "-o", dir / "a.blob"}).code, 0);
    ASSERT_EQ(RunZvf({"blob", "save", "blockcolor@" + (dir / "a.blob") + ":u=99", "-o", dir / "b.blob"}).code, 0);
    const std::string b = ReadAll(dir / "b.blob");
    ASSERT_EQ(b.size(), 101u);  // 12 + 86 + 3, as the module writes for Block Color
    EXPECT_EQ(b.substr(98), std::string("\x0a\x63\x1e", 3));
}

// Derived fields follow the written ones unless named themselves:
// 32768 x 256^(-1/20) = 24833.5, truncated; an explicit coefficient stays.
TEST(Blob, DerivedFieldsFollowTheirSources) {
    ScratchDir dir;
    struct Case {
        std::string request;
        double coefficient;
    } cases[] = {{"blur:radius=20", 24833}, {"blur:radius=20:coefficient=1000", 1000}};
    for (const Case& c : cases) {
        ASSERT_EQ(RunZvf({"blob", "save", c.request, "-o", dir / "d.blob"}).code, 0) << c.request;
        const auto j = nlohmann::json::parse(RunZvf({"blob", "show", "--json", dir / "d.blob"}).out);
        for (const auto& field : j["fields"]) {
            if (field["name"] == "coefficient") {
                EXPECT_EQ(field["values"][0].get<double>(), c.coefficient) << c.request;
            }
        }
    }
}

// A filter without a record description still saves and shows its blob;
// the record comes as bytes, and pairs are refused.
TEST(Blob, FilterWithoutDescription) {
    std::string id;
    for (const auto& f : nlohmann::json::parse(RunZvf({"list", "--json"}).out))
        if (f["parameters"].is_null()) id = f["identifier"].get<std::string>();
    if (id.empty()) GTEST_SKIP() << "every filter describes its record";
    ScratchDir dir;
    const ZvfResult saved = RunZvf({"blob", "save", id, "-o", dir / "u.blob"});
    ASSERT_EQ(saved.code, 0) << saved.err;
    const ZvfResult shown = RunZvf({"blob", "show", "--json", dir / "u.blob"});
    EXPECT_EQ(shown.code, 0);
    const auto j = nlohmann::json::parse(shown.out);
    EXPECT_TRUE(j["loads"].get<bool>());
    EXPECT_EQ(j["recordHex"].get<std::string>().size(), 2 * j["recordBytes"].get<size_t>());
    const ZvfResult pairs = RunZvf({"blob", "save", id + ":x=1", "-o", dir / "v.blob"});
    EXPECT_EQ(pairs.code, 1);
    EXPECT_NE(pairs.err.find("has no parameter description"), std::string::npos) << pairs.err;
}

TEST(Blob, ShowSaysWhyTheModuleWouldIgnoreIt) {
    ScratchDir dir;
    ASSERT_EQ(RunZvf({"blob", "save", "blockcolor:y=1:u=2:v=3", "-o", dir / "good.blob"}).code, 0);
    const std::string good = ReadAll(dir / "good.blob");
    auto put32 = [](std::string s, size_t at, uint32_t v) {
        std::memcpy(s.data() + at, &v, 4);
        return s;
    };
    std::string foreign = good;
    foreign[8 + 2 * 18] = 'Z';  // "Velmora Co., Ltd. ZolidColor Video Filter"
    struct Case {
        const char* what;
        std::string bytes;
        bool loads;
        const char* reason;
    } cases[] = {
        {"as saved", good, true, ""},
        {"exact size", good, true, ""},
        {"one byte short", good.substr(0, good.size() - 1), false, "shorter than its header and record"},
        {"header only", good.substr(0, 7), false, "shorter than its header and record"},
        {"empty", "", false, "no data"},
        {"wrong tag", put32(good, 0, 0x00010001), false, "wrong format tag"},
        {"too new", put32(good, 94, 0x00020001), false, "version newer than 0x00020000"},
        {"older version", put32(good, 94, 0x00010000), true, ""},
        {"foreign identifier", foreign, false, "its identifier names no filter of this module"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        WriteAll(dir / "t.blob", c.bytes);
        const ZvfResult r = RunZvf({"blob", "show", "--json", dir / "t.blob"});
        EXPECT_EQ(r.code, c.loads ? 0 : 2);
        const auto j = nlohmann::json::parse(r.out);
        EXPECT_EQ(j["loads"].get<bool>(), c.loads);
        if (!c.loads) {
            EXPECT_EQ(j["reason"].get<std::string>(), c.reason);
        }
        // The text form says the same.
        const ZvfResult text = RunZvf({"blob", "show", dir / "t.blob"});
        EXPECT_NE(text.out.find(c.loads ? "the module loads it" : c.reason), std::string::npos) << text.out;
    }
    // Fields are decoded by name.
    const ZvfResult text = RunZvf({"blob", "show", dir / "good.blob"});
    EXPECT_NE(text.out.find("filter      Block Color\n"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("    y = 1\n    u = 2\n    v = 3\n"), std::string::npos) << text.out;
}

}  // namespace
}  // namespace zvf::test
