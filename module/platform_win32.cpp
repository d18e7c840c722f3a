#include <windows.h>

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

Rect ScreenRect() { return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

bool PreferJapanese() { return PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_JAPANESE; }

}  // namespace zvf::platform
