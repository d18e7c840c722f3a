// A chain of configured filter instances that renders frames in place:
// each filter renders both fields of the frame (on two threads, paired by
// the host's field synchronisation) before the next filter sees it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "session.h"

namespace zvf::cli {

class Chain {
public:
    // Throws CliError for an unknown filter, a bad parameter or blob.
    Chain(Session& session, const std::vector<std::string>& specs);
    ~Chain();

    size_t Size() const { return stages_.size(); }
    // Values the module did not keep as given.
    const std::vector<std::string>& Notes() const { return notes_; }
    // Renders one packed frame through every filter. Before the first frame
    // the host reports the frame's size as the project format and each
    // instance gets PrepareRender. Throws CliError (module) when a filter
    // answers with a failure; 0x80004001 says rendering is not built.
    void Render(std::vector<uint8_t>* packed, int32_t width, int32_t height, uint32_t property, uint32_t frameNumber);

private:
    struct Stage {
        std::string name;
        std::unique_ptr<host::Instance> instance;
    };
    Session& session_;
    std::vector<Stage> stages_;
    std::vector<uint8_t> scratch_;
    std::vector<std::string> notes_;
    bool prepared_ = false;
};

}  // namespace zvf::cli
