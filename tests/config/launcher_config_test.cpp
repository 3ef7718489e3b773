#include "config/launcher_config.h"

#include <optional>

#include <gtest/gtest.h>

#include "support/platform.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

const std::string kMissing = "launcher_config.json was not found next to the launcher executable. Copy it from "
                             "launcher_config.example.json, fill in the Google OAuth credentials, and restart.";
const std::string kInvalid = "launcher_config.json is not valid JSON.";
const std::string kExample = "Running from launcher_config.example.json. Create launcher_config.json with real Google "
                             "OAuth credentials to enable sign-in.";
const std::string kPlaceholder = "The Google OAuth credentials in launcher_config.json are still placeholders. Replace "
                                 "the YOUR_ values with real credentials and restart.";

std::string credentials(const std::string& id, const std::string& secret) {
    return R"({"google_client_id":")" + id + R"(","google_client_secret":")" + secret + R"("})";
}

TEST(LauncherConfig, EveryStateOfTheFilesHasItsMessage) {
    const std::string good = credentials("id", "secret");
    const std::string placeholder = credentials("YOUR_ID", "secret");
    const std::optional<std::string> none;
    const struct {
        std::optional<std::string> real, example;
        std::string message;
    } cases[] = {
        {good, none, ""},
        {good, "broken", ""},
        {none, good, ""},
        {"\xEF\xBB\xBF" + good, none, ""},
        {none, none, kMissing},
        {"", good, kMissing},
        {none, "", kMissing},
        {" \n", good, kInvalid},
        {"{", good, kInvalid},
        {good + "x", none, kInvalid},
        {none, "nonsense", kInvalid},
        {placeholder, good, kPlaceholder},
        {none, placeholder, kExample},
        {"{}", none, kPlaceholder},
        {credentials("id", "YOUR_"), none, kPlaceholder},
        {R"({"google_client_id":7,"google_client_secret":"s"})", none, kPlaceholder},
        {R"({"Google_client_id":"i","google_client_secret":"s"})", none, kPlaceholder},
        {R"({"google_client_id":"","google_client_id":"i","google_client_secret":"s"})", none, kPlaceholder},
        {credentials("your_x", "YOU"), none, ""},
        {credentials(" YOUR_ID", "xYOUR_"), none, ""},
    };
    for (const auto& row : cases) {
        const TemporaryFolder folder;
        if (row.real) folder.write("launcher_config.json", *row.real);
        if (row.example) folder.write("launcher_config.example.json", *row.example);
        const LauncherConfig config = loadLauncherConfigFrom(folder.string());
        EXPECT_EQ(config.message, row.message) << row.real.value_or("-") << " " << row.example.value_or("-");
        EXPECT_EQ(config.configured, row.message.empty());
    }
}

TEST(LauncherConfig, UnknownDirectoryAndADirectoryInPlaceOfTheFile) {
    EXPECT_EQ(loadLauncherConfigFrom("").message, "Unable to resolve the launcher directory.");
    const TemporaryFolder folder;
    fs::create_directory(folder / "launcher_config.json");
    folder.write("launcher_config.example.json", credentials("id", "secret"));
    EXPECT_EQ(loadLauncherConfigFrom(folder.string()).message, kMissing);
}

TEST(LauncherConfig, ValuesArriveUnchangedAlsoBesidePlaceholders) {
    const TemporaryFolder folder;
    folder.write("launcher_config.json", R"({"google_client_id":" id ","google_client_secret":"YOUR_\u00fc",
        "editor_update_manifest_url":"https://u.example/m.json","artifact_authenticity_url":"https://a.example/s",
        "artifact_authenticity_keys":"k1 k2","other":{"nested":[1,2]}})");
    const LauncherConfig config = loadLauncherConfigFrom(folder.string());
    EXPECT_EQ(config.googleClientId, " id ");
    EXPECT_EQ(config.googleClientSecret, "YOUR_\xC3\xBC");
    EXPECT_EQ(config.editorUpdateManifestUrl, std::string("https://u.example/m.json?platform=") + kPlatformName);
    EXPECT_EQ(config.artifactAuthenticityUrl, "https://a.example/s");
    EXPECT_EQ(config.artifactAuthenticityKeys, "k1 k2");
}

TEST(LauncherConfig, DownloadsDirectoryIsResolvedByTextAlone) {
    const TemporaryFolder folder;
    const std::string parent = folder.path().parent_path().string();
    const std::pair<std::string, std::string> cases[] = {
        {"", folder.string() + "/downloads"},
        {"pkg", folder.string() + "/pkg"},
        {"../pkg", parent + "/pkg"},
        {kOnWindows ? "E:/srv/pkg" : "/srv/pkg", kOnWindows ? "E:/srv/pkg" : "/srv/pkg"},
        {kOnWindows ? "E:/srv/x/../pkg" : "/srv/x/../pkg", kOnWindows ? "E:/srv/pkg" : "/srv/pkg"},
        {"p \xC3\xBC", folder.string() + "/p \xC3\xBC"},
        {"D:data", kOnWindows ? "D:data" : folder.string() + "/D:data"},
    };
    for (const auto& [text, directory] : cases) {
        folder.write("launcher_config.json", R"({"downloads_directory":")" + text + "\"}");
        EXPECT_EQ(loadLauncherConfigFrom(folder.string()).downloadsDirectory, fs::path(directory).make_preferred())
            << text;
    }
    EXPECT_FALSE(fs::exists(folder / "downloads")) << "created too early";
}

TEST(LauncherConfig, PlatformQueryIsSetByBytes) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "?platform=linux"},
        {"https://u/m", "https://u/m?platform=linux"},
        {"https://u/m?a=1", "https://u/m?a=1&platform=linux"},
        {"https://u/m?platform=windows&x=1", "https://u/m?platform=linux&x=1"},
        {"https://u/m?x=1&platform=", "https://u/m?x=1&platform=linux"},
        {"https://u/m?xplatform=a&platform=b", "https://u/m?xplatform=linux&platform=b"},
        {"https://u/platform=x/m?a=1&b", "https://u/platform=linux&b"},
        {"https://u/m#f", "https://u/m#f?platform=linux"},
    };
    for (auto [url, expected] : cases) {
        const std::string linux = "platform=linux";
        if (const std::size_t at = expected.find(linux); at != std::string::npos)
            expected.replace(at, linux.size(), std::string("platform=") + kPlatformName);
        EXPECT_EQ(withPlatformQuery(url), expected);
    }
}

} // namespace
