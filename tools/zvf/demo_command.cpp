// zvf demo: the built-in picture through every filter that renders, as a
// contact sheet, a Y4M file of the frames and a legend.
#include <filesystem>

#include "chain.h"
#include "commands.h"
#include "contact_sheet.h"
#include "demo_picture.h"
#include "demo_table.h"
#include "errors.h"
#include "video_io.h"

namespace zvf::cli {
namespace {

// Temporal filters see a short run of the same picture; the last frame shows.
constexpr uint32_t kFrames = 5;
constexpr int32_t kColumns = 7;

struct Tile {
    std::string name;
    std::string parameters;
    std::vector<uint8_t> frame;
};

// The picture through one filter with `pairs`; throws CliError.
std::vector<uint8_t> RenderDemo(Session& session, const std::string& request, const std::vector<uint8_t>& picture,
                                std::vector<std::string>* notes) {
    Chain chain(session, {request});
    notes->insert(notes->end(), chain.Notes().begin(), chain.Notes().end());
    std::vector<uint8_t> frame;
    for (uint32_t n = 0; n < kFrames; ++n) {
        frame = picture;
        chain.Render(&frame, kDemoWidth, kDemoHeight, 1, n);
    }
    return frame;
}

}  // namespace

int DemoCommand(const std::string& module, const DemoOptions& o, const Streams& io) {
    std::error_code ec;
    std::filesystem::create_directories(o.dir, ec);
    if (ec) throw CliError(kExitIo, "cannot create " + o.dir + ": " + ec.message());
    Session session(module);
    const std::vector<uint8_t> picture = DemoPicture();
    std::vector<Tile> tiles{{"original", "", picture}};
    std::vector<std::string> skipped, notes;
    for (size_t i = 0; i < session.FilterCount(); ++i) {
        const std::string name = session.Name(i);
        if (!session.RenderBuilt(i)) {
            skipped.push_back(name);
            continue;
        }
        const std::string id = host::Utf8(session.Identifier(i).c_str());
        const std::string pairs(TellingParameters(host::IdentifierKey(id)));
        Tile tile{name, pairs, {}};
        try {
            tile.frame = RenderDemo(session, pairs.empty() ? id : id + ":" + pairs, picture, &notes);
        } catch (const CliError& e) {
            if (pairs.empty() || e.Code() != kExitUsage) throw;
            notes.push_back(name + ": " + e.what() + "; shown with its defaults");
            tile.parameters.clear();
            tile.frame = RenderDemo(session, id, picture, &notes);
        }
        tiles.push_back(std::move(tile));
    }

    std::vector<std::vector<uint8_t>> frames;
    for (const Tile& t : tiles) frames.push_back(t.frame);
    const std::string sheet = o.dir + "/contact-sheet.png";
    WritePng(sheet, ContactSheet(frames, kDemoWidth, kDemoHeight, kColumns));

    const std::string y4m = o.dir + "/frames.y4m";
    FILE* f = std::fopen(y4m.c_str(), "wb");
    if (f == nullptr) throw CliError(kExitIo, "cannot create " + y4m);
    VideoFormat format = RawFormat(kDemoWidth, kDemoHeight, "25:1", true);
    try {
        VideoWriter writer(f, format);
        for (const auto& frame : frames) writer.Write(frame);
        writer.Flush();
    } catch (...) {
        std::fclose(f);
        throw;
    }
    std::fclose(f);

    std::string legend = "zvf demo: " + std::to_string(kDemoWidth) + "x" + std::to_string(kDemoHeight) +
                         " test picture (colour bars, luma ramp, Cb and Cr ramps, zone plate, fine detail)\n";
    for (size_t i = 0; i < tiles.size(); ++i) {
        char line[160];
        std::snprintf(line, sizeof line, "%3zu  %-16s %s\n", i + 1, tiles[i].name.c_str(),
                      i == 0 ? "" : tiles[i].parameters.empty() ? "(defaults)" : tiles[i].parameters.c_str());
        legend += line;
    }
    for (const std::string& n : notes) legend += "note: " + n + "\n";
    if (!skipped.empty()) {
        legend += "not shown, rendering not built yet (Render answers 0x80004001):";
        for (size_t i = 0; i < skipped.size(); ++i) legend += (i ? ", " : " ") + skipped[i];
        legend += "\n";
    }
    legend += "tiles: " + sheet + "\nframes, in tile order: " + y4m + "\n";
    WriteFileBytes(o.dir + "/legend.txt", std::vector<uint8_t>(legend.begin(), legend.end()));
    std::fwrite(legend.data(), 1, legend.size(), io.out);
    return kExitOk;
}

}  // namespace zvf::cli
