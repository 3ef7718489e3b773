#include "system/portal_linux.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include <systemd/sd-bus.h>

#include "system/dialog_hook.h"
#include "system/system_texts.h"

namespace {

constexpr char kService[] = "org.freedesktop.portal.Desktop";
constexpr char kObject[] = "/org/freedesktop/portal/desktop";
constexpr char kInterface[] = "org.freedesktop.portal.FileChooser";
constexpr char kServiceLeft[] = "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                                "arg0='org.freedesktop.portal.Desktop'";
constexpr char kToken[] = "volo"; // identifies the request; constant, because each connection makes one request
constexpr std::uint32_t kFirstVersionWithFolders = 3;
constexpr std::uint64_t kCallTimeoutUs = 10'000'000; // long, because the bus may have to start the portal
constexpr std::uint64_t kHookPeriodUs = 30'000;
constexpr std::chrono::milliseconds kShortestDialog{500}; // a user needs longer to read and close a dialog

// GTK's portal also ends with kFailed if the user closes the dialog with Escape or at its title bar.
enum Response : std::uint32_t { kChosen = 0, kCancelled = 1, kFailed = 2 };

using Bus = std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)>;
using Message = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

struct PortalAnswer {
    bool hasArrived = false;
    bool serviceLeft = false;
    std::uint32_t response = kFailed;
    std::string uri;
};

// Reads the response signal, which contains a response code and a dictionary. The dictionary's entry "uris" is a list
// whose first element is the chosen file.
int readResponse(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    auto& answer = *static_cast<PortalAnswer*>(data);
    answer.hasArrived = true;
    if (sd_bus_message_read(message, "u", &answer.response) < 0) return 0;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return 0;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = "";
        if (sd_bus_message_read(message, "s", &key) < 0) return 0;
        if (std::string_view(key) != "uris") {
            if (sd_bus_message_skip(message, "v") < 0 || sd_bus_message_exit_container(message) < 0) return 0;
            continue;
        }
        const char* uri = nullptr;
        if (sd_bus_message_enter_container(message, 'v', "as") > 0 &&
            sd_bus_message_enter_container(message, 'a', "s") > 0 && sd_bus_message_read(message, "s", &uri) > 0) {
            answer.uri = uri;
        }
        return 0;
    }
    return 0;
}

int readServiceLeft(sd_bus_message* /*message*/, void* data, sd_bus_error* /*error*/) {
    static_cast<PortalAnswer*>(data)->serviceLeft = true;
    return 0;
}

bool appendFolder(sd_bus_message* message, const std::string& folder) {
    return sd_bus_message_open_container(message, 'e', "sv") >= 0 &&
           sd_bus_message_append(message, "s", "current_folder") >= 0 &&
           sd_bus_message_open_container(message, 'v', "ay") >= 0 &&
           sd_bus_message_append_array(message, 'y', folder.c_str(), folder.size() + 1) >= 0 && // with the final zero
           sd_bus_message_close_container(message) >= 0 && sd_bus_message_close_container(message) >= 0;
}

bool openDialog(sd_bus* bus, const std::string& title, const std::string& folder, bool chooseFolder) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(bus, &created, kService, kObject, kInterface, "OpenFile") < 0) return false;
    const Message message(created, &sd_bus_message_unref);
    constexpr std::uint32_t pattern = 0; // the filter is a pattern, not a MIME type
    const bool complete =
        sd_bus_message_append(created, "ss", "", title.c_str()) >= 0 &&
        sd_bus_message_open_container(created, 'a', "{sv}") >= 0 &&
        sd_bus_message_append(created, "{sv}", "handle_token", "s", kToken) >= 0 &&
        sd_bus_message_append(created, "{sv}", "directory", "b", chooseFolder ? 1 : 0) >= 0 &&
        (folder.empty() || appendFolder(created, folder)) &&
        (chooseFolder || sd_bus_message_append(created, "{sv}", "filters", "a(sa(us))", 1, kProjectFilterText, 1,
                                               pattern, kProjectFilterPattern) >= 0) &&
        sd_bus_message_close_container(created) >= 0;
    return complete && sd_bus_call(bus, created, 0, nullptr, nullptr) >= 0;
}

// Subscribes to two signals: the response, and the one that arrives when the portal leaves the bus. The object path of
// the response contains the launcher's bus name and the token.
bool subscribe(sd_bus* bus, PortalAnswer& answer) {
    const char* uniqueName = nullptr;
    if (sd_bus_get_unique_name(bus, &uniqueName) < 0) return false;
    std::string sender = uniqueName + 1; // ":1.42" becomes "1_42"
    std::replace(sender.begin(), sender.end(), '.', '_');
    const std::string request = std::string(kObject) + "/request/" + sender + "/" + kToken;
    return sd_bus_match_signal(bus, nullptr, kService, request.c_str(), "org.freedesktop.portal.Request", "Response",
                               readResponse, &answer) >= 0 &&
           sd_bus_add_match(bus, nullptr, kServiceLeft, readServiceLeft, &answer) >= 0;
}

std::string percentDecode(const std::string& text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned byte = 0;
        const char* digits = text.data() + i + 1;
        const bool escape =
            text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        decoded += escape ? static_cast<char>(byte) : text[i];
        if (escape) i += 2;
    }
    return decoded;
}

std::string pathOf(const std::string& uri) {
    constexpr std::string_view scheme = "file://";
    if (!uri.starts_with(scheme)) return {};
    const std::size_t path = uri.find('/', scheme.size());
    return path == std::string::npos ? std::string() : percentDecode(uri.substr(path));
}

} // namespace

DialogOutcome askPortal(const std::string& title, const std::string& folder, bool chooseFolder, std::string& choice) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return DialogOutcome::Unavailable;
    PortalAnswer answer; // declared before `bus`, so that it outlives the callbacks, which write to it
    const Bus bus(opened, &sd_bus_flush_close_unref);
    sd_bus_set_method_call_timeout(opened, kCallTimeoutUs);
    std::uint32_t version = 0;
    const int known =
        sd_bus_get_property_trivial(opened, kService, kObject, kInterface, "version", nullptr, 'u', &version);
    if (known < 0 || (chooseFolder && version < kFirstVersionWithFolders)) return DialogOutcome::Unavailable;
    const auto asked = std::chrono::steady_clock::now();
    if (!subscribe(opened, answer) || !openDialog(opened, title, folder, chooseFolder)) {
        return DialogOutcome::Unavailable;
    }
    while (!answer.hasArrived && !answer.serviceLeft) {
        const int processed = sd_bus_process(opened, nullptr);
        if (processed < 0) return DialogOutcome::Unavailable;
        if (processed > 0) continue;
        if (currentDialogHook) currentDialogHook(0);
        (void)sd_bus_wait(opened, kHookPeriodUs);
    }
    if (!answer.hasArrived) return DialogOutcome::Unavailable;
    const bool failedAtOnce = answer.response == kFailed && std::chrono::steady_clock::now() - asked < kShortestDialog;
    if (failedAtOnce) return DialogOutcome::Unavailable;
    choice = answer.response == kChosen ? pathOf(answer.uri) : std::string();
    return DialogOutcome::Answered;
}
