#pragma once

// Reads and writes Launcher.conf: the user's session, project list and folders. Main thread only. The setters do not
// write the file; call save() after the last change.
//
// The file is text with one section, [General]:
//   auth%2FrefreshToken=
//   auth%2FuserName=                         only if not empty
//   auth%2FuserEmail=                        only if not empty
//   install%2Fpath=
//   projects%2FdefaultLocation=
//   projects%2FlastAddedLocation=
//   Projects%5Csize=N                        the number of projects
//   Projects%5C1%5Cname=                     the first project; likewise its path, lastOpened and favorite, and
//                                            targetPlatform and editorVersion if they are not empty
// Reserved bytes are written as "%" and two hexadecimal digits. The reserved bytes of keys are space, %, /, =, @ and
// backslash; those of values are line feed, % and @. load() also accepts keys without this encoding, for example
// auth/refreshToken. It removes tabs, carriage returns and spaces at both ends of lines, keys and values.

#include <string>
#include <string_view>
#include <vector>

#include "projects/project_entry.h"

class LauncherSettings {
  public:
    // Sets the file's path. Does not read the file. If there is no user data directory, load and save do nothing, and
    // the settings are lost at exit.
    LauncherSettings();

    // Reads the file. False if there is no readable file. In a damaged file, invalid values keep their defaults.
    [[nodiscard]] bool load();

    // Replaces the whole file. On failure returns false and leaves the old file unchanged. Only the file's owner may
    // read it. If load found a file that it could not read, the first save renames that file to
    // "Launcher.conf.unreadable".
    bool save();

    [[nodiscard]] std::string refreshToken() const { return refreshToken_; }
    [[nodiscard]] std::string userName() const { return userName_; }
    [[nodiscard]] std::string userEmail() const { return userEmail_; }
    void setRefreshToken(const std::string& token) { refreshToken_ = token; }
    void setUserName(const std::string& name) { userName_ = name; }
    void setUserEmail(const std::string& email) { userEmail_ = email; }
    void clearSession();

    // Returns the folder that contains the editor. If none is set, returns the launcher's directory.
    [[nodiscard]] std::string installPath() const;
    void setInstallPath(const std::string& path) { installPath_ = path; }

    // load() sorts the list by lastOpened, newest first. To change the list, copy it and pass the copy to setProjects.
    [[nodiscard]] const std::vector<ProjectEntry>& projects() const { return projects_; }
    void setProjects(const std::vector<ProjectEntry>& projects);

    // Change the first entry with exactly this path. Do nothing if there is none.
    void toggleFavorite(const std::string& path);
    void setFavorite(const std::string& path, bool favorite);

    [[nodiscard]] std::string defaultLocation() const { return defaultLocation_; }
    [[nodiscard]] std::string lastAddedLocation() const { return lastAddedLocation_; }
    void setDefaultLocation(const std::string& folder) { defaultLocation_ = folder; }
    void setLastAddedLocation(const std::string& folder) { lastAddedLocation_ = folder; }

  private:
    void readGeneral(std::string_view text);

    [[nodiscard]] bool keepUnreadableFile();

    std::string filePath_;          // empty: there is no user data directory
    bool fileIsUnreadable_ = false; // the file exists, but load could not read it
    std::string refreshToken_;
    std::string userName_;
    std::string userEmail_;
    std::vector<ProjectEntry> projects_;
    std::string installPath_;
    std::string defaultLocation_;
    std::string lastAddedLocation_;
};
