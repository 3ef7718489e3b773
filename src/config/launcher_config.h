#pragma once

// launcher_config.json: the read-only file that a deployment places beside the executable. The main thread reads it
// once, before any window exists. The result never changes; workers get copies of what they need.
//
// The file is one JSON object with string members:
//   google_client_id, google_client_secret   OAuth credentials; a placeholder is empty or begins with "YOUR_"
//   editor_update_manifest_url               gets a `platform` query value
//   downloads_directory                      resolved against the launcher's directory; "downloads" when empty
//   artifact_authenticity_url                where release statements are published; optional
//   artifact_authenticity_keys               1 to 4 Ed25519 public keys in base64, separated by spaces; optional
// A build that defines VOLO_AUTHENTICITY_URL or VOLO_AUTHENTICITY_KEYS uses that value instead of the file's.

#include <string>

struct LauncherConfig {
    std::string googleClientId;
    std::string googleClientSecret;
    std::string editorUpdateManifestUrl; // with the platform query applied
    std::string downloadsDirectory;      // absolute and normalised
    std::string message;                 // what the not-configured screen shows; empty when `configured`
    bool configured = false;             // both credentials are real

    std::string artifactAuthenticityUrl;
    std::string artifactAuthenticityKeys;
};

// Reads launcher_config.json beside the executable, or launcher_config.example.json when there is none. After a missing
// or bad file `configured` is false and `message` holds the text for the user.
[[nodiscard]] LauncherConfig loadLauncherConfig();

// The same for a given directory; empty means that the launcher's directory could not be found.
[[nodiscard]] LauncherConfig loadLauncherConfigFrom(const std::string& launcherDirectory);

[[nodiscard]] bool isPlaceholderCredential(const std::string& value);

// Sets the `platform` query value to this platform's name.
[[nodiscard]] std::string withPlatformQuery(const std::string& url);
