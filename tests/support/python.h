#pragma once

// Runs Python, for files that come from code other than ours.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

// False when this machine has no python3 with these modules (names separated by commas). A script that fails throws.
inline bool runPython(const std::string& script, const std::filesystem::path& directory, const std::string& modules) {
    // The system's own where there is one: the first on the path may be another, without the system's modules.
    const std::string python = std::filesystem::exists("/usr/bin/python3") ? "/usr/bin/python3" : "python3";
    if (std::system((python + " -c 'import " + modules + "' 2>/dev/null").c_str()) != 0) return false;
    std::ofstream(directory / "script.py") << script;
    if (std::system(("cd '" + directory.string() + "' && " + python + " script.py").c_str()) != 0)
        throw std::runtime_error("the script failed");
    return true;
}
