// zvf blob save / show: parameter blobs as the module writes and reads them.
#include <cstring>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "errors.h"
#include "params.h"
#include "session.h"
#include "video_io.h"
#include "zvf/blob.h"

namespace zvf::cli {
namespace {

uint32_t U32(const std::vector<uint8_t>& b, size_t at) {
    uint32_t v = 0;
    if (at + 4 <= b.size()) std::memcpy(&v, b.data() + at, 4);
    return v;
}

std::string Utf8(const std::u16string& s) { return host::Utf8(s.c_str()); }

struct Decoded {
    std::optional<std::u16string> identifier;
    std::optional<size_t> filter;  // the module's filter that identifier names
    const RecordDesc* record = nullptr;
    blob::Verdict verdict = blob::Verdict::Ok;
};

Decoded Decode(Session& session, const std::vector<uint8_t>& bytes) {
    Decoded d;
    d.identifier = blob::StoredIdentifier(bytes.data(), bytes.size());
    if (d.identifier) d.filter = session.FindByIdentifier(*d.identifier);
    if (d.filter) d.record = session.Record(*d.filter);
    // Check against the filter the blob names, as that filter's load would.
    const std::u16string id = d.filter ? session.Identifier(*d.filter) : std::u16string(u"\x01");
    d.verdict = blob::Check(bytes.empty() ? nullptr : bytes.data(), bytes.size(), id,
                            d.record ? d.record->payloadSize : 0, nullptr);
    // A well-formed blob whose identifier no filter of the module has.
    if (d.verdict == blob::Verdict::Ok && !d.filter) d.verdict = blob::Verdict::ForeignIdentifier;
    return d;
}

std::string Reason(const Decoded& d) {
    if (d.verdict == blob::Verdict::ForeignIdentifier && d.identifier && !d.filter)
        return "its identifier names no filter of this module";
    return blob::VerdictText(d.verdict);
}

}  // namespace

int BlobSaveCommand(const std::string& module, const BlobSaveOptions& o, const Streams& io) {
    Session session(module);
    const FilterSpec request = ParseFilterSpec(o.filter);
    std::vector<uint8_t> blob;
    std::vector<std::string> notes;
    size_t index = 0;
    session.Configure(request, &index, &blob, &notes);
    for (const std::string& note : notes) std::fprintf(io.err, "zvf: note: %s\n", note.c_str());
    WriteFileBytes(o.output, blob);
    return kExitOk;
}

int BlobShowCommand(const std::string& module, const BlobShowOptions& o, const Streams& io) {
    const std::vector<uint8_t> bytes = ReadFileBytes(o.file);
    Session session(module);
    const Decoded d = Decode(session, bytes);
    const auto offset = PayloadOffset(bytes);
    const bool headerWhole = offset && bytes.size() >= *offset;
    nlohmann::json j{{"file", o.file}, {"size", bytes.size()}};
    std::string text = o.file + ": " + std::to_string(bytes.size()) + " bytes\n";
    if (bytes.size() >= 8) {
        j["tag"] = U32(bytes, 0);
        j["identifierBytes"] = U32(bytes, 4);
        text += "  tag         " + Hex(U32(bytes, 0)) + (U32(bytes, 0) == blob::kTag ? "\n" : " (expected 0x00010000)\n");
    }
    if (d.identifier) {
        j["identifier"] = Utf8(*d.identifier);
        text += "  identifier  " + Utf8(*d.identifier) + "\n";
    }
    j["filter"] = d.filter ? nlohmann::json(session.Name(*d.filter)) : nlohmann::json();
    text += "  filter      " + (d.filter ? session.Name(*d.filter) : std::string("(none of this module)")) + "\n";
    if (headerWhole) {
        const uint32_t version = U32(bytes, *offset - 4);
        j["version"] = version;
        j["recordBytes"] = bytes.size() - *offset;
        text += "  version     " + Hex(version) + "\n  record      " + std::to_string(bytes.size() - *offset) +
                " bytes\n";
    }
    nlohmann::json fields = nlohmann::json::array();
    if (d.record != nullptr && headerWhole) {
        const uint8_t* payload = bytes.data() + *offset;
        const size_t available = bytes.size() - *offset;
        for (const FieldDesc& f : d.record->fields) {
            if (f.type == FieldType::Reserved) continue;
            if (f.offset + f.count * FieldTypeSize(f.type) > available) break;  // cut short: what is there
            nlohmann::json values = nlohmann::json::array();
            std::string shown;
            for (uint32_t i = 0; i < f.count; ++i) {
                const double v = ReadFieldValue(f, payload, i);
                if (f.type == FieldType::F64)
                    values.push_back(v);
                else
                    values.push_back(static_cast<int64_t>(v));
                shown += (i ? "," : "") + FormatValue(v, f.type);
            }
            fields.push_back({{"name", f.name}, {"type", TypeName(f.type)}, {"values", values}});
            text += "    " + std::string(f.name) + " = " + shown + "\n";
        }
    }
    if (d.record == nullptr && headerWhole) {
        // No description to name the fields by: the record's bytes as they are.
        std::string hex;
        for (size_t i = *offset; i < bytes.size(); ++i) {
            char b[4];
            std::snprintf(b, sizeof b, "%02x", bytes[i]);
            hex += b;
        }
        j["recordHex"] = hex;
        text += "    (no parameter description) " + hex + "\n";
    }
    j["fields"] = fields;
    j["loads"] = d.verdict == blob::Verdict::Ok;
    j["reason"] = d.verdict == blob::Verdict::Ok ? nlohmann::json() : nlohmann::json(Reason(d));
    text += d.verdict == blob::Verdict::Ok ? "  the module loads it\n" : "  the module ignores it: " + Reason(d) + "\n";
    if (o.json) text = j.dump(2) + "\n";
    std::fwrite(text.data(), 1, text.size(), io.out);
    return d.verdict == blob::Verdict::Ok ? kExitOk : kExitBadInput;
}

}  // namespace zvf::cli
