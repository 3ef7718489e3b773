#include "fuzz/targets.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <sys/socket.h>

#include "config/launcher_config.h"
#include "config/launcher_settings.h"
#include "crypto/base64.h"
#include "install/archive_plan.h"
#include "install/package_container.h"
#include "install/package_extraction.h"
#include "install/release_statement.h"
#include "install/update_manifest.h"
#include "projects/project_list.h"
#include "projects/project_search.h"
#include "signin/loopback_listener.h"
#include "support/recording_system.h"
#include "support/temporary_folder.h"
#include "system/json.h"
#include "system/sockets.h"
#include "system/url.h"

namespace fs = std::filesystem;

namespace {

void require(bool kept, const char* promise) {
    if (kept) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

TemporaryFolder& folder() {
    static TemporaryFolder one;
    return one;
}

// Splits the input at its first zero byte, for targets that need two texts.
std::pair<std::string, std::string> twoTexts(std::string_view input) {
    const std::size_t end = std::min(input.find('\0'), input.size());
    return {std::string(input.substr(0, end)), std::string(input.substr(std::min(end + 1, input.size())))};
}

void address(std::string_view input) {
    std::string host, path;
    int port = 0;
    if (!parseHttpsUrl(std::string(input), host, port, path)) return;
    require(!host.empty() && port > 0 && port < 65536 && path.starts_with('/'), "an address has host, port and path");
}

void settings(std::string_view input) {
    // Skip an input with a size of five or more digits. The settings create as many list entries as the file states, so
    // a large size would only exhaust the memory.
    for (std::size_t at = input.find("size"); at != std::string_view::npos; at = input.find("size", at + 1)) {
        const std::size_t digits = std::min(input.find_first_of("0123456789", at), input.size());
        if (std::min(input.find_first_not_of("0123456789", digits), input.size()) - digits > 4) return;
    }
    recordingSystem().userDataDirectory = folder().string();
    const auto loadAndSave = [] {
        LauncherSettings loaded;
        require(loaded.load() && loaded.save(), "the settings are readable and writable");
        return readFileBytes(folder() / "Launcher.conf");
    };
    folder().write("Launcher.conf", std::string(input));
    const std::string once = loadAndSave();
    require(loadAndSave() == once, "what was saved comes back");
}

void configuration(std::string_view input) {
    folder().write("launcher_config.json", std::string(input));
    const LauncherConfig config = loadLauncherConfigFrom(folder().string());
    require(config.configured == config.message.empty(), "a message exactly without a configuration");
    require(config.downloadsDirectory.empty() || fs::path(config.downloadsDirectory).is_absolute(),
            "the downloads directory is absolute");
}

void manifest(std::string_view input) {
    UpdateManifest read;
    std::string failure;
    const bool usable = parseUpdateManifest(std::string(input), read, failure);
    require(usable == failure.empty(), "a message exactly for a bad manifest");
    if (!usable) return;
    const fs::path package = packagePathIn("/downloads", read.version);
    require(package.parent_path() == "/downloads", "a version is a part of a file name");
}

void json(std::string_view input) {
    rapidjson::Document document;
    if (!parseJsonObject(input, document)) return;
    for (const char* key : {"access_token", "refresh_token", "error", "error_description", "name", "email"})
        (void)jsonStringMember(document, key);
}

void containerFile(std::string_view input) {
    const auto [key, bytes] = twoTexts(input);
    const std::string sealed = folder().write("container", bytes).string();
    std::uint64_t size = 0, written = 0;
    std::string failure;
    const bool fits = readContainerSize(sealed, size, failure);
    require(!fits || size < bytes.size(), "the payload is a part of the file");
    const bool opened =
        decryptPackageTo([&](const unsigned char*, std::size_t count) { written += count; }, sealed, key, failure);
    require(!opened || (fits && written == size), "an opened container is complete");
}

void base64(std::string_view input) {
    const std::string bytes = base64DecodeCanonical(input);
    require(bytes.empty() || base64Encode(bytes) == input, "canonical Base64 has one form");
    (void)base64DecodeLenient(input);
}

void statementText(std::string_view input) {
    const auto [keys, text] = twoTexts(input);
    ReleaseStatement release;
    if (!parseReleaseStatement(text, release)) return;
    require(text.starts_with(release.signedText), "the signed bytes are the start of the statement");
    const std::string verdict = judgeReleaseStatement(text, parsePublisherKeys(keys), {"1", 1, "", "-"}, 0);
    require(!verdict.empty(), "nobody else's statement is good for this package");
}

void entryName(std::string_view input) {
    if (!isSafeEntryName(input)) return;
    std::string name(input);
    std::replace(name.begin(), name.end(), '\\', '/');
    const std::string inside = (fs::path("/root") / name).lexically_normal().string();
    require(inside.starts_with("/root"), "a name stays below the directory");
    require(name.find(':') == std::string::npos, "a name has no drive");
}

void archive(std::string_view input) {
    const fs::path root = folder() / "unpack";
    fs::remove_all(root);
    const std::string file = folder().write("unpack/archive", std::string(input)).string();
    (void)extractArchive(file, (root / "staging").string(), UpdateCancellation{});
    for (const auto& entry : fs::directory_iterator(root))
        require(entry.path().filename() == "archive" || entry.path().filename() == "staging",
                "an archive writes below its directory only");
    for (const auto& entry : fs::recursive_directory_iterator(root))
        require(entry.is_directory() || (entry.is_regular_file() && !entry.is_symlink()), "an archive makes no links");
}

// Sends a request to the listener. Then reads until the listener closes the connection or sends nothing for 500 ms.
void request(std::string_view input) {
    const auto mailbox = std::make_shared<SignInMailbox>();
    const std::uint32_t generation = mailbox->startAttempt();
    mailbox->openFor(generation);
    static LoopbackListener listener;
    require(listener.start(mailbox, {generation, "state", "", "", ""}), "a port is free");
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<std::uint16_t>(listener.port()));
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(connection, reinterpret_cast<sockaddr*>(&peer), sizeof peer) == 0) {
        const std::string text = "GET /?" + std::string(input) + " HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n";
        (void)sendWithin(connection, text.data(), text.size(), std::chrono::milliseconds(500));
        char answer[512];
        while (receiveWithin(connection, answer, sizeof answer, std::chrono::milliseconds(500)) > 0) {
        }
    }
    closeSocket(connection);
    listener.stop();
    const SignInMailbox::Arrivals arrivals = mailbox->take();
    require(arrivals.code.empty() || input.find("state") != std::string_view::npos ||
                input.find('%') != std::string_view::npos,
            "a code counts only with its state");
}

