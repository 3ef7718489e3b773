#pragma once

// What the user's browser does during a sign-in, done by a program: it shows the consent page, presses a button of it,
// and follows the redirect to the launcher's loopback listener. Like a real one it opens spare connections there that
// say nothing, and asks for an icon.

#include <string>

struct BrowserVisit {
    std::string error;       // what went wrong on the way; empty when the redirect was answered
    std::string consentPage; // HTML
    std::string redirect;    // where the provider sent the browser
    std::string finalPage;   // what the listener answered
    std::string finalType;   // its content type
    int iconStatus = 0;      // 0: the icon was not answered, because the listener had gone by then
};

// `trustedRoots` is a PEM file. Blocking; any thread.
BrowserVisit signInWithBrowser(const std::string& authorizationUrl, const std::string& trustedRoots, bool allow = true);
