// volo-sandbox runs the launcher with an identity provider and an update server on this machine. It creates a
// certificate authority, starts both servers on loopback, prepares a launcher's folder, and starts the launcher. It
// ends when the launcher ends.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "config/launcher_settings.h"
#include "sandbox/child_process.h"
#include "sandbox/identity_provider.h"
#include "sandbox/sample_release.h"
#include "sandbox/staging.h"
#include "sandbox/system_trust.h"
#include "sandbox/update_server.h"
#include "system/operating_system.h"

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kGoogleHosts = {"accounts.google.com", "oauth2.googleapis.com",
                                               "openidconnect.googleapis.com"};

struct Options {
    std::string root;
    bool keep = false;
    bool storedSession = false;
    bool withEditor = false;
    bool withoutUpdateServer = false;
    bool asGoogle = false;
    int projects = 0;
    std::string browser;
    std::string secretsFile;
    double slowTokenSeconds = 0.0;
    bool token500 = false;
    bool tokenGarbage = false;
    IdentityProviderFaults identity;
    int manifestStatus = 0;
    UpdateServerFaults updates;
    std::string releaseFault;
    std::string editorZip;
};

void say(const std::string& text) {
    std::printf("[sandbox] %s\n", text.c_str());
    std::fflush(stdout);
}

int fail(const std::string& text) {
    std::fprintf(stderr, "[sandbox] %s\n", text.c_str());
    return 1;
}

void addOptions(CLI::App& app, Options& options) {
    app.add_option("--root", options.root, "Use this folder and keep it for the next start")->type_name("DIR");
    app.add_flag("--keep", options.keep, "Keep the temporary folder");
    app.add_flag("--with-editor,!--without-editor", options.withEditor, "Start with the sample editor installed");
    app.add_flag("--stored-session", options.storedSession, "Start signed in");
    app.add_option("--projects", options.projects, "Start with this many made-up projects")
        ->check(CLI::Range(0, 10000))
        ->type_name("N");
    app.add_option("--browser", options.browser,
                   "Open addresses with this command (default: a program that presses Allow)")
        ->type_name("COMMAND");
    app.add_option("--editor-zip", options.editorZip, "Publish this archive (default: the sample editor)")
        ->check(CLI::ExistingFile)
        ->type_name("FILE");
    app.add_flag("--as-google", options.asGoogle,
                 "Start the shipped launcher and serve Google's host names on port 443");
    app.add_option("--secrets-file", options.secretsFile, "Write every secret of the run to this file, for leak tests")
        ->type_name("FILE");

    const auto signIn = "Faults of the sign-in";
    IdentityProviderFaults& identity = options.identity;
    app.add_flag("--deny-consent", identity.denyConsent, "The user presses Deny")->group(signIn);
    app.add_option("--slow-token", options.slowTokenSeconds, "Delay the answers to token requests")
        ->type_name("SECONDS")
        ->group(signIn);
    app.add_flag("--token-500", options.token500, "Answer token requests with status 500")->group(signIn);
    app.add_flag("--token-garbage", options.tokenGarbage, "Answer token requests with a page instead of JSON")
        ->group(signIn);
    app.add_flag("--no-refresh-token", identity.withoutRefreshToken, "Return no refresh token")->group(signIn);
    app.add_flag("--no-email", identity.withoutEmail, "Return no e-mail address")->group(signIn);

    const auto update = "Faults of the update server";
    UpdateServerFaults& updates = options.updates;
    app.add_flag("--no-update-server", options.withoutUpdateServer, "Refuse connections")->group(update);
    app.add_option("--manifest-status", options.manifestStatus, "Answer the manifest with this status")->group(update);
    app.add_option("--release", options.releaseFault, "Publish a release with this fault")
        ->check(CLI::IsMember(kReleaseFaults))
        ->group(update);
    app.add_option("--delay", updates.delayMilliseconds, "Delay the package")->type_name("MILLISECONDS")->group(update);
    app.add_option("--throttle", updates.kibPerSecond, "Limit the speed of the package")
        ->type_name("KIB/S")
        ->group(update);
    app.add_option("--truncate", updates.closeAfter, "End the connection after this many bytes of the package")
        ->type_name("BYTES")
        ->group(update);
    app.add_option("--stall", updates.stallAfter, "Send nothing more after this many bytes of the package")
        ->type_name("BYTES")
        ->group(update);
    app.add_option("--hold", updates.holdFolder,
                   "Delay what this folder has a file for: \"browser\", \"manifest\", \"package\" (its second half), "
                   "\"statement\"")
        ->type_name("DIR")
        ->group(update);
    app.add_option("--corrupt", updates.corruptAt, "Invert the byte at this offset of the package")
        ->type_name("OFFSET")
        ->group(update);
}

