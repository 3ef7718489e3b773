// volo-gallery: every screen of the launcher in every state, as PNG files, at scale 1 and 2.
//
//   volo-gallery --out DIR [--home DIR] [--only TEXT]

#include "gallery/stage.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

struct WindowSize {
    int width, height;
};
constexpr WindowSize kSizes[] = {{1180, 740}, {900, 560}};
constexpr int kScales[] = {1, 2};

int usage() {
    std::fputs("usage: volo-gallery --out DIR [--home DIR] [--only TEXT]\n"
               "  --out   where the pictures go\n"
               "  --home  the folder that stands for the user's own: a new one, removed at the end\n"
               "  --only  pictures with this in their name\n",
               stderr);
    return 2;
}

} // namespace

int main(int count, char** arguments) {
    std::error_code ignored;
    const fs::path programs = fs::canonical("/proc/self/exe", ignored).parent_path();
    fs::path out, home = fs::temp_directory_path() / "volo-gallery";
    std::string only;
    for (int i = 1; i + 1 < count; i += 2) {
        if (std::strcmp(arguments[i], "--out") == 0) out = arguments[i + 1];
        if (std::strcmp(arguments[i], "--home") == 0) home = arguments[i + 1];
        if (std::strcmp(arguments[i], "--only") == 0) only = arguments[i + 1];
    }
    if (out.empty() || count % 2 == 0) return usage();
    fs::create_directories(out, ignored);
    if (fs::exists(home, ignored)) {
        std::fprintf(stderr, "%s exists, and would be removed\n", home.c_str());
        return 1;
    }

    Offscreen canvas;
    std::string errorText;
    if (!canvas.open(errorText)) {
        std::fprintf(stderr, "no picture can be drawn: %s\n", errorText.c_str());
        return 1;
    }
    int pictures = 0;
    for (const WindowSize& size : kSizes) {
        for (const int scale : kScales) {
            if (!canvas.resize(size.width * scale, size.height * scale)) {
                std::fprintf(stderr, "no picture can be as large as %dx%d\n", size.width * scale, size.height * scale);
                return 1;
            }
            const StageSetting setting = {home, programs, static_cast<float>(size.width),
                                          static_cast<float>(size.height), static_cast<float>(scale)};
            for (const Scene& scene : scenes()) {
                const std::string name = std::string(scene.name) + "-" + std::to_string(size.width) + "x" +
                                         std::to_string(size.height) + "@" + std::to_string(scale) + ".png";
                if (name.find(only) == std::string::npos) continue;
                Stage stage(setting);
                scene.play(stage);
                stage.drawOn(canvas);
                if (!canvas.save(out / name)) {
                    std::fprintf(stderr, "cannot write %s\n", name.c_str());
                    return 1;
                }
                ++pictures;
            }
        }
    }
    fs::remove_all(home, ignored);
    std::printf("%d pictures in %s\n", pictures, out.c_str());
    return pictures > 0 ? 0 : 1;
}
