#include "language_loader.h"

namespace zvf {
namespace {

// The resources strings are looked up in: no module for the module's own.
struct Resources {
    LanguagePlatform* platform = nullptr;
    void* module = nullptr;
};
Resources g_currentResources;

struct LocaleCode {
    const char16_t* code;
    uint32_t locales[20];
};

constexpr LocaleCode kLocaleCodes[] = {
    {u"ESP", {1034, 2058, 3082, 4106, 5130, 6154, 7178, 8202, 9226, 10250, 11274, 12298, 13322, 14346, 15370, 16394,
              17418, 18442, 19466, 20490}},
    {u"FRA", {1036, 2060, 3084, 4108, 5132, 6156}},
    {u"DEU", {1031, 2055, 3079, 4103, 5127}},
    {u"CHT", {1028, 3076, 5124}},
    {u"CHS", {2052, 4100}},
    {u"PTG", {1046, 2070}},
    {u"ITA", {1040, 2064}},
    {u"NLD", {1043, 2067}},
};

std::u16string BaseName(const std::u16string& path) {
    const size_t slash = path.find_last_of(u"\\/");
    std::u16string name = slash == std::u16string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of(u'.');
    return dot == std::u16string::npos ? name : name.substr(0, dot);
}

std::u16string Directory(const std::u16string& path) {
    const size_t slash = path.find_last_of(u"\\/");
    return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash + 1);
}

}  // namespace

std::u16string LanguageCode(uint32_t locale, LanguagePlatform& platform) {
    for (const LocaleCode& entry : kLocaleCodes)
        for (uint32_t id : entry.locales)
            if (id != 0 && id == locale) return entry.code;
    std::optional<std::u16string> abbreviation = platform.AbbreviatedLanguageName(locale);
    if (!abbreviation) return {};
    // At most four characters with the terminator.
    return abbreviation->substr(0, 3);
}

int32_t LanguageLoader::Load(uint32_t stampId) {
    if (module_ != nullptr) return 1;
    tried_.clear();
    // The stored "Language" value is read, but the locale always decides.
    code_ = platform_.ReadUserValue(u"Language").value_or(std::u16string());
    code_ = LanguageCode(platform_.UserDefaultLocale(), platform_);
    if (code_.empty()) return static_cast<int32_t>(0x80004005u);

    std::u16string folder = platform_.ReadMachineValue(u"Folder").value_or(std::u16string());
    if (folder.size() > 260) folder.resize(260);
    if (!folder.empty() && folder.back() != u'\\' && folder.back() != u'/') folder += u'\\';
    const std::u16string self = platform_.ModulePath();
    const std::u16string base = BaseName(self);
    const std::u16string dir = Directory(self);
    if (!folder.empty()) tried_.push_back(folder + code_ + u'\\' + base + code_ + u".DLL");
    tried_.push_back(dir + base + code_ + u".DLL");
    if (!folder.empty()) tried_.push_back(folder + base + u"RES.DLL");
    tried_.push_back(dir + base + u"RES.DLL");

    void* found = nullptr;
    for (size_t i = 0; i < tried_.size() && found == nullptr; ++i) {
        found = platform_.LoadResourceModule(tried_[i]);
        if (found != nullptr) tried_.resize(i + 1);
    }
    if (found == nullptr) return 1;

    previous_ = g_currentResources.module;
    previousPlatform_ = g_currentResources.platform;
    g_currentResources = {&platform_, found};
    // A module built for another version of the strings is not used.
    const std::optional<std::u16string> own = platform_.LoadString(nullptr, stampId, 50);
    const std::optional<std::u16string> theirs = platform_.LoadString(found, stampId, 50);
    if (!theirs || !own || *theirs != *own) {
        platform_.FreeResourceModule(found);
        g_currentResources = {previousPlatform_, previous_};
        previous_ = nullptr;
        return 1;
    }
    module_ = found;
    return 1;
}

void LanguageLoader::Unload() {
    if (module_ == nullptr) return;
    platform_.FreeResourceModule(module_);
    g_currentResources = {previousPlatform_, previous_};
    module_ = nullptr;
    previous_ = nullptr;
}

LanguageLoader& ModuleLanguageLoader() {
    static LanguageLoader loader(SystemLanguagePlatform());
    return loader;
}

std::optional<std::u16string> LanguageModuleString(uint32_t id) {
    if (g_currentResources.module == nullptr) return std::nullopt;
    return g_currentResources.platform->LoadString(g_currentResources.module, id, 4096);
}

}  // namespace zvf
