#include "kit/library.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

#include "kit/host_kit.h"

namespace zvf::host {

#if defined(_WIN32)
namespace {
std::wstring Widen(const std::string& s) {
    const int n = MultiByteToWideChar(CP_UTF8, 0, s.c_str(), -1, nullptr, 0);
    std::wstring w(n > 0 ? n - 1 : 0, L'\0');
    if (n > 1) MultiByteToWideChar(CP_UTF8, 0, s.c_str(), -1, w.data(), n);
    return w;
}
}  // namespace

void* OpenLibrary(const std::string& utf8Path, std::string* error) {
    HMODULE m = LoadLibraryW(Widen(utf8Path).c_str());
    if (m == nullptr && error) *error = "cannot load " + utf8Path + " (error " + std::to_string(GetLastError()) + ")";
    return reinterpret_cast<void*>(m);
}
void* LibrarySymbol(void* lib, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(lib), name));
}
void CloseLibrary(void* lib) { FreeLibrary(static_cast<HMODULE>(lib)); }

std::string ProgramDirectory() {
    wchar_t buf[MAX_PATH];
    const DWORD n = GetModuleFileNameW(nullptr, buf, MAX_PATH);
    std::wstring w(buf, n);
    w = w.substr(0, w.find_last_of(L"\\/"));
    const int len = WideCharToMultiByte(CP_UTF8, 0, w.c_str(), -1, nullptr, 0, nullptr, nullptr);
    std::string s(len > 0 ? len - 1 : 0, '\0');
    if (len > 1) WideCharToMultiByte(CP_UTF8, 0, w.c_str(), -1, s.data(), len, nullptr, nullptr);
    return s;
}
#else
void* OpenLibrary(const std::string& utf8Path, std::string* error) {
    void* lib = dlopen(utf8Path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (lib == nullptr && error) *error = dlerror();
    return lib;
}
void* LibrarySymbol(void* lib, const char* name) { return dlsym(lib, name); }
void CloseLibrary(void* lib) { dlclose(lib); }

std::string ProgramDirectory() {
    char buf[4096];
    const ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return ".";
    std::string s(buf, static_cast<size_t>(n));
    return s.substr(0, s.find_last_of('/'));
}
#endif

std::string DefaultModulePath() { return ProgramDirectory() + "/ZelVideoFilters.tpi"; }

}  // namespace zvf::host
