#include "sandbox/browser.h"

#include <cstddef>
#include <cstdlib>
#include <utility>

#include <httplib.h>

#include "sandbox/loopback_connection.h"

namespace {

// Splits a URL into "https://host:port" and the rest, which begins with a slash.
std::pair<std::string, std::string> splitUrl(const std::string& url) {
    const std::size_t path = url.find('/', url.find("://") + 3);
    if (path == std::string::npos) return {url, "/"};
    return {url.substr(0, path), url.substr(path)};
}

std::string between(const std::string& text, const std::string& before, const std::string& after) {
    const std::size_t start = text.find(before);
    if (start == std::string::npos) return {};
    const std::size_t begin = start + before.size();
    return text.substr(begin, text.find(after, begin) - begin);
}

void followRedirect(BrowserVisit& visit) {
    const auto [origin, path] = splitUrl(visit.redirect);
    const int port = std::atoi(origin.c_str() + origin.rfind(':') + 1);
    const LoopbackConnection spares[] = {LoopbackConnection(port), LoopbackConnection(port)};

    httplib::Client client(origin);
    if (const httplib::Result answer = client.Get(path)) {
        visit.finalPage = answer->body;
        visit.finalType = answer->get_header_value("Content-Type");
    } else {
        visit.error = "no answer to the redirect: " + httplib::to_string(answer.error());
    }
    if (const httplib::Result icon = client.Get("/favicon.ico")) visit.iconStatus = icon->status;
}

} // namespace

BrowserVisit signInWithBrowser(const std::string& authorizationUrl, const std::string& trustedRoots, bool allow) {
    BrowserVisit visit;
    const auto [origin, path] = splitUrl(authorizationUrl);
    httplib::Client client(origin);
    client.set_ca_cert_path(trustedRoots);
    client.enable_server_certificate_verification(true);

    const httplib::Result consent = client.Get(path);
    if (!consent) {
        visit.error = "no consent page: " + httplib::to_string(consent.error());
        return visit;
    }
    visit.consentPage = consent->body;
    const std::string request = between(consent->body, "name=\"request\" value=\"", "\"");
    if (consent->status != 200 || request.empty()) {
        visit.error = "the provider refused: HTTP " + std::to_string(consent->status);
        return visit;
    }
    const httplib::Result pressed =
        client.Get("/consent?request=" + request + (allow ? "&answer=allow" : "&answer=deny"));
    if (!pressed || pressed->status != 302) {
        visit.error = "the button of the consent page did not redirect";
        return visit;
    }
    visit.redirect = pressed->get_header_value("Location");
    followRedirect(visit);
    return visit;
}
