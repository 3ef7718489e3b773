#pragma once

// launcher_config.json: the read-only file that a deployment places beside the executable. Read once, on the main
// thread, before any window exists; immutable afterwards, workers hold copies of what they need.
//
// One JSON object whose members are all texts:
//   google_client_id, google_client_secret   OAuth credentials; empty or beginning with "YOUR_" counts as not filled in
//   editor_update_manifest_url               gets a `platform` query value
//   downloads_directory                      resolved against the launcher's directory; "downloads" when empty
//   artifact_authenticity_url                where release statements are published; optional
//   artifact_authenticity_keys               1 to 4 Ed25519 public keys in base64, separated by spaces; optional
// A build that pins the last two (VOLO_AUTHENTICITY_URL, VOLO_AUTHENTICITY_KEYS) takes its own for them.

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

// Reads launcher_config.json beside the executable, or launcher_config.example.json when there is none. A missing or
// bad file is a state of the program and not an error: `configured` is false and `message` tells the user why.
LauncherConfig loadLauncherConfig();

// The same for a directory that is already known; an empty one is the launcher's own that could not be found.
LauncherConfig loadLauncherConfigFrom(const std::string& launcherDirectory);

// Whether a credential is still to be filled in.
bool isPlaceholderCredential(const std::string& value);

// Sets the `platform` query value to the platform that this launcher serves.
std::string withPlatformQuery(const std::string& url);
