// The FFmpeg pipeline test's reference: raw yuyv422 frames through filters
// driven by the host kit alone, filter by filter over the whole clip, the two
// fields of a frame at once as zvf renders them.
//   zvf_reference --built                       identifiers of filters that render
//                                               reproducibly (noise is drawn afresh
//                                               on every call, so it is left out)
//   zvf_reference W H IN OUT [FILTER[@blob]...]
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "kit/host_kit.h"

namespace {

std::vector<uint8_t> ReadFile(const std::string& path) {
    std::vector<uint8_t> bytes;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return bytes;
    uint8_t buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) bytes.insert(bytes.end(), buf, buf + n);
    std::fclose(f);
    return bytes;
}

int Fail(const std::string& why) {
    std::fprintf(stderr, "zvf_reference: %s\n", why.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace zvf;
    auto module = host::LoadedModule::Load(host::DefaultModulePath());
    if (!module) return Fail("cannot load the module");
    if (argc == 2 && std::string(argv[1]) == "--built") {
        std::vector<uint8_t> picture(64 * 8 * 2);
        for (size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<uint8_t>(i * 37 + i / 7);
        for (size_t i = 0; i < module->FilterCount(); ++i) {
            std::vector<uint8_t> out[2];
            bool built = true;
            for (auto& o : out) {
                auto instance = module->Create(i);
                o = picture;
                host::Frame src(picture.data(), 64, 8), dst(o.data(), 64, 8);
                built = built && instance->RenderFrame(dst, src, 0, true) != status::not_implemented;
            }
            const std::string id = module->Identity(i).identifier;
            if (built && out[0] == out[1])
                std::printf("%s\n", id.c_str());
            else if (built)
                std::fprintf(stderr, "not compared, output differs from run to run: %s\n", id.c_str());
        }
        return 0;
    }
    if (argc < 5) return Fail("usage: zvf_reference W H IN OUT [FILTER[@blob]...]");
    const int32_t w = std::atoi(argv[1]), h = std::atoi(argv[2]);
    std::vector<uint8_t> video = ReadFile(argv[3]);
    const size_t frameBytes = static_cast<size_t>(w) * h * 2;
    if (frameBytes == 0 || video.size() % frameBytes != 0) return Fail("input is not whole frames");
    for (int a = 5; a < argc; ++a) {
        const std::string request = argv[a];
        const size_t at = request.find('@');
        const auto index = module->Find(request.substr(0, at));
        if (!index) return Fail("no filter " + request);
        const std::vector<uint8_t> blob = at == std::string::npos ? std::vector<uint8_t>() : ReadFile(request.substr(at + 1));
        auto instance = module->Create(*index, at == std::string::npos ? nullptr : &blob);
        instance->Get()->PrepareRender();
        for (size_t n = 0; n * frameBytes < video.size(); ++n) {
            uint8_t* pixels = video.data() + n * frameBytes;
            std::vector<uint8_t> out(pixels, pixels + frameBytes);
            host::Frame src(pixels, w, h, 1), dst(out.data(), w, h, 1);
            if (instance->RenderFrame(dst, src, static_cast<uint32_t>(n), true) != 0) return Fail(request + " failed to render");
            std::copy(out.begin(), out.end(), pixels);
        }
    }
    FILE* f = std::fopen(argv[4], "wb");
    if (f == nullptr || std::fwrite(video.data(), 1, video.size(), f) != video.size()) return Fail("cannot write");
    std::fclose(f);
    return 0;
}
