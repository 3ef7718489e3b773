#pragma once

// HTTP/1.1 messages of the sandbox's servers. Any thread.

#include <cstddef>
#include <map>
#include <string>

struct HttpRequest {
    std::string method;                                 // empty: not an HTTP request
    std::string path;                                   // without the query, percent-decoded
    std::map<std::string, std::string> headers;         // names in lower case
    std::multimap<std::string, std::string> parameters; // of the query and of a form in the body, decoded

    // The value of a parameter that occurs exactly once, otherwise empty: OAuth 2.0 forbids repeated parameters.
    [[nodiscard]] std::string parameter(const std::string& name) const;
    [[nodiscard]] std::string header(const std::string& name) const; // empty when absent
};

// `text` is the whole request: head and body.
[[nodiscard]] HttpRequest parseHttpRequest(const std::string& text);

// A head with a Content-Length. `moreHeaders` are whole lines, each with its line end.
[[nodiscard]] std::string httpHead(int status, std::size_t length, const std::string& type,
                                   const std::string& moreHeaders = {});

// A whole answer.
[[nodiscard]] std::string httpAnswer(int status, const std::string& body, const std::string& type = "application/json",
                                     const std::string& moreHeaders = {});
