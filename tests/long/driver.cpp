// Runs one operation of the launcher on files in a folder. The scripts of this directory kill this program or let its
// system calls fail.
//
//   volo_long_driver install ROOT VERSION   runs one update; a server in this program offers VERSION
//   volo_long_driver settings ROOT COUNT    loads Launcher.conf, lists COUNT projects, and saves it
//   volo_long_driver create ROOT NAME       creates a project in ROOT/projects
//   volo_long_driver matrix [PART]          runs the launcher against servers that misbehave; see matrix.cpp
//   volo_long_driver cycles|rounds COUNT    starts and closes COUNT launchers; see soak.cpp
//
// The exit status is 0 if the operation reported success. The scripts trace the main thread only. The first three
// operations make all system calls that change their files on this thread.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "config/launcher_settings.h"
#include "install/update_pipeline.h"
#include "long/launcher_run.h"
#include "projects/project_on_disk.h"
#include "signin/google_endpoints.h"
#include "support/package_making.h"
#include "support/recording_system.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"

GoogleEndpoints googleEndpoints() { // Code and Renewal share an endpoint; at most one of them has a port of its own
    const int code = fetchPorts[static_cast<std::size_t>(Fetch::Code)];
    const int renewal = fetchPorts[static_cast<std::size_t>(Fetch::Renewal)];
    const int userInfo = fetchPorts[static_cast<std::size_t>(Fetch::UserInfo)];
    const int good = fetchPorts[static_cast<std::size_t>(Fetch::Manifest)];
    return {"https://127.0.0.1/auth", "127.0.0.1", code != good ? code : renewal, "127.0.0.1", userInfo};
}

namespace {

// Returns a package in which each file contains the version. A name with "~" makes the launcher extract on one thread,
// so that the system calls have the same order in every run.
std::string packageOf(const std::string& version) {
    std::vector<ZipEntry> entries;
    for (const char* name :
         {"editor.exe", "data/model.bin", "data/picture.bin", "lib/part", "lib/part~1", "help/page"}) {
        std::string bytes;
        while (bytes.size() < 40000)
            bytes += version + " ";
        entries.push_back({name, bytes, true});
    }
    return makeZip(entries);
}

bool install(const std::string& root, const std::string& version) {
    recordingSystem().launcherDirectory = root + "/launcher";
    const TrustedAuthority trust;
    const std::string package = packageOf(version);
    std::string manifest;
    const TlsServer server(TrustedAuthority::loopback(), [&](TlsConnection& connection) {
        const bool wantsPackage = connection.readRequest().starts_with("GET /package ");
        connection.write(httpAnswer(200, wantsPackage ? package : manifest));
    });
    const std::string address = "https://127.0.0.1:" + std::to_string(server.port());
    manifest =
        R"({"version":")" + version + R"(","url":")" + address + R"(/package","sha256":")" + sha256Hex(package) + "\"}";
    const UpdateCancellation stop;
    const auto ignoreEvent = [](const UpdateEvent&) {};
    const auto ignoreBytes = [](std::int64_t, std::int64_t) {};
    const UpdateEvent end =
        updateEditor({address + "/manifest", root + "/downloads", {}, stop, ignoreEvent, ignoreBytes});
    return end.kind == UpdateEvent::Installed || end.kind == UpdateEvent::UpToDate;
}

bool saveSettings(const std::string& root, int count) {
    recordingSystem().userDataDirectory = root;
    LauncherSettings settings;
    (void)settings.load();
    std::vector<ProjectEntry> projects(static_cast<std::size_t>(count));
    for (ProjectEntry& project : projects)
        project.path = root + "/projects/one";
    settings.setProjects(projects);
    return settings.save();
}

bool create(const std::string& root, const std::string& name) {
    std::string error;
    return !createProjectOnDisk(root + "/projects", name, error).empty();
}

} // namespace

int main(int count, char** arguments) {
    if (count > 1 && std::string(arguments[1]) == "matrix") return runMatrix(count > 2 ? arguments[2] : "") ? 0 : 1;
    if (count == 3) {
        const int number = std::atoi(arguments[2]);
        return (std::string(arguments[1]) == "cycles" ? runCycles(number) : runRounds(number)) ? 0 : 1;
    }
    if (count != 4) return 2;
    const std::string operation = arguments[1], root = arguments[2], value = arguments[3];
    if (operation == "install") return install(root, value) ? 0 : 1;
    if (operation == "settings") return saveSettings(root, std::atoi(value.c_str())) ? 0 : 1;
    return create(root, value) ? 0 : 1;
}
