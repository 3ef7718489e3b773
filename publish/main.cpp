// volo-publish publishes editor packages. Exit status 0: done; 1: refused or failed; 2: wrong usage; 3: launchers
// refuse the offered release now, or will within 10 days.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "crypto/base64.h"
#include "publish/inspect.h"
#include "publish/keys.h"
#include "publish/progress.h"
#include "publish/release.h"
#include "publish/statement_expiry.h"
#include "publish/statement_writer.h"
#include "system/operating_system.h"

namespace {

constexpr int kDone = 0, kFailed = 1, kUsage = 2, kOfferNeedsAction = 3;

struct Arguments {
    std::string keyFile;
    std::vector<std::string> signingKeyFiles;
    bool force = false;
    ReleaseRequest release;
    StatementRequest statement;
    InspectRequest inspect;
};

void complain(const std::string& text) {
    std::fprintf(stderr, "volo-publish: %s\n", text.c_str());
}

void warn(const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings)
        complain("warning: " + warning);
}

void print(const std::string& line) {
    std::printf("%s\n", line.c_str());
}

// Prints members of launcher_config.json as a JSON object.
void printConfiguration(const std::vector<std::pair<const char*, std::string>>& members) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.SetIndent(' ', 2);
    writer.StartObject();
    for (const auto& [name, value] : members) {
        writer.Key(name);
        writer.String(value);
    }
    writer.EndObject();
    print("For launcher_config.json:");
    print(buffer.GetString());
}

int failed(const std::string& text) {
    complain(text);
    return kFailed;
}

bool readKeys(const std::vector<std::string>& files, std::vector<PublisherKey>& keys, std::string& failureText) {
    std::vector<std::string> warnings;
    for (const std::string& file : files)
        if (!keys.emplace_back().read(file, warnings, failureText)) return false;
    warn(warnings);
    return true;
}

int keygen(const Arguments& arguments) {
    std::string publicKey;
    std::string failure;
    if (!makeKeyFile(arguments.keyFile, arguments.force, publicKey, failure)) return failed(failure);
    print("The private key is in " + arguments.keyFile + ". Keep it off the server and keep a copy in a safe place.");
    printConfiguration({{"artifact_authenticity_keys", base64Encode(publicKey)}});
    return kDone;
}

int release(Arguments& arguments) {
    std::vector<PublisherKey> keys;
    std::string failure;
    ReleaseResult result;
    ReleaseRequest& request = arguments.release;
    request.force = arguments.force;
    request.days = arguments.statement.days;
    request.siteDirectory = arguments.statement.siteDirectory;
    request.nowSeconds = currentTimeSeconds();
    if (!readKeys(arguments.signingKeyFiles, keys, failure)) return failed(failure);
    ProgressLine line;
    request.progress = [&line](const char* step, std::uint64_t done, std::uint64_t total) {
        line.show(step, done, total);
    };
    const bool published = publishRelease(request, keys, result, failure);
    line.clear();
    if (!published) return failed(failure);
    warn(result.archive.warnings);
    print(result.manifestPath + " offers version " + request.version + " for " + request.platform + ": " +
          std::to_string(result.archive.files) + " files, " + std::to_string(result.archive.unpackedBytes) +
          " bytes unpacked.");
    print("Package: " + result.packagePath + (result.packageKept ? " (already published, unchanged)" : ""));
    print("Statement: " + result.statementPath + ", valid until " + utcDate(result.notAfter));
    if (request.days <= site::kWarningDays) warn({"The statement ends in " + std::to_string(request.days) + " days."});
    printConfiguration({{"editor_update_manifest_url", result.manifestUrl},
                        {"artifact_authenticity_url", result.authenticityUrl},
                        {"artifact_authenticity_keys", result.authenticityKeys}});
    return kDone;
}

int report(const StatementReport& found) {
    for (const std::string& line : found.lines)
        print(line);
    warn(found.warnings);
    return found.offerNeedsAction ? kOfferNeedsAction : kDone;
}

int statements(Arguments& arguments) {
    std::vector<PublisherKey> keys;
    std::string failure;
    StatementReport found;
    arguments.statement.nowSeconds = currentTimeSeconds();
    if (!readKeys(arguments.signingKeyFiles, keys, failure)) return failed(failure);
    if (!renewStatements(arguments.statement, keys, found, failure)) return failed(failure);
    return report(found);
}

int inspect(Arguments& arguments) {
    std::string failure;
    StatementReport found;
    arguments.inspect.nowSeconds = currentTimeSeconds();
    const bool holds = inspectFile(arguments.inspect, found, failure);
    (void)report(found);
    return holds ? kDone : failed(failure);
}

void addSigningOptions(CLI::App& command, Arguments& arguments) {
    command.add_option("--out", arguments.statement.siteDirectory, "The published directory")
        ->required()
        ->type_name("DIR");
    command.add_option("--days", arguments.statement.days, "Lifetime of the statements, 1 to 92 days")
        ->default_val(site::kDefaultDays)
        ->check(CLI::Range(1, site::kMaxDays))
        ->type_name("DAYS");
}

CLI::Option* addKeyOption(CLI::App& command, Arguments& arguments) {
    return command
        .add_option("--sign-key", arguments.signingKeyFiles, "Private key file; up to four may sign together")
        ->expected(1)
        ->take_all()
        ->type_name("FILE");
}

CLI::App* addKeygen(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("keygen", "Make a publisher's key pair");
    command->add_option("FILE", arguments.keyFile, "The new private key file; only you can read it")->required();
    command->add_flag("--force", arguments.force, "Replace an existing key file and destroy its key");
    command->footer("Example:\n  volo-publish keygen publisher.key");
    return command;
}