// True if /etc/hosts maps Google's host names to this machine. Otherwise the shipped launcher would contact Google.
bool googleIsHere() {
    std::ifstream hosts("/etc/hosts");
    std::vector<std::string> here;
    for (std::string line; std::getline(hosts, line);) {
        std::istringstream words(line);
        std::string address;
        words >> address;
        for (std::string name; address == "127.0.0.1" && words >> name;)
            here.push_back(name);
    }
    return std::all_of(kGoogleHosts.begin(), kGoogleHosts.end(), [&](const std::string& name) {
        return std::find(here.begin(), here.end(), name) != here.end();
    });
}

// Prints the events that are new since the last call.
class EventReport {
  public:
    void show(const char* who, const std::vector<std::string>& events, std::size_t& shown) {
        for (; shown < events.size(); ++shown)
            say(std::string(who) + ": " + events[shown]);
    }

    void showBrowser(const fs::path& log) {
        std::ifstream file(log);
        file.seekg(browserRead_);
        for (std::string line; std::getline(file, line) && !file.eof();) { // skip a line that is still being written
            say("browser: " + line);
            browserRead_ = file.tellg();
        }
    }

    std::size_t identityShown = 0;
    std::size_t updatesShown = 0;

  private:
    std::streamoff browserRead_ = 0;
};

class Sandbox {
  public:
    Sandbox(const Options& options, const fs::path& root)
        : options_(options)
        , places_(root) {}

    int run();

  private:
    bool prepare(std::string& failureText);
    void prepareUser();
    void report();
    void writeSecrets() const;

    const Options& options_;
    SandboxPlaces places_;
    CertificateAuthority authority_;
    IdentityProviderAccount account_;
    std::optional<SystemTrust> trust_;
    std::unique_ptr<IdentityProvider> identity_;
    std::unique_ptr<UpdateServer> updates_;
    EventReport events_;
};

bool Sandbox::prepare(std::string& failureText) {
    const fs::path shipped = launcherDirectory(); // the folder of this program and of the shipped launcher
    const fs::path staged = shipped.parent_path() / "sandbox";
    std::error_code ignored;
    fs::remove_all(places_.site, ignored); // a release of an earlier run contains that run's server address
    if (!makePlaces(places_, failureText)) return false;
    if (!authority_.writeRoot(places_.authority.string())) {
        failureText = "cannot write " + places_.authority.string();
        return false;
    }
    trust_.emplace(places_.authority.string());
    if (!trust_->isTrusted()) {
        failureText = "on Windows the sandbox runs under Wine only, because it does not change the user's certificates";
        return false;
    }

    identity_ = options_.asGoogle ? std::make_unique<IdentityProvider>(authority_, account_, 443, kGoogleHosts)
                                  : std::make_unique<IdentityProvider>(authority_, account_);
    updates_ = std::make_unique<UpdateServer>(authority_, places_.site.string());
    if (identity_->port() < 1 || updates_->port() < 1) {
        failureText = "a server of the sandbox found no free port";
        return false;
    }
    identity_->setFaults(options_.identity);
    updates_->setFaults(options_.updates);

    ReleaseResult release;
    const SampleRelease sample = {
        staged / kSampleEditorProgram, shipped / "Roboto-Medium.ttf", options_.editorZip, places_.root, places_.site,
        updates_->baseUrl(),           options_.releaseFault,
    };
    if (!publishSampleEditor(sample, release, failureText)) return false;
    LauncherConfiguration configuration = {account_.clientId, account_.clientSecret, release.manifestUrl,
                                           release.authenticityUrl, release.authenticityKeys};
    if (options_.withoutUpdateServer) configuration.manifestUrl = "https://127.0.0.1:1/manifest.json";

    const fs::path launcher = (options_.asGoogle ? shipped : staged) / kLauncherProgram;
    return stageLauncher(places_, launcher, configuration, failureText) &&
           stageBrowser(places_, staged / kBrowserProgram, options_.browser, failureText) &&
           (!options_.withEditor ||
            stageEditor(places_, staged / kSampleEditorProgram, kSampleEditorVersion, failureText));
}

