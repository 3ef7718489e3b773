#pragma once

// Launcher.conf: the session, the project list and the folders of the user. Main thread only. The setters do not save:
// the caller saves when it has finished its changes.
//
// The file is text with one section, [General]:
//   auth%2FrefreshToken=...                  always written; likewise install%2Fpath, projects%2FdefaultLocation,
//   auth%2FuserName=, auth%2FuserEmail=      only when not empty         projects%2FlastAddedLocation
//   Projects%5Csize=N                        then for each project, counted from 1:
//   Projects%5C1%5Cname= path= lastOpened= favorite=   and targetPlatform=, editorVersion= when not empty
// In keys the bytes space, % / = @ and backslash are written as %XX; in values line feed, % and @. The reader decodes
// both, so a hand-edited file may use plain keys. Tabs, carriage returns and spaces at the ends of lines, keys and
// values are dropped.

#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

class LauncherSettings {
  public:
    // Finds the place of the file and reads nothing. Without a user data directory there is no file: load and save do
    // nothing, and the state lasts for the run.
    LauncherSettings();

    // False when no file could be read. A damaged file does not fail: unreadable values keep their defaults.
    [[nodiscard]] bool load();

    // Replaces the whole file, or leaves it as it was. Only its owner may read it. False when it was not replaced. When
    // load found a file that it could not read, the first save keeps that file as "Launcher.conf.unreadable".
    bool save();

    std::string refreshToken() const { return refreshToken_; }
    std::string userName() const { return userName_; }
    std::string userEmail() const { return userEmail_; }
    void setRefreshToken(const std::string& token) { refreshToken_ = token; }
    void setUserName(const std::string& name) { userName_ = name; }
    void setUserEmail(const std::string& email) { userEmail_ = email; }
    void clearSession();

    // The folder that holds the editor; the launcher's directory when none is set.
    std::string installPath() const;
    void setInstallPath(const std::string& path) { installPath_ = path; }

    // Newest first after load. To change the list, copy it and pass the copy to setProjects.
    const std::vector<ProjectEntry>& projects() const { return projects_; }
    void setProjects(const std::vector<ProjectEntry>& projects);

    // Both change the first entry with exactly this path, if there is one.
    void toggleFavorite(const std::string& path);
    void setFavorite(const std::string& path, bool favorite);

    std::string defaultLocation() const { return defaultLocation_; }
    std::string lastAddedLocation() const { return lastAddedLocation_; }
    void setDefaultLocation(const std::string& folder) { defaultLocation_ = folder; }
    void setLastAddedLocation(const std::string& folder) { lastAddedLocation_ = folder; }

  private:
    void readGeneral(std::string_view text);

    [[nodiscard]] bool keepUnreadableFile();

    std::string filePath_;          // empty: no file
    bool fileIsUnreadable_ = false; // it exists, but load could not read it
    std::string refreshToken_;
    std::string userName_;
    std::string userEmail_;
    std::vector<ProjectEntry> projects_;
    std::string installPath_;
    std::string defaultLocation_;
    std::string lastAddedLocation_;
};
