#pragma once

// Launcher.conf: the per-user state of the launcher, and the only thing besides project files that survives a restart.
// Main thread only. None of the setters saves: the caller does, when it has finished its changes.
//
// The file is text with one section, [General]:
//   auth%2FrefreshToken=...                  always written; likewise install%2Fpath, projects%2FdefaultLocation,
//   auth%2FuserName=, auth%2FuserEmail=      only when not empty         projects%2FlastAddedLocation
//   Projects%5Csize=N                        then for each project, counted from 1:
//   Projects%5C1%5Cname= path= lastOpened= favorite=   and targetPlatform=, editorVersion= when not empty
// Keys have space, % / = @ and backslash written as %XX, values line feed, % and @. The reader decodes both, so a
// hand-edited file may use plain keys. Lines, keys and values lose tabs, carriage returns and spaces at their ends.

#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

class LauncherSettings {
  public:
    // Settles where the file is, and reads nothing. Without a user data directory there is no file: loading and saving
    // both do nothing then, and the state lasts for the run.
    LauncherSettings();

    // False when there was no file to read. A damaged file never fails: what cannot be understood keeps its default.
    bool load();

    // Replaces the file as a whole, or leaves it as it was; only its owner may read it. False when it was not replaced.
    bool save() const;

    std::string refreshToken() const { return refreshToken_; }
    std::string userName() const { return userName_; }
    std::string userEmail() const { return userEmail_; }
    void setRefreshToken(const std::string& token) { refreshToken_ = token; }
    void setUserName(const std::string& name) { userName_ = name; }
    void setUserEmail(const std::string& email) { userEmail_ = email; }
    void clearSession();

    // Where the user keeps an editor; the launcher's own directory when nothing is set.
    std::string installPath() const;
    void setInstallPath(const std::string& path) { installPath_ = path; }

    // Newest first. A change copies the list and hands the copy to setProjects.
    const std::vector<ProjectEntry>& projects() const { return projects_; }
    void setProjects(const std::vector<ProjectEntry>& projects);

    // The first entry with exactly this path; nothing when there is none.
    void toggleFavorite(const std::string& path);
    void setFavorite(const std::string& path, bool favorite);

    std::string defaultLocation() const { return defaultLocation_; }
    std::string lastAddedLocation() const { return lastAddedLocation_; }
    void setDefaultLocation(const std::string& folder) { defaultLocation_ = folder; }
    void setLastAddedLocation(const std::string& folder) { lastAddedLocation_ = folder; }

  private:
    void readGeneral(std::string_view text);

    std::string filePath_; // empty: no file
    std::string refreshToken_;
    std::string userName_;
    std::string userEmail_;
    std::vector<ProjectEntry> projects_;
    std::string installPath_;
    std::string defaultLocation_;
    std::string lastAddedLocation_;
};