void Sandbox::prepareUser() {
    if (options_.projects > 0) addMadeUpProjects(places_, options_.projects);
    LauncherSettings settings;
    (void)settings.load();
    if (options_.storedSession && settings.refreshToken().empty()) {
        settings.setRefreshToken(identity_->issueRefreshToken());
        settings.setUserName(account_.userName);
        settings.setUserEmail(account_.userEmail);
        (void)settings.save();
    } else if (!settings.refreshToken().empty()) {
        identity_->acceptRefreshToken(settings.refreshToken());
    }
}

void Sandbox::report() {
    events_.show("identity provider", identity_->events(), events_.identityShown);
    events_.show("update server", updates_->events(), events_.updatesShown);
    events_.showBrowser(places_.browserLog);
}

void Sandbox::writeSecrets() const {
    if (options_.secretsFile.empty()) return;
    std::ofstream file(options_.secretsFile, std::ios::trunc);
    for (const std::string& secret : identity_->secrets())
        file << secret << '\n';
}

int Sandbox::run() {
    std::string failure;
    if (!prepare(failure)) return fail(failure);
    enterSandbox(places_, identity_->port());
    if (!options_.updates.holdFolder.empty()) setEnvironment("VOLO_SANDBOX_HOLD", options_.updates.holdFolder);
    prepareUser();

    say("folder: " + places_.root.string());
    say("identity provider: https://127.0.0.1:" + std::to_string(identity_->port()) + ", user " + account_.userName);
    say("update server: " + (options_.withoutUpdateServer ? "none" : updates_->baseUrl()));
    ChildProcess launcher;
    if (!launcher.start((places_.launcher / kLauncherProgram).string()))
        return fail("the launcher could not be started");
    say("the launcher runs; closing its window ends the sandbox");

    std::optional<int> status;
    while (!status && !interrupted()) {
        status = launcher.waitFor(std::chrono::milliseconds(100));
        report();
        writeSecrets();
    }
    launcher.end();
    endProgramsBelow(places_.root.string());
    report();
    say(status ? "the launcher has ended with status " + std::to_string(*status) : "interrupted");
    return status.value_or(0);
}

int run(int count, char** values) {
    Options options;
    CLI::App app("Runs the launcher against servers on this machine.", "volo-sandbox");
    addOptions(app, options);
    CLI11_PARSE(app, count, values);
    options.identity.tokenDelayMilliseconds = static_cast<int>(options.slowTokenSeconds * 1000.0);
    if (options.token500) options.identity.tokenStatus = 500;
    if (options.tokenGarbage) options.identity.tokenBody = "<html>no JSON";
    if (options.manifestStatus != 0) options.updates.status["manifest.json"] = options.manifestStatus;
    if (options.asGoogle && !googleIsHere())
        return fail("--as-google needs Google's host names mapped to 127.0.0.1 in /etc/hosts");

    const bool temporary = options.root.empty();
    const fs::path root = temporary ? fs::path(makeTemporaryFolder()) : fs::absolute(options.root).lexically_normal();
    if (root.empty()) return fail("no temporary folder could be made");
    rememberInterrupts();
    const int status = Sandbox(options, root).run();
    if (temporary && !options.keep) {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    } else {
        say("kept: " + root.string());
    }
    return status;
}

} // namespace

int main(int count, char** values) {
    try {
        return run(count, values);
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
