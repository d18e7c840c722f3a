// Chooses a language resource module for the user's locale and makes it the
// place strings are looked up in; without one the built-in tables are used.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zvf {

// What the loader reads from its surroundings: the registry, the user's
// locale, library loading and string loading. The system implementation is
// per platform; tests give a fake.
class LanguagePlatform {
public:
    virtual ~LanguagePlatform() = default;
    // HKEY_CURRENT_USER / HKEY_LOCAL_MACHINE value under the resource key.
    virtual std::optional<std::u16string> ReadUserValue(const char16_t* name) = 0;
    virtual std::optional<std::u16string> ReadMachineValue(const char16_t* name) = 0;
    virtual uint32_t UserDefaultLocale() = 0;
    // The locale's three-letter abbreviated language name; nullopt on failure.
    virtual std::optional<std::u16string> AbbreviatedLanguageName(uint32_t locale) = 0;
    // Full path of the module's own file.
    virtual std::u16string ModulePath() = 0;
    virtual void* LoadResourceModule(const std::u16string& path) = 0;
    virtual void FreeResourceModule(void* module) = 0;
    // A string of a resource module (null: the module's own tables).
    virtual std::optional<std::u16string> LoadString(void* module, uint32_t id, size_t maxChars) = 0;
};

LanguagePlatform& SystemLanguagePlatform();

constexpr uint32_t kStampStringId = 13319;
constexpr const char16_t* kResourceKey = u"SOFTWARE\\Velmora\\ARVEN\\2.00\\App\\Resource";

// The three-letter code for a locale: the fixed table, else the locale's
// abbreviated language name; empty when neither gives one.
std::u16string LanguageCode(uint32_t locale, LanguagePlatform& platform);

class LanguageLoader {
public:
    explicit LanguageLoader(LanguagePlatform& platform) : platform_(platform) {}
    ~LanguageLoader() { Unload(); }
    LanguageLoader(const LanguageLoader&) = delete;
    LanguageLoader& operator=(const LanguageLoader&) = delete;

    // 1 when it kept or installed resources, 0x80004005 when no language
    // code could be found.
    int32_t Load(uint32_t stampId = kStampStringId);
    // Frees the resource module and restores the previous resources.
    void Unload();

    void* ResourceModule() const { return module_; }
    const std::u16string& Code() const { return code_; }
    // The paths tried by the last Load, in order.
    const std::vector<std::u16string>& Tried() const { return tried_; }

private:
    LanguagePlatform& platform_;
    void* module_ = nullptr;
    void* previous_ = nullptr;
    LanguagePlatform* previousPlatform_ = nullptr;
    std::u16string code_;
    std::vector<std::u16string> tried_;
};

// The module's own loader, run once when the module starts.
LanguageLoader& ModuleLanguageLoader();

// The string from the installed language module, if one is installed and has it.
std::optional<std::u16string> LanguageModuleString(uint32_t id);

// The built-in tables' text for an id.
std::optional<std::u16string> BuiltInString(uint32_t id, bool japanese);

}  // namespace zvf
