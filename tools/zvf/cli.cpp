// The command line: subcommands and options (CLI11), and the one place
// failures turn into a message and an exit code.
#include <CLI/CLI.hpp>
#include <sstream>

#include "commands.h"
#include "errors.h"
#include "kit/host_kit.h"

namespace zvf::cli {
namespace {

constexpr const char* kFooter =
    "Exit codes: 0 done; 1 usage (bad option, unknown filter or parameter, value out of range);\n"
    "2 input refused (video format, bad header, truncated frame, blob the module would ignore);\n"
    "3 module failure (not loaded, a filter failed or its rendering is not built); 4 file i/o.\n"
    "Filters are named as zvf list shows them, case, spaces and '/' ignored: 'Block Color', blockcolor,\n"
    "SolidColor. FILTER[@saved.blob][:name=value...] starts from the blob and sets the named fields.";

void Put(FILE* f, const std::string& s) { std::fwrite(s.data(), 1, s.size(), f); }

}  // namespace

int Run(int argc, const char* const* argv, const Streams& io) {
    CLI::App app("zvf: runs ZelVideoFilters.tpi's filters from the command line", "zvf");
    app.footer(kFooter);
    app.require_subcommand(1);
    app.fallthrough();  // --module may follow the subcommand
    std::string module = host::DefaultModulePath();
    app.add_option("--module", module, "The module to load (default: beside zvf)");

    ListOptions list;
    CLI::App* listCmd = app.add_subcommand("list", "The 27 filters in registration order, with their parameters");
    listCmd->add_option("--lang", list.lang, "Language of names and descriptions")->check(CLI::IsMember({"en", "ja"}));
    listCmd->add_flag("--json", list.json, "JSON instead of text");

    RenderOptions render;
    CLI::App* renderCmd = app.add_subcommand(
        "render", "Renders Y4M 4:2:2 (C422) or raw yuyv422 video through a chain of filters, field by field");
    renderCmd->add_option("-i,--input", render.input, "Input file, - for stdin")->required();
    renderCmd->add_option("-o,--output", render.output, "Output file, - for stdout")->required();
    renderCmd->add_option("filters", render.filters, "FILTER[@file.blob][:name=value...], applied in order");
    renderCmd->add_option("--size", render.size, "WxH: the input is raw yuyv422 of this size");
    renderCmd->add_option("--rate", render.rate, "N/D: frame rate of raw input (default 25/1)");
    renderCmd->add_option("--output-format", render.outputFormat, "y4m or yuyv (default: as the input)")
        ->check(CLI::IsMember({"y4m", "yuyv"}));
    auto* progressFlag = renderCmd->add_flag("--progress", render.progress, "Progress on stderr even when not a terminal");
    renderCmd->add_flag("--no-progress", render.noProgress, "No progress, even on a terminal")->excludes(progressFlag);

    CLI::App* blobCmd = app.add_subcommand("blob", "Parameter blobs as the module saves and loads them");
    blobCmd->require_subcommand(1);
    blobCmd->fallthrough();
    BlobSaveOptions save;
    CLI::App* saveCmd = blobCmd->add_subcommand("save", "Writes the blob the filter's SaveParameters produces");
    saveCmd->add_option("filter", save.filter, "FILTER[@file.blob][:name=value...]")->required();
    saveCmd->add_option("-o,--output", save.output, "Blob file, - for stdout")->required();
    BlobShowOptions show;
    CLI::App* showCmd =
        blobCmd->add_subcommand("show", "Decodes a blob: filter, version, fields, and whether the module loads it");
    showCmd->add_option("file", show.file, "Blob file, - for stdin")->required();
    showCmd->add_flag("--json", show.json, "JSON instead of text");

    DemoOptions demo;
    CLI::App* demoCmd = app.add_subcommand(
        "demo", "The built-in test picture through every filter that renders: contact sheet PNG, Y4M, legend");
    demoCmd->add_option("-o,--output", demo.dir, "Folder for the results (default zvf-demo)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::ostringstream out, err;
        const int code = app.exit(e, out, err);
        Put(io.out, out.str());
        Put(io.err, err.str());
        return code == 0 ? kExitOk : kExitUsage;
    }
    try {
        if (*listCmd) return ListCommand(module, list, io);
        if (*renderCmd) return RenderCommand(module, render, io);
        if (*saveCmd) return BlobSaveCommand(module, save, io);
        if (*showCmd) return BlobShowCommand(module, show, io);
        if (*demoCmd) return DemoCommand(module, demo, io);
    } catch (const CliError& e) {
        std::fflush(io.out);
        std::fprintf(io.err, "zvf: %s\n", e.what());
        return e.Code();
    } catch (const ReaderGone&) {
        return kExitOk;  // the reader has what it wanted
    } catch (const std::bad_alloc&) {
        std::fprintf(io.err, "zvf: out of memory\n");
        return kExitModule;
    }
    return kExitUsage;
}

}  // namespace zvf::cli
