#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "language_loader.h"
#include "platform.h"

namespace zvf::platform {
namespace {

// Without a window system the screen is one 1920x1080 monitor with the
// cursor in its centre and a 40-pixel taskbar along its bottom edge.
constexpr Rect kScreen{0, 0, 1920, 1080};
constexpr Rect kWorkArea{0, 0, 1920, 1040};

}  // namespace

Library LoadLibraryPath(const char16_t* path) {
    if (path == nullptr) return nullptr;
    const std::string narrow = ToUtf8(path);
    return dlopen(narrow.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* GetSymbol(Library lib, const char* name) { return lib ? dlsym(lib, name) : nullptr; }

void FreeLibraryHandle(Library lib) {
    if (lib) dlclose(lib);
}

bool CursorPos(Point* out) {
    *out = {kScreen.right / 2, kScreen.bottom / 2};
    return true;
}

bool MonitorRectAt(Point, Rect* out) {
    *out = kScreen;
    return true;
}

bool MonitorWorkAreaAt(Point, Rect* out) {
    *out = kWorkArea;
    return true;
}

Rect ScreenRect() { return kScreen; }

bool PreferJapanese() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* v = std::getenv(name);
        if (v != nullptr && *v != '\0') return std::strncmp(v, "ja", 2) == 0;
    }
    return false;
}

}  // namespace zvf::platform

// ---- Language selection inputs -------------------------------------------
// Without a registry or resource modules: the locale comes from the
// environment, and no language module is ever found, so the built-in tables
// are used.
namespace zvf {
namespace {

struct LocaleName {
    const char* prefix;
    uint32_t locale;
    const char16_t* abbreviation;
};

constexpr LocaleName kLocales[] = {
    {"ja", 1041, u"JPN"}, {"nl_BE", 2067, u"NLB"}, {"nl", 1043, u"NLD"}, {"de", 1031, u"DEU"}, {"fr", 1036, u"FRA"},
    {"es", 3082, u"ESN"}, {"it", 1040, u"ITA"},    {"pt_BR", 1046, u"PTB"}, {"pt", 2070, u"PTG"}, {"zh_TW", 1028, u"CHT"},
    {"zh", 2052, u"CHS"}, {"ko", 1042, u"KOR"},    {"en", 1033, u"ENU"},
};

class PosixLanguagePlatform final : public LanguagePlatform {
public:
    std::optional<std::u16string> ReadUserValue(const char16_t*) override { return std::nullopt; }
    std::optional<std::u16string> ReadMachineValue(const char16_t*) override { return std::nullopt; }
    uint32_t UserDefaultLocale() override {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* v = std::getenv(name);
            if (v == nullptr || *v == '\0') continue;
            for (const LocaleName& l : kLocales)
                if (std::strncmp(v, l.prefix, std::strlen(l.prefix)) == 0) return l.locale;
            break;
        }
        return 1033;
    }
    std::optional<std::u16string> AbbreviatedLanguageName(uint32_t locale) override {
        for (const LocaleName& l : kLocales)
            if (l.locale == locale) return std::u16string(l.abbreviation);
        return std::nullopt;
    }
    std::u16string ModulePath() override {
        Dl_info info{};
        if (dladdr(reinterpret_cast<void*>(&SystemLanguagePlatform), &info) == 0 || info.dli_fname == nullptr) return {};
        return platform::FromUtf8(info.dli_fname);
    }
    void* LoadResourceModule(const std::u16string&) override { return nullptr; }
    void FreeResourceModule(void*) override {}
    std::optional<std::u16string> LoadString(void* module, uint32_t id, size_t maxChars) override {
        if (module != nullptr) return std::nullopt;
        std::optional<std::u16string> s = BuiltInString(id, platform::PreferJapanese());
        if (s && s->size() > maxChars) s->resize(maxChars);
        return s;
    }
};

}  // namespace

LanguagePlatform& SystemLanguagePlatform() {
    static PosixLanguagePlatform platform;
    return platform;
}

}  // namespace zvf
