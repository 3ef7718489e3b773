// volo-gallery draws every screen of the launcher in every state to PNG files. volo-gallery --help lists the options.

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "gallery/stage.h"

namespace fs = std::filesystem;

namespace {

struct WindowSize {
    float width, height;
};
constexpr WindowSize kSizes[] = {{1180, 740}, {900, 560}};

struct Options {
    std::string out;
    std::string home = (fs::temp_directory_path() / "volo-gallery").string();
    std::string only;
    std::vector<float> scales = {1.0f, 2.0f};
};

std::string pictureName(const Scene& scene, const StageSetting& setting) {
    char size[64];
    std::snprintf(size, sizeof size, "-%gx%g@%g.png", static_cast<double>(setting.width),
                  static_cast<double>(setting.height), static_cast<double>(setting.scale));
    return scene.name + std::string(size);
}

// Draws the scenes that `options.only` selects, with one window size and scale. Returns the number of pictures, or
// nullopt if one could not be drawn.
std::optional<int> drawAll(Offscreen& canvas, const StageSetting& setting, const Options& options) {
    const int width = static_cast<int>(std::lround(setting.width * setting.scale));
    const int height = static_cast<int>(std::lround(setting.height * setting.scale));
    if (!canvas.resize(width, height)) {
        std::fprintf(stderr, "cannot draw a picture of %dx%d pixels\n", width, height);
        return std::nullopt;
    }
    int pictures = 0;
    for (const Scene& scene : scenes()) {
        const std::string name = pictureName(scene, setting);
        if (name.find(options.only) == std::string::npos) continue;
        Stage stage(setting);
        scene.play(stage);
        stage.drawOn(canvas);
        if (!canvas.save(fs::path(options.out) / name)) {
            std::fprintf(stderr, "cannot write %s\n", name.c_str());
            return std::nullopt;
        }
        ++pictures;
    }
    return pictures;
}

} // namespace

// An exception, for example because of a full disk, ends the program.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int count, char** arguments) {
    Options options;
    CLI::App commandLine("Draws every screen of the launcher in every state.");
    commandLine.add_option("--out", options.out, "Folder for the pictures")->required();
    commandLine
        .add_option("--home", options.home, "The user's folder in the pictures; created, and removed at the end")
        ->check(CLI::NonexistentPath);
    commandLine.add_option("--only", options.only, "Only pictures with this in their name");
    commandLine.add_option("--scale", options.scales, "Scales to draw at (default: 1 and 2)");
    CLI11_PARSE(commandLine, count, arguments);

    std::error_code ignored;
    fs::create_directories(options.out, ignored);
    Offscreen canvas;
    std::string errorText;
    if (!canvas.open(errorText)) {
        std::fprintf(stderr, "cannot draw pictures: %s\n", errorText.c_str());
        return 1;
    }
    const fs::path programs = fs::canonical("/proc/self/exe", ignored).parent_path();
    int pictures = 0;
    for (const WindowSize& size : kSizes) {
        for (const float scale : options.scales) {
            const auto drawn = drawAll(canvas, {options.home, programs, size.width, size.height, scale}, options);
            if (!drawn) return 1;
            pictures += *drawn;
        }
    }
    fs::remove_all(options.home, ignored);
    std::printf("%d pictures in %s\n", pictures, options.out.c_str());
    return pictures > 0 ? 0 : 1;
}
