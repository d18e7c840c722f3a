#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "platform.h"

namespace zvf::platform {
namespace {

// Without a window system the screen is one 1920x1080 monitor with the
// cursor in its centre.
constexpr Rect kScreen{0, 0, 1920, 1080};

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

Rect ScreenRect() { return kScreen; }

bool PreferJapanese() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* v = std::getenv(name);
        if (v != nullptr && *v != '\0') return std::strncmp(v, "ja", 2) == 0;
    }
    return false;
}

}  // namespace zvf::platform
