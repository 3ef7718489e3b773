#include "system/whole_file.h"

#include <fstream>

bool readWholeFile(const std::string& path, std::string& bytes) {
    bytes.clear();
    std::ifstream file(path, std::ios::binary);
    char buffer[16384];
    while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
        bytes.append(buffer, static_cast<std::size_t>(file.gcount()));
    }
    return file.eof();
}
