// The language loader against a fake platform: locale codes, the four-path
// search, the compatibility stamp and the restore at exit.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "language_loader.h"

namespace zvf {
namespace {

class FakePlatform final : public LanguagePlatform {
public:
    std::optional<std::u16string> language;  // HKCU "Language"
    std::optional<std::u16string> folder;    // HKLM "Folder"
    uint32_t locale = 1033;
    std::map<uint32_t, std::u16string> abbreviations{{1041, u"JPN"}, {1033, u"ENU"}, {1049, u"RUSS"}};
    std::u16string modulePath = u"C:\\Program Files\\ARVEN\\Plugins\\ZelVideoFilters.tpi";
    std::set<std::u16string> existing;             // loadable resource modules
    std::map<std::u16string, std::u16string> stamps;  // path -> string 13319
    std::vector<std::u16string> attempts;
    std::vector<std::u16string> freed;

    std::optional<std::u16string> ReadUserValue(const char16_t*) override { return language; }
    std::optional<std::u16string> ReadMachineValue(const char16_t*) override { return folder; }
    uint32_t UserDefaultLocale() override { return locale; }
    std::optional<std::u16string> AbbreviatedLanguageName(uint32_t l) override {
        auto it = abbreviations.find(l);
        if (it == abbreviations.end()) return std::nullopt;
        return it->second;
    }
    std::u16string ModulePath() override { return modulePath; }
    void* LoadResourceModule(const std::u16string& path) override {
        attempts.push_back(path);
        auto it = existing.find(path);
        return it == existing.end() ? nullptr : const_cast<std::u16string*>(&*it);
    }
    void FreeResourceModule(void* m) override { freed.push_back(*static_cast<std::u16string*>(m)); }
    std::optional<std::u16string> LoadString(void* m, uint32_t id, size_t) override {
        if (id != kStampStringId) return std::nullopt;
        if (m == nullptr) return u"0.0.0.2";
        auto it = stamps.find(*static_cast<std::u16string*>(m));
        if (it == stamps.end()) return std::nullopt;
        return it->second;
    }
};

const std::u16string kDir = u"C:\\Program Files\\ARVEN\\Plugins\\";

TEST(LanguageCode, FixedTableThenTheSystemAbbreviation) {
    FakePlatform p;
    struct Case {
        uint32_t locale;
        std::u16string code;
    };
    const Case cases[] = {
        {1043, u"NLD"}, {2067, u"NLD"}, {1034, u"ESP"}, {20490, u"ESP"}, {3082, u"ESP"}, {6156, u"FRA"},
        {5127, u"DEU"}, {5124, u"CHT"}, {4100, u"CHS"}, {2070, u"PTG"}, {2064, u"ITA"},
        {1041, u"JPN"},  // not in the table: the abbreviation
        {1049, u"RUS"},  // at most three letters are taken
        {9999, u""},     // no table entry and the query fails
    };
    for (const Case& c : cases) EXPECT_EQ(LanguageCode(c.locale, p), c.code) << c.locale;
}

TEST(LanguageLoader, SearchesFolderCodeThenModuleCodeThenFolderResThenModuleRes) {
    FakePlatform p;
    p.locale = 1041;
    p.folder = u"D:\\Lang";
    LanguageLoader loader(p);
    EXPECT_EQ(loader.Load(), 1);
    EXPECT_EQ(loader.ResourceModule(), nullptr);
    const std::vector<std::u16string> expected = {
        u"D:\\Lang\\JPN\\ZelVideoFiltersJPN.DLL",
        kDir + u"ZelVideoFiltersJPN.DLL",
        u"D:\\Lang\\ZelVideoFiltersRES.DLL",
        kDir + u"ZelVideoFiltersRES.DLL",
    };
    EXPECT_EQ(p.attempts, expected);
}

TEST(LanguageLoader, WithoutAFolderOnlyTheModuleDirectoryIsSearched) {
    FakePlatform p;
    p.locale = 1043;
    LanguageLoader loader(p);
    EXPECT_EQ(loader.Load(), 1);
    const std::vector<std::u16string> expected = {kDir + u"ZelVideoFiltersNLD.DLL", kDir + u"ZelVideoFiltersRES.DLL"};
    EXPECT_EQ(p.attempts, expected);
}

TEST(LanguageLoader, FolderEndingInASlashGetsNoSecondSeparator) {
    FakePlatform p;
    p.locale = 1031;
    p.folder = u"D:/Lang/";
    LanguageLoader loader(p);
    loader.Load();
    ASSERT_FALSE(p.attempts.empty());
    EXPECT_EQ(p.attempts[0], u"D:/Lang/DEU\\ZelVideoFiltersDEU.DLL");
    EXPECT_EQ(p.attempts[2], u"D:/Lang/ZelVideoFiltersRES.DLL");
}

TEST(LanguageLoader, TheStoredLanguageValueIsOverwrittenByTheLocale) {
    FakePlatform p;
    p.language = u"FRA";
    p.locale = 1041;
    p.existing = {kDir + u"ZelVideoFiltersFRA.DLL", kDir + u"ZelVideoFiltersJPN.DLL"};
    p.stamps = {{kDir + u"ZelVideoFiltersFRA.DLL", u"0.0.0.2"}, {kDir + u"ZelVideoFiltersJPN.DLL", u"0.0.0.2"}};
    LanguageLoader loader(p);
    EXPECT_EQ(loader.Load(), 1);
    EXPECT_EQ(loader.Code(), u"JPN");
    ASSERT_NE(loader.ResourceModule(), nullptr);
    EXPECT_EQ(*static_cast<std::u16string*>(loader.ResourceModule()), kDir + u"ZelVideoFiltersJPN.DLL");
    EXPECT_EQ(LanguageModuleString(kStampStringId).has_value(), true);
    EXPECT_EQ(loader.Load(), 1);  // already loaded: nothing more is tried
    EXPECT_EQ(p.attempts.size(), 1u);
    loader.Unload();
    EXPECT_EQ(loader.ResourceModule(), nullptr);
    EXPECT_EQ(p.freed.size(), 1u);
    EXPECT_FALSE(LanguageModuleString(kStampStringId).has_value());  // own resources restored
}

TEST(LanguageLoader, AModuleWithAnotherStampIsFreedAndTheBuiltInTextsStay) {
    for (const std::optional<std::u16string>& stamp : {std::optional<std::u16string>(u"0.0.0.1"),
                                                       std::optional<std::u16string>()}) {
        FakePlatform p;
        p.locale = 1036;
        p.existing = {kDir + u"ZelVideoFiltersFRA.DLL"};
        if (stamp) p.stamps[kDir + u"ZelVideoFiltersFRA.DLL"] = *stamp;
        LanguageLoader loader(p);
        EXPECT_EQ(loader.Load(), 1);
        EXPECT_EQ(loader.ResourceModule(), nullptr);
        ASSERT_EQ(p.freed.size(), 1u);
        EXPECT_FALSE(LanguageModuleString(kStampStringId).has_value());
    }
}

TEST(LanguageLoader, NoLanguageCodeIsAFailure) {
    FakePlatform p;
    p.locale = 9999;
    LanguageLoader loader(p);
    EXPECT_EQ(loader.Load(), static_cast<int32_t>(0x80004005u));
    EXPECT_TRUE(p.attempts.empty());
}

TEST(LanguageLoader, FirstLoadableModuleWinsEvenIfALaterOneAlsoExists) {
    FakePlatform p;
    p.locale = 1040;
    p.folder = u"E:\\L";
    p.existing = {u"E:\\L\\ZelVideoFiltersRES.DLL", kDir + u"ZelVideoFiltersRES.DLL"};
    p.stamps = {{u"E:\\L\\ZelVideoFiltersRES.DLL", u"0.0.0.2"}};
    LanguageLoader loader(p);
    EXPECT_EQ(loader.Load(), 1);
    ASSERT_NE(loader.ResourceModule(), nullptr);
    EXPECT_EQ(*static_cast<std::u16string*>(loader.ResourceModule()), u"E:\\L\\ZelVideoFiltersRES.DLL");
    EXPECT_EQ(p.attempts.size(), 3u);
    loader.Unload();
}

}  // namespace
}  // namespace zvf
