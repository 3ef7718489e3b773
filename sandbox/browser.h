#pragma once

// Simulates a browser, without a window. It loads the consent page, presses one of the page's buttons and follows the
// redirect to the launcher's loopback listener. Like a real browser, it also opens spare connections to the listener
// and requests /favicon.ico.

#include <string>

struct BrowserVisit {
    std::string error;       // why the browser got no response from the listener; empty on success
    std::string consentPage; // HTML
    std::string redirect;    // address to which the provider redirected the browser
    std::string finalPage;   // response of the listener
    std::string finalType;   // content type of the listener's response
    int iconStatus = 0;      // 0: no response, because the listener was already closed
};

// Signs in like a user in a browser. `trustedRoots` is a PEM file. `allow` selects the button. Blocking; any thread.
[[nodiscard]] BrowserVisit signInWithBrowser(const std::string& authorizationUrl, const std::string& trustedRoots,
                                             bool allow = true);
