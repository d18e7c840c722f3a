// zvf: command-line host for ZelVideoFilters.tpi, built on the host kit.
#include <cstdio>
#include <cstring>
#include <string>

#include "kit/host_kit.h"

namespace {

int List(const std::string& modulePath) {
    std::string error;
    auto module = zvf::host::LoadedModule::Load(modulePath, zvf::host::HostOptions(), &error);
    if (!module) {
        std::fprintf(stderr, "zvf: %s\n", error.c_str());
        return 1;
    }
    for (size_t i = 0; i < module->FilterCount(); ++i) {
        const zvf::host::FilterIdentity id = module->Identity(i);
        std::printf("%2zu  %-16s  %-20s  %s\n    %s | %s | kind %u, version 0x%08X\n", i + 1, id.name.c_str(),
                    id.category.c_str(), id.description.c_str(), id.identifier.c_str(), id.vendor.c_str(), id.kind,
                    id.version);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::string command = argc > 1 ? argv[1] : "list";
    if (command == "list") return List(zvf::host::DefaultModulePath());
    std::fprintf(stderr, "usage: zvf list\n");
    return 2;
}
