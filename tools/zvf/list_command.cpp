// zvf list: every registered filter in registration order, with its
// identity, capabilities, whether it renders and its parameters.
#include <nlohmann/json.hpp>

#include "commands.h"
#include "errors.h"
#include "params.h"
#include "session.h"

namespace zvf::cli {
namespace {

std::string Text(const std::string& s) { return s.empty() ? "-" : s; }

nlohmann::json FieldJson(const FieldDesc& f) {
    nlohmann::json j{{"name", f.name}, {"type", TypeName(f.type)}, {"offset", f.offset}, {"count", f.count}};
    if (f.type != FieldType::Reserved) {
        if (f.min < f.max) j["range"] = {f.min, f.max};
        j["default"] = f.def;
    }
    return j;
}

}  // namespace

int ListCommand(const std::string& module, const ListOptions& o, const Streams& io) {
    Session session(module, o.lang);
    nlohmann::json all = nlohmann::json::array();
    std::string text;
    for (size_t i = 0; i < session.FilterCount(); ++i) {
        const host::FilterIdentity id = session.Module().Identity(i);
        auto instance = session.Module().Create(i);
        const uint32_t caps = instance ? instance->Get()->GetCapabilities() : 0;
        const bool built = session.RenderBuilt(i);
        const RecordDesc* record = session.Record(i);
        if (o.json) {
            nlohmann::json j{{"index", i + 1},           {"name", id.name},       {"category", id.category},
                             {"description", id.description}, {"vendor", id.vendor}, {"identifier", id.identifier},
                             {"kind", id.kind},          {"version", id.version}, {"capabilities", caps},
                             {"rendering", built}};
            nlohmann::json fields = nlohmann::json::array();
            if (record != nullptr)
                for (const FieldDesc& f : record->fields) fields.push_back(FieldJson(f));
            j["parameters"] = record != nullptr ? fields : nlohmann::json();
            all.push_back(j);
            continue;
        }
        char head[512];
        std::snprintf(head, sizeof head, "%2zu  %-16s %-22s %s  caps %s\n", i + 1, id.name.c_str(),
                      Text(id.category).c_str(), built ? "renders  " : "not built", Hex(caps).c_str());
        text += head;
        text += "    " + Text(id.description) + "\n";
        text += "    " + id.identifier + " | " + Text(id.vendor) + " | kind " + std::to_string(id.kind) +
                ", version " + Hex(id.version) + "\n";
        if (record != nullptr) {
            std::string fields;
            for (const FieldDesc& f : record->fields) fields += (fields.empty() ? "" : ", ") + DescribeField(f);
            text += "    parameters: " + fields + "\n";
        }
    }
    if (o.json) text = all.dump(2) + "\n";
    std::fwrite(text.data(), 1, text.size(), io.out);
    return kExitOk;
}

}  // namespace zvf::cli
