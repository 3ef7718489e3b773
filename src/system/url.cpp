#include "system/url.h"

#include <cstdlib>
#include <string_view>

bool parseHttpsUrl(const std::string& url, std::string& host, int& port, std::string& path) {
    constexpr std::string_view scheme = "https://";
    if (!url.starts_with(scheme)) return false;

    const std::size_t slash = url.find('/', scheme.size());
    const std::string authority = url.substr(scheme.size(), slash - scheme.size());
    path = slash == std::string::npos ? "/" : url.substr(slash);
    if (authority.empty()) return false;

    port = 443;
    const std::size_t colon = authority.find(':');
    host = authority.substr(0, colon);
    if (colon == std::string::npos) return true;

    const std::string portText = authority.substr(colon + 1);
    if (portText.empty() || portText.find_first_not_of("0123456789") != std::string::npos) return false;
    port = std::atoi(portText.c_str());
    return port >= 1 && port <= 65535 && !host.empty();
}

std::string percentEncode(const std::string& text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr std::string_view kUnreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    std::string encoded;
    for (const char character : text) {
        if (kUnreserved.find(character) != std::string_view::npos) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return encoded;
}