void searchAndOrder(std::string_view input) {
    const auto [search, names] = twoTexts(input);
    std::vector<ProjectEntry> projects;
    for (std::size_t start = 0; start < names.size() && projects.size() < 50;) {
        const std::size_t end = std::min(names.find('\n', start), names.size());
        projects.push_back({});
        projects.back().name = names.substr(start, end - start);
        projects.back().lastOpened = static_cast<std::int64_t>(end % 3);
        start = end + 1;
    }
    sortByLastOpened(projects);
    const std::vector<std::int32_t> found = filterProjects(projects, searchTerms(search));
    require(std::is_sorted(found.begin(), found.end()) && found.size() <= projects.size(), "hits keep their order");
    for (std::size_t i = 1; i < projects.size(); ++i) {
        require(projects[i - 1].lastOpened >= projects[i].lastOpened, "the newest project comes first");
        require(!lessIgnoringCase(projects[i].name, projects[i - 1].name) ||
                    !lessIgnoringCase(projects[i - 1].name, projects[i].name),
                "of two names one comes first");
    }
}

} // namespace

const std::map<std::string, FuzzTarget>& fuzzTargets() {
    static const std::map<std::string, FuzzTarget> targets = {
        {"address", address},
        {"archive", archive},
        {"base64", base64},
        {"configuration", configuration},
        {"container", containerFile},
        {"entry_name", entryName},
        {"json", json},
        {"manifest", manifest},
        {"request", request},
        {"search", searchAndOrder},
        {"settings", settings},
        {"statement", statementText},
    };
    return targets;
}
