#pragma once

// A browser without a window. It loads the consent page, presses one of its buttons and follows the redirect to the
// launcher's loopback listener. As real browsers do, it also opens spare connections to the listener and asks for
// /favicon.ico.

#include <string>

struct BrowserVisit {
    std::string error;       // why the redirect was not answered; empty when it was
    std::string consentPage; // HTML
    std::string redirect;    // where the provider sent the browser
    std::string finalPage;   // what the listener answered
    std::string finalType;   // its content type
    int iconStatus = 0;      // 0: no answer, because the listener had already closed
};

// `trustedRoots` is a PEM file; `allow` chooses the button. Blocking; any thread.
[[nodiscard]] BrowserVisit signInWithBrowser(const std::string& authorizationUrl, const std::string& trustedRoots,
                                             bool allow = true);
