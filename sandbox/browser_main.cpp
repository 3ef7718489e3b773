// This program replaces the user's browser (on Linux: xdg-open) in the sandbox. It opens a web address, presses Allow
// on the consent page and follows the redirect. Any other target is only logged. VOLO_SANDBOX_BROWSER_LOG is the path
// of the log, which has one line per event.

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include "sandbox/browser.h"

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);
constexpr auto kReadingTime = std::chrono::seconds(1); // so that a person sees how the launcher waits

std::string environmentText(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// Returns the text of a page's body without tags. Line ends become spaces.
std::string visibleText(const std::string& html) {
    const std::size_t body = html.find("<body");
    std::string text;
    bool inTag = false;
    for (const char character : body == std::string::npos ? html : html.substr(body)) {
        if (character == '<') inTag = true;
        if (!inTag && (character != '\n' || !text.empty())) text += character == '\n' ? ' ' : character;
        if (character == '>') {
            inTag = false;
            if (!text.empty() && text.back() != ' ') text += ' ';
        }
    }
    return text;
}

} // namespace

int main(int count, char** values) {
    if (count < 2) return 1;
    const std::string target = values[1];
    std::ofstream log(environmentText("VOLO_SANDBOX_BROWSER_LOG"), std::ios::app);
    if (!target.starts_with("https://")) {
        log << "shows the folder " << target << std::endl;
        return 0;
    }
    log << "opens the consent page" << std::endl;
    std::this_thread::sleep_for(kReadingTime);
    const std::filesystem::path hold = environmentText("VOLO_SANDBOX_HOLD");
    std::error_code ignored;
    while (!hold.empty() && std::filesystem::exists(hold / "browser", ignored))
        std::this_thread::sleep_for(kPollInterval);
    const BrowserVisit visit = signInWithBrowser(target, environmentText("SSL_CERT_FILE"));
    log << (visit.error.empty() ? "was sent back and reads: " + visibleText(visit.finalPage) : visit.error)
        << std::endl;
    return visit.error.empty() ? 0 : 1;
}
