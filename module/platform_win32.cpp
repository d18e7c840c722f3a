#include <windows.h>

#include "language_loader.h"
#include "platform.h"

namespace zvf::platform {

Library LoadLibraryPath(const char16_t* path) {
    if (path == nullptr) return nullptr;
    return reinterpret_cast<Library>(LoadLibraryW(reinterpret_cast<const wchar_t*>(path)));
}

void* GetSymbol(Library lib, const char* name) {
    return lib ? reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(lib), name)) : nullptr;
}

void FreeLibraryHandle(Library lib) {
    if (lib) FreeLibrary(static_cast<HMODULE>(lib));
}

bool CursorPos(Point* out) {
    POINT p{};
    if (!GetCursorPos(&p)) return false;
    *out = {p.x, p.y};
    return true;
}

bool MonitorRectAt(Point p, Rect* out) {
    HMONITOR monitor = MonitorFromPoint(POINT{p.x, p.y}, MONITOR_DEFAULTTONULL);
    if (monitor == nullptr) return false;
    MONITORINFO info{};
    info.cbSize = sizeof info;
    if (!GetMonitorInfoW(monitor, &info)) return false;
    // The full monitor rectangle, not its work area.
    *out = {info.rcMonitor.left, info.rcMonitor.top, info.rcMonitor.right, info.rcMonitor.bottom};
    return true;
}

bool MonitorWorkAreaAt(Point p, Rect* out) {
    HMONITOR monitor = MonitorFromPoint(POINT{p.x, p.y}, MONITOR_DEFAULTTONULL);
    if (monitor == nullptr) return false;
    MONITORINFO info{};
    info.cbSize = sizeof info;
    if (!GetMonitorInfoW(monitor, &info)) return false;
    *out = {info.rcWork.left, info.rcWork.top, info.rcWork.right, info.rcWork.bottom};
    return true;
}

Rect ScreenRect() { return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

bool PreferJapanese() { return PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_JAPANESE; }

}  // namespace zvf::platform

// ---- Language selection inputs -------------------------------------------
namespace zvf {
namespace {

const wchar_t* W(const char16_t* s) { return reinterpret_cast<const wchar_t*>(s); }

std::optional<std::u16string> ReadValue(HKEY root, const char16_t* name, DWORD maxChars) {
    HKEY key = nullptr;
    // Opened for reading only: looking for a language never creates keys.
    if (RegOpenKeyExW(root, W(kResourceKey), 0, KEY_READ, &key) != ERROR_SUCCESS) return std::nullopt;
    std::u16string value(maxChars + 1, u'\0');
    DWORD type = 0;
    DWORD bytes = static_cast<DWORD>(value.size() * sizeof(char16_t));
    const LSTATUS s =
        RegQueryValueExW(key, W(name), nullptr, &type, reinterpret_cast<BYTE*>(value.data()), &bytes);
    RegCloseKey(key);
    if (s != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return std::nullopt;
    value.resize(bytes / sizeof(char16_t));
    while (!value.empty() && value.back() == u'\0') value.pop_back();
    return value;
}

class Win32LanguagePlatform final : public LanguagePlatform {
public:
    std::optional<std::u16string> ReadUserValue(const char16_t* name) override {
        return ReadValue(HKEY_CURRENT_USER, name, 16);
    }
    std::optional<std::u16string> ReadMachineValue(const char16_t* name) override {
        return ReadValue(HKEY_LOCAL_MACHINE, name, MAX_PATH);
    }
    uint32_t UserDefaultLocale() override { return GetUserDefaultLCID(); }
    std::optional<std::u16string> AbbreviatedLanguageName(uint32_t locale) override {
        wchar_t buf[4] = {};
        if (GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, buf, 4) == 0) return std::nullopt;
        return std::u16string(reinterpret_cast<const char16_t*>(buf));
    }
    std::u16string ModulePath() override {
        HMODULE self = nullptr;
        if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                reinterpret_cast<LPCWSTR>(&SystemLanguagePlatform), &self))
            return {};
        wchar_t buf[MAX_PATH];
        const DWORD n = GetModuleFileNameW(self, buf, MAX_PATH);
        return std::u16string(reinterpret_cast<const char16_t*>(buf), n);
    }
    void* LoadResourceModule(const std::u16string& path) override {
        return reinterpret_cast<void*>(LoadLibraryW(W(path.c_str())));
    }
    void FreeResourceModule(void* module) override { FreeLibrary(static_cast<HMODULE>(module)); }
    std::optional<std::u16string> LoadString(void* module, uint32_t id, size_t maxChars) override {
        if (module == nullptr) {
            std::optional<std::u16string> s = BuiltInString(id, platform::PreferJapanese());
            if (s && s->size() > maxChars) s->resize(maxChars);
            return s;
        }
        std::wstring buf(maxChars + 1, L'\0');
        const int n = LoadStringW(static_cast<HMODULE>(module), id, buf.data(), static_cast<int>(buf.size()));
        if (n <= 0) return std::nullopt;
        return std::u16string(reinterpret_cast<const char16_t*>(buf.data()), static_cast<size_t>(n));
    }
};

}  // namespace

LanguagePlatform& SystemLanguagePlatform() {
    static Win32LanguagePlatform platform;
    return platform;
}

}  // namespace zvf
