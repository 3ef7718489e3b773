// volo_fuzz_replay CORPUS: passes every file in CORPUS/<target> to the target of this name. Fails if a target has no
// file.

#include <cstdio>
#include <filesystem>

#include "fuzz/targets.h"
#include "support/temporary_folder.h"

int main(int count, char** arguments) {
    if (count != 2) return 2;
    for (const auto& [name, target] : fuzzTargets()) {
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(arguments[1]) / name)) {
            target(readFileBytes(entry.path()));
            ++files;
        }
        std::printf("%s: %d inputs\n", name.c_str(), files);
        if (files == 0) return 1;
    }
    return 0;
}