CLI::App* addRelease(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("release", "Publish a zip archive as a release");
    ReleaseRequest& request = arguments.release;
    command->add_option("--zip", request.zipPath, "The archive, with editor.exe at its root")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--version", request.version, "Any text; launchers install every version that differs from theirs")
        ->required()
        ->type_name("TEXT");
    command->add_option("--platform", request.platform, "linux or windows; each needs its own directory")
        ->required()
        ->check(CLI::IsMember({"linux", "windows"}))
        ->type_name("NAME");
    command->add_option("--base-url", request.baseUrl, "The https address of the published directory")
        ->required()
        ->type_name("URL");
    addKeyOption(*command, arguments)->required();
    addSigningOptions(*command, arguments);
    command->add_flag("--encrypt,!--no-encrypt", request.encrypt,
                      "Seal the package with a key from the manifest (default), or publish the plain zip");
    command->add_flag("--force", arguments.force, "Publish a version again with other bytes or after its withdrawal");
    command->footer("Example:\n  volo-publish release --zip editor.zip --version 1.4.2 --platform linux \\\n"
                    "    --base-url https://updates.example/linux --sign-key publisher.key --out site/linux");
    return command;
}

CLI::App* addStatement(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("statement", "List, renew or withdraw release statements");
    StatementRequest& request = arguments.statement;
    addSigningOptions(*command, arguments);
    addKeyOption(*command, arguments);
    CLI::Option* offered =
        command->add_flag("--offered", request.offered, "Renew the release that the manifest offers");
    CLI::Option* all =
        command->add_flag("--all", request.all, "Renew all statements that are neither expired nor withdrawn");
    command->add_option("--version", request.versions, "Renew this version; may be repeated")
        ->expected(1)
        ->take_all()
        ->excludes(all)
        ->type_name("TEXT");
    command
        ->add_option("--package", request.packages,
                     "Renew the package with this hash or these first digits; may be repeated")
        ->expected(1)
        ->take_all()
        ->excludes(all)
        ->type_name("SHA256");
    command->add_flag("--revoke", request.revoke, "Withdraw the named releases instead")
        ->excludes(all)
        ->excludes(offered);
    command->add_option("--keys", request.trustedKeys, "More public keys whose signatures count")->type_name("KEYS");
    command->footer("Examples:\n"
                    "  volo-publish statement --out site/linux\n"
                    "  volo-publish statement --out site/linux --offered --sign-key publisher.key\n"
                    "  volo-publish statement --out site/linux --all --sign-key old.key --sign-key new.key\n"
                    "  volo-publish statement --out site/linux --revoke --version 1.4.1 --sign-key publisher.key");
    return command;
}

CLI::App* addInspect(CLI::App& app, Arguments& arguments) {
    CLI::App* command = app.add_subcommand("inspect", "Describe a published file and check it");
    InspectRequest& request = arguments.inspect;
    command->add_option("FILE", request.path, "A package, container, manifest or statement")->required();
    command->add_option("--keys", request.keys, "Public keys as in launcher_config.json, to check signatures")
        ->type_name("KEYS");
    command
        ->add_option("--manifest", request.manifestPath,
                     "The manifest of a package; default: manifest.json in its folder")
        ->type_name("FILE");
    command->footer("Example:\n  volo-publish inspect site/linux/manifest.json --keys \"BASE64 BASE64\"");
    return command;
}

// Checks the combinations of options that CLI11 cannot check. Returns a message for the user; empty if the combination
// is allowed.
std::string usageProblem(const Arguments& arguments) {
    const StatementRequest& request = arguments.statement;
    const bool chooses = request.all || request.offered || !request.versions.empty() || !request.packages.empty();
    if (arguments.signingKeyFiles.size() > statement::kMaxSignatures)
        return "--sign-key may be given at most four times.";
    if (chooses && arguments.signingKeyFiles.empty()) return "--sign-key is required to sign.";
    if (!chooses && request.revoke) return "--revoke needs --version or --package.";
    return {};
}

int run(int count, char** values) {
    Arguments arguments;
    CLI::App app("Publishes editor packages as a directory of static files.", "volo-publish");
    app.require_subcommand(1);
    app.set_version_flag("--version", "volo-publish " VOLO_VERSION);
    app.footer(
        "Exit status: 0 done, 1 refused or failed, 2 wrong usage; of statement also 3: launchers refuse the release\n"
        "on offer, now or within 10 days. \"volo-publish COMMAND --help\" describes a command.");
    const CLI::App* keygenCommand = addKeygen(app, arguments);
    const CLI::App* releaseCommand = addRelease(app, arguments);
    const CLI::App* statementCommand = addStatement(app, arguments);
    const CLI::App* inspectCommand = addInspect(app, arguments);
    try {
        app.parse(count, values);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error); // --help or --version
        complain(std::string(error.what()) + " (--help tells more)");
        return kUsage;
    }
    if (statementCommand->parsed() || releaseCommand->parsed()) {
        const std::string problem = usageProblem(arguments);
        if (!problem.empty()) {
            complain(problem);
            return kUsage;
        }
    }
    if (keygenCommand->parsed()) return keygen(arguments);
    if (releaseCommand->parsed()) return release(arguments);
    if (statementCommand->parsed()) return statements(arguments);
    return inspectCommand->parsed() ? inspect(arguments) : kUsage;
}

} // namespace

int main(int count, char** values) {
    try {
        return run(count, values);
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}
