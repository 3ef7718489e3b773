#include "sandbox/http_message.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace {

// Decodes percent-encoded text. `plus` replaces "+": a space in queries and forms, "+" in paths.
std::string decode(std::string_view text, char plus) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            decoded += static_cast<char>(std::strtol(std::string(text.substr(i + 1, 2)).c_str(), nullptr, 16));
            i += 2;
        } else {
            decoded += text[i] == '+' ? plus : text[i];
        }
    }
    return decoded;
}

// Returns the part of `text` before its first `separator`, and removes both from `text`.
std::string_view cut(std::string_view& text, std::string_view separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view before = text.substr(0, end);
    text.remove_prefix(std::min(end + separator.size(), text.size()));
    return before;
}

void addParameters(std::string_view text, HttpRequest& request) {
    while (!text.empty()) {
        std::string_view value = cut(text, "&");
        const std::string name = decode(cut(value, "="), ' ');
        request.parameters.emplace(name, decode(value, ' '));
    }
}

} // namespace

std::string HttpRequest::parameter(const std::string& name) const {
    return parameters.count(name) == 1 ? parameters.find(name)->second : std::string();
}

std::string HttpRequest::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found != headers.end() ? found->second : std::string();
}

HttpRequest parseHttpRequest(const std::string& text) {
    HttpRequest request;
    std::string_view rest = text;
    std::string_view head = cut(rest, "\r\n\r\n");
    std::string_view line = cut(head, "\r\n");
    request.method = cut(line, " ");
    std::string_view target = cut(line, " ");
    request.path = decode(cut(target, "?"), '+');
    addParameters(target, request);
    while (!head.empty()) {
        std::string_view value = cut(head, "\r\n");
        std::string name(cut(value, ": "));
        for (char& letter : name)
            letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        request.headers[name] = value;
    }
    if (request.header("content-type") == "application/x-www-form-urlencoded") addParameters(rest, request);
    return request;
}

std::string httpHead(int status, std::size_t length, const std::string& type, const std::string& moreHeaders) {
    return "HTTP/1.1 " + std::to_string(status) + " Answer\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(length) + "\r\nConnection: close\r\n" + moreHeaders + "\r\n";
}

std::string httpAnswer(int status, const std::string& body, const std::string& type, const std::string& moreHeaders) {
    return httpHead(status, body.size(), type, moreHeaders) + body;
}
