#pragma once

// Parses requests and writes responses for the sandbox's servers, in HTTP/1.1. Any thread.

#include <cstddef>
#include <map>
#include <string>

struct HttpRequest {
    std::string method;                                 // empty: not an HTTP request
    std::string path;                                   // without the query, percent-decoded
    std::map<std::string, std::string> headers;         // names in lower case
    std::multimap<std::string, std::string> parameters; // from the query and from a form in the body, decoded

    // Returns the value of a parameter that occurs exactly once. Otherwise empty, because OAuth 2.0 forbids repeated
    // parameters.
    [[nodiscard]] std::string parameter(const std::string& name) const;
    [[nodiscard]] std::string header(const std::string& name) const; // empty if it is absent
};

// Parses a whole request, head and body.
[[nodiscard]] HttpRequest parseHttpRequest(const std::string& text);

// Returns the head of a response with a Content-Length. `moreHeaders` are whole lines, each with its line end.
[[nodiscard]] std::string httpHead(int status, std::size_t length, const std::string& type,
                                   const std::string& moreHeaders = {});

// Returns a whole response.
[[nodiscard]] std::string httpAnswer(int status, const std::string& body, const std::string& type = "application/json",
                                     const std::string& moreHeaders = {});
