#include "config/launcher_config.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/platform.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

// The expected messages start with these words.
constexpr char kMissing[] = "launcher_config.json was not found";
constexpr char kInvalid[] = "launcher_config.json is not valid";
constexpr char kExample[] = "Running from launcher_config.example.json.";
constexpr char kPlaceholder[] = "The Google OAuth credentials in launcher_config.json are still placeholders.";

std::string credentials(const std::string& id, const std::string& secret) {
    return R"({"google_client_id":")" + id + R"(","google_client_secret":")" + secret + R"("})";
}

TEST(LauncherConfig, EveryStateOfTheFilesHasItsMessage) {
    const std::string good = credentials("id", "secret"), placeholder = credentials("YOUR_ID", "secret");
    const std::optional<std::string> none;
    const struct {
        std::optional<std::string> real, example;
        std::string message; // empty: configured
    } cases[] = {
        {good, "broken", ""},
        {none, good, ""},
        {"\xEF\xBB\xBF" + good, none, ""},
        {none, none, kMissing},
        {"", good, kMissing},
        {" \n", good, kInvalid},
        {"[]", good, kInvalid},
        {good + "x", none, kInvalid},
        {placeholder, good, kPlaceholder},
        {none, placeholder, kExample},
        {credentials("id", "YOUR_"), none, kPlaceholder},
        {R"({"google_client_id":7,"google_client_secret":"s"})", none, kPlaceholder},
        {R"({"google_client_id":"","google_client_id":"i","google_client_secret":"s"})", none, kPlaceholder},
        {credentials("your_x", "YOU"), none, ""},
    };
    for (const auto& row : cases) {
        const TemporaryFolder folder;
        if (row.real) folder.write("launcher_config.json", *row.real);
        if (row.example) folder.write("launcher_config.example.json", *row.example);
        const LauncherConfig config = loadLauncherConfigFrom(folder.string());
        EXPECT_TRUE(config.message.starts_with(row.message))
            << row.real.value_or("-") << " " << row.example.value_or("-");
        EXPECT_EQ(config.configured, row.message.empty());
        EXPECT_EQ(config.configured, config.message.empty());
    }
    EXPECT_EQ(loadLauncherConfigFrom("").message, "Unable to resolve the launcher directory.");
}

TEST(LauncherConfig, ValuesAreReadUnchanged) {
    const TemporaryFolder folder;
    folder.write("launcher_config.json", R"({"google_client_id":" id ","google_client_secret":"YOUR_\u00fc",
        "artifact_authenticity_url":"https://a.example/s","artifact_authenticity_keys":"k1 k2"})");
    const LauncherConfig config = loadLauncherConfigFrom(folder.string());
    EXPECT_EQ(config.googleClientId + config.googleClientSecret, " id YOUR_\xC3\xBC");
    EXPECT_EQ(config.artifactAuthenticityUrl + config.artifactAuthenticityKeys, "https://a.example/sk1 k2");
}

TEST(LauncherConfig, DownloadsDirectoryIsResolvedWithoutTouchingTheDisk) {
    const TemporaryFolder folder;
    const std::string drive = kOnWindows ? "E:" : "";
    const std::pair<std::string, std::string> cases[] = {
        {"", folder.string() + "/downloads"},
        {"../p \xC3\xBC", folder.path().parent_path().string() + "/p \xC3\xBC"},
        {drive + "/srv/x/../pkg", drive + "/srv/pkg"},
        {"D:data", kOnWindows ? "D:data" : folder.string() + "/D:data"},
    };
    for (const auto& [text, directory] : cases) {
        folder.write("launcher_config.json", R"({"downloads_directory":")" + text + "\"}");
        EXPECT_EQ(loadLauncherConfigFrom(folder.string()).downloadsDirectory, fs::path(directory).make_preferred());
    }
    EXPECT_FALSE(fs::exists(folder / "downloads"));
}

TEST(LauncherConfig, PlatformQueryReplacesTheFirstMatchingBytes) {
    const std::string platform = std::string("platform=") + kPlatformName;
    const std::pair<std::string, std::string> cases[] = {
        {"", "?" + platform},
        {"https://u/m#f", "https://u/m#f?" + platform},
        {"https://u/m?a=1", "https://u/m?a=1&" + platform},
        {"https://u/m?platform=other&x=1", "https://u/m?" + platform + "&x=1"},
        {"https://u/m?xplatform=a&platform=b", "https://u/m?x" + platform + "&platform=b"},
    };
    for (const auto& [url, expected] : cases)
        EXPECT_EQ(withPlatformQuery(url), expected);
}

} // namespace
