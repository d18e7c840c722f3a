// One loaded module for one command: the filters found by name, their
// record descriptions, and instances configured from a filter request.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/host_kit.h"
#include "params.h"
#include "zvf/record.h"

namespace zvf::cli {

// Sets the locale the module reads its language from for the life of the
// object ("" leaves it), and puts the old one back.
class LanguageScope {
public:
    explicit LanguageScope(const std::string& lang);
    ~LanguageScope();
    LanguageScope(const LanguageScope&) = delete;
    LanguageScope& operator=(const LanguageScope&) = delete;

private:
    bool set_ = false;
    std::optional<std::string> old_;
};

class Session {
public:
    // Throws CliError (module) when the module cannot be loaded or started.
    explicit Session(const std::string& modulePath, const std::string& lang = "");

    host::LoadedModule& Module() { return *module_; }
    size_t FilterCount() const { return module_->FilterCount(); }
    // Throws CliError (usage) for an unknown name.
    size_t Find(std::string_view name) const;
    std::optional<size_t> FindByIdentifier(std::u16string_view identifier) const;
    std::u16string Identifier(size_t index) const;
    std::string Name(size_t index) const;
    // Null when the filter's parameters are not described (not built).
    const RecordDesc* Record(size_t index) const;
    // Whether Render does anything but answer 0x80004001, asked of a fresh
    // instance on a small frame.
    bool RenderBuilt(size_t index);

    // An instance with the request's parameters; `blob` receives what
    // its SaveParameters writes. A value the module did not keep as given (a
    // field it derives from others, say) adds a line to `notes`. Throws
    // CliError naming the problem.
    std::unique_ptr<host::Instance> Configure(const FilterSpec& request, size_t* index, std::vector<uint8_t>* blob,
                                              std::vector<std::string>* notes = nullptr);

private:
    LanguageScope language_;
    std::unique_ptr<host::LoadedModule> module_;
};

// Offset of the payload in a blob, or nullopt when the header is cut short.
std::optional<size_t> PayloadOffset(const std::vector<uint8_t>& blob);

}  // namespace zvf::cli
