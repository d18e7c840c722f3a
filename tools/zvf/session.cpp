#include "session.h"

#include <cstdlib>
#include <cstring>

#include "errors.h"
#include "record_catalog.h"
#include "video_io.h"
#include "zvf/blob.h"

namespace zvf::cli {
LanguageScope::LanguageScope(const std::string& lang) {
    if (lang.empty()) return;
    if (const char* v = std::getenv("LC_ALL")) old_ = v;
    // The module takes its language from the locale (LC_ALL first).
    setenv("LC_ALL", lang == "ja" ? "ja_JP.UTF-8" : "C", 1);
    set_ = true;
}

LanguageScope::~LanguageScope() {
    if (!set_) return;
    if (old_)
        setenv("LC_ALL", old_->c_str(), 1);
    else
        unsetenv("LC_ALL");
}

Session::Session(const std::string& modulePath, const std::string& lang) : language_(lang) {
    std::string error;
    module_ = host::LoadedModule::Load(modulePath, host::HostOptions(), &error);
    if (!module_) throw CliError(kExitModule, "cannot load the module: " + error);
    if (module_->StartupResult() < 0)
        throw CliError(kExitModule, "the module's Startup failed with " + Hex(static_cast<uint32_t>(module_->StartupResult())));
}

size_t Session::Find(std::string_view name) const {
    if (const auto i = module_->Find(name)) return *i;
    throw CliError(kExitUsage, "no filter named '" + std::string(name) + "' (see zvf list)");
}

std::optional<size_t> Session::FindByIdentifier(std::u16string_view identifier) const {
    for (size_t i = 0; i < FilterCount(); ++i)
        if (Identifier(i) == identifier) return i;
    return std::nullopt;
}

std::u16string Session::Identifier(size_t index) const {
    const char16_t* id = module_->FilterAt(index)->GetIdentifier();
    return id ? std::u16string(id) : std::u16string();
}

std::string Session::Name(size_t index) const { return module_->Identity(index).name; }

const RecordDesc* Session::Record(size_t index) const { return filters::FindRecord(Identifier(index)); }

bool Session::RenderBuilt(size_t index) {
    auto instance = module_->Create(index);
    if (!instance) return false;
    // Both fields together, as zvf renders: a filter may read the other
    // field's source of the same frame.
    host::Frame src(4, 2), dst(4, 2);
    return instance->RenderFrame(dst, src, 0, true) != status::not_implemented;
}

std::optional<size_t> PayloadOffset(const std::vector<uint8_t>& blob) {
    if (blob.size() < 8) return std::nullopt;
    uint32_t n;
    std::memcpy(&n, blob.data() + 4, 4);
    if (blob.size() < uint64_t{n} + 12) return std::nullopt;
    return static_cast<size_t>(n) + 12;
}

std::unique_ptr<host::Instance> Session::Configure(const FilterSpec& request, size_t* index, std::vector<uint8_t>* blob,
                                                   std::vector<std::string>* notes) {
    const size_t i = Find(request.filter);
    *index = i;
    const std::string name = Name(i);
    const RecordDesc* record = Record(i);
    std::vector<uint8_t> source;
    if (!request.blobPath.empty()) {
        source = ReadFileBytes(request.blobPath);
        const blob::Verdict v =
            blob::Check(source.data(), source.size(), Identifier(i), record ? record->payloadSize : 0, nullptr);
        if (v != blob::Verdict::Ok)
            throw CliError(kExitBadInput, request.blobPath + ": " + name + " would ignore this blob: " + blob::VerdictText(v));
    }
    Status s = 0;
    auto instance = module_->Create(i, request.blobPath.empty() ? nullptr : &source, 0, &s);
    if (!instance) throw CliError(kExitModule, name + ": CreateInstance failed with " + Hex(static_cast<uint32_t>(s)));
    std::vector<uint8_t> saved;
    if (!request.pairs.empty()) {
        if (record == nullptr)
            throw CliError(kExitUsage, name + " has no parameter description (its rendering is not built yet)");
        s = instance->Save(&saved);
        const auto offset = PayloadOffset(saved);
        if (s != status::ok || !offset)
            throw CliError(kExitModule, name + ": SaveParameters failed with " + Hex(static_cast<uint32_t>(s)));
        ApplyPairs(*record, std::span<uint8_t>(saved).subspan(*offset), request.pairs, name);
        instance = module_->Create(i, &saved, 0, &s);
        if (!instance) throw CliError(kExitModule, name + ": CreateInstance failed with " + Hex(static_cast<uint32_t>(s)));
    }
    std::vector<uint8_t> kept;
    if (blob != nullptr || (!request.pairs.empty() && notes != nullptr)) {
        s = instance->Save(&kept);
        if (s != status::ok) throw CliError(kExitModule, name + ": SaveParameters failed with " + Hex(static_cast<uint32_t>(s)));
    }
    const auto keptOffset = PayloadOffset(kept);
    if (!request.pairs.empty() && notes != nullptr && keptOffset && kept.size() == saved.size()) {
        const size_t at = *keptOffset;
        for (const auto& [field, value] : request.pairs) {
            const FieldDesc* f = FindField(*record, field);
            std::string was, now;
            for (uint32_t e = 0; e < f->count; ++e) {
                was += (e ? "," : "") + FormatValue(ReadFieldValue(*f, saved.data() + at, e), f->type);
                now += (e ? "," : "") + FormatValue(ReadFieldValue(*f, kept.data() + at, e), f->type);
            }
            if (was != now) notes->push_back(name + ": " + field + "=" + value + " was not kept; the module holds " + now);
        }
    }
    if (blob != nullptr) *blob = std::move(kept);
    return instance;
}

}  // namespace zvf::cli
