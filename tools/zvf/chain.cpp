#include "chain.h"

#include "errors.h"

namespace zvf::cli {

Chain::Chain(Session& session, const std::vector<std::string>& specs) : session_(session) {
    for (const std::string& text : specs) {
        size_t index = 0;
        Stage stage;
        stage.instance = session.Configure(ParseFilterSpec(text), &index, nullptr, &notes_);
        stage.name = session.Name(index);
        // Refuse before any file is opened, not at the first frame.
        if (!session.RenderBuilt(index))
            throw CliError(kExitModule, stage.name + ": rendering is not built yet (Render answers 0x80004001)");
        stages_.push_back(std::move(stage));
    }
}

Chain::~Chain() {
    if (!prepared_) return;
    for (Stage& s : stages_) s.instance->Get()->EndRender();
}

void Chain::Render(std::vector<uint8_t>* packed, int32_t width, int32_t height, uint32_t property,
                   uint32_t frameNumber) {
    if (!prepared_) {
        prepared_ = true;
        // Filters that size buffers for the project's frames (the blurs)
        // then size them for these.
        FrameFormat format = session_.Module().Host().Options().projectFormat;
        format.width = width;
        format.height = height;
        session_.Module().Host().SetProjectFormat(format);
        for (Stage& s : stages_) {
            const Status st = s.instance->Get()->PrepareRender();
            if (st != status::ok) throw CliError(kExitModule, s.name + ": PrepareRender failed with " + Hex(st));
        }
    }
    for (Stage& s : stages_) {
        // Start from the source so nothing stale shows where a filter leaves
        // pixels alone (the last pixel of an odd-width rectangle, say).
        scratch_ = *packed;
        host::Frame src(packed->data(), width, height, property);
        host::Frame dst(scratch_.data(), width, height, property);
        // A one-row frame has no odd field to render.
        const Status st = height > 1 ? s.instance->RenderFrame(dst, src, frameNumber, true)
                                     : s.instance->RenderField(dst, src, Rect{0, 0, width, height}, 0, frameNumber);
        if (st == status::not_implemented)
            throw CliError(kExitModule, s.name + ": rendering is not built yet (Render answers 0x80004001)");
        if (st != status::ok)
            throw CliError(kExitModule, s.name + ": Render failed on frame " + std::to_string(frameNumber) + " with " +
                                            Hex(static_cast<uint32_t>(st)));
        packed->swap(scratch_);
    }
}

}  // namespace zvf::cli
